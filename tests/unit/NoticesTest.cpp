#include "support/BrowserFixture.h"
#include "support/RecordingObserver.h"

#include <gtest/gtest.h>

#include <functional>

namespace ovel::test {
namespace {

using Lines = std::vector<std::string>;

// Three tabs showing T1, T2 and T3, the last selected; then one operation, and what views hear.
class Notices : public BrowserFixture {
public:
    // The table's steps drive the fixture from outside.
    using BrowserFixture::mainQueue;
    using BrowserFixture::showPage;
    using BrowserFixture::viewAt;

    void SetUp() override {
        uuids = SequentialUuidSource();
        launchFresh();
        for (int i = 0; i < 3; ++i) {
            if (i > 0) {
                state->newTab();
            }
            showPage(i, page(i + 1), "T" + std::to_string(i + 1));
        }
        mainQueue.drain();
    }
    static std::string page(int n) { return "https://t" + std::to_string(n) + ".test/"; }
    const Uuid& idAt(int index) const { return state->tabs.get().at(index)->id(); }
};

struct NoticeCase {
    const char* name;
    std::function<void(Notices&, BrowserState&)> prepare;
    std::function<void(Notices&, BrowserState&)> act;
    Lines expected;
};

TEST_F(Notices, EachOperationIsAnnouncedOnceAndOnlyWhenTheStateIsWhole) {
    auto none = [](Notices&, BrowserState&) {};
    const std::vector<NoticeCase> cases{
        {"close the selected tab",
         none,
         [](Notices&, BrowserState& s) { s.closeTab(2); },
         {"tabs: removed 2", "selection: 2 -> 1", "addressText: https://t2.test/"}},
        {"close the last unpinned tab beside pinned ones",
         [](Notices&, BrowserState& s) {
             s.togglePinTab(0);
             s.togglePinTab(1);
         },
         [](Notices&, BrowserState& s) { s.closeTab(2); },
         {"tabs: removed 2", "selection: 2 -> 1", "addressText: https://t2.test/"}},
        {"close a tab before the selected one",
         none,
         [](Notices&, BrowserState& s) { s.closeTab(0); },
         {"tabs: removed 0", "selection: 2 -> 1 (same tab)"}},
        {"move left",
         none,
         [](Notices&, BrowserState& s) { s.moveTabLeft(2); },
         {"tabs: moved 2->1", "selection: 2 -> 1 (same tab)"}},
        {"pin",
         none,
         [](Notices&, BrowserState& s) { s.togglePinTab(2); },
         {"tab 0: pinned", "tabs: moved 2->0", "selection: 2 -> 0 (same tab)"}},
        {"reorder by drag",
         none,
         [](Notices& t, BrowserState& s) { s.reorderTab(t.idAt(0), t.idAt(2), true); },
         {"tabs: moved 0->2", "selection: 2 -> 1 (same tab)"}},
        {"a drop that changes nothing",
         none,
         [](Notices& t, BrowserState& s) { s.reorderTab(t.idAt(1), t.idAt(2), false); },
         {}},
        {"reopen",
         [](Notices&, BrowserState& s) { s.closeTab(0); },
         [](Notices&, BrowserState& s) { s.reopenLastClosedTab(); },
         {"tabs: inserted 2", "selection: 1 -> 2", "addressText: https://t1.test/"}},
        {"duplicate",
         none,
         [](Notices&, BrowserState& s) { s.duplicateSelectedTab(); },
         {"tabs: inserted 3", "selection: 2 -> 3"}},
        {"close others",
         none,
         [](Notices&, BrowserState& s) { s.closeOtherTabs(1); },
         {"tabs: removed 2 removed 0", "selection: 2 -> 0", "addressText: https://t2.test/"}},
        {"close duplicates",
         [](Notices& t, BrowserState&) { t.showPage(2, page(2), "T2"); },
         [](Notices&, BrowserState& s) { s.closeDuplicateTabs(); },
         {"tabs: removed 2", "selection: 2 -> 0", "addressText: https://t1.test/"}},
        {"restore a workspace",
         [](Notices&, BrowserState& s) { s.createWorkspaceSnapshot("Three"); },
         [](Notices&, BrowserState& s) { s.restoreWorkspaceSnapshot(s.workspaceSnapshots->at(0)); },
         {"tabs: replaced", "selection: 2 -> 2"}},
        {"switch to a new profile",
         none,
         [](Notices&, BrowserState& s) { s.createProfile(); },
         {"profiles: 2", "activeProfile: 00000000-0000-4000-8000-000000000008", "history: 0",
          "tabs: replaced", "selection: 2 -> 0", "addressText: "}},
        {"delete the active profile",
         [](Notices&, BrowserState& s) { s.createProfile(); },
         [](Notices&, BrowserState& s) { s.deleteActiveProfile(); },
         {"profiles: 1", "activeProfile: 00000000-0000-4000-8000-000000000001", "history: 3",
          "tabs: replaced", "selection: 0 -> 2", "addressText: https://t3.test/"}},
        {"a page load in a background tab",
         none,
         [](Notices& t, BrowserState&) { t.showPage(0, "https://t1.test/next", "T1 next"); },
         {"tab 0: loading", "tab 0: url", "tab 0: title loading", "history: 4"}},
        {"a progress tick",
         none,
         [](Notices& t, BrowserState&) {
             t.viewAt(2).simulateProgress(0.5);
             t.mainQueue.drain();
         },
         {"tab 2: progress"}},
        {"a settings switch set twice to the same value",
         none,
         [](Notices&, BrowserState& s) {
             s.setTheme(BrowserTheme::Ocean);
             s.setTheme(BrowserTheme::Ocean);
         },
         {"theme: ocean"}},
    };
    for (const NoticeCase& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        c.prepare(*this, *state);
        mainQueue.drain();
        RecordingObserver observer(*state);
        c.act(*this, *state);
        EXPECT_EQ(observer.take(), c.expected);
        EXPECT_EQ(observer.broken, Lines{});
    }
}

TEST_F(Notices, StoreWritesStillFollowEveryAssignment) {
    RecordingObserver observer(*state);
    store.log.clear();
    state->setTheme(BrowserTheme::Ocean);
    state->setTheme(BrowserTheme::Ocean);
    EXPECT_EQ(store.entries("set ovel.theme").size(), 2u);
    EXPECT_EQ(observer.take(), Lines{"theme: ocean"});
}

TEST_F(Notices, AHandlerCannotChangeTheStateWhileNoticesGoOut) {
    Connections connections;
    connections.add(state->showSidebar.changed().connect(
        [this](bool) { state->setFindText("from a handler"); }));
#ifdef NDEBUG
    state->setShowSidebar(true);
    EXPECT_TRUE(state->showSidebar.get());
    EXPECT_EQ(state->findText.get(), "") << "refused";
#else
    EXPECT_DEATH(state->setShowSidebar(true), "changed from inside a notice");
#endif
}

} // namespace
} // namespace ovel::test
