#include "support/BrowserFixture.h"
#include "web/Connections.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace ovel::test {
namespace {

// Hears every notice of a browser state and writes it down as a line of text, in order
// ("tabs: removed 1", "selection: 1 -> 0", "tab 2: title loading", "history: 3"). On each notice
// it checks that the state is whole: tabs present, the selection naming one of them, a changed
// tab still in the strip; what it finds broken is written down in `broken`.
class RecordingObserver {
public:
    explicit RecordingObserver(BrowserState& state);

    // The lines heard since the last call.
    std::vector<std::string> take();

    std::vector<std::string> lines;
    std::vector<std::string> broken;

private:
    void note(std::string line);

    BrowserState& state_;
    Connections connections_;
};

std::string describe(const TabListChange::Step& step) {
    switch (step.kind) {
    case TabListChange::Kind::Inserted:
        return "inserted " + std::to_string(step.index);
    case TabListChange::Kind::Removed:
        return "removed " + std::to_string(step.index);
    case TabListChange::Kind::Moved:
        return "moved " + std::to_string(step.index) + "->" + std::to_string(step.to);
    case TabListChange::Kind::Replaced:
        return "replaced";
    }
    return "?";
}

std::string describe(TabFields fields) {
    static const std::pair<TabField, const char*> names[] = {
        {TabField::Title, "title"},
        {TabField::Favicon, "favicon"},
        {TabField::Url, "url"},
        {TabField::Loading, "loading"},
        {TabField::Progress, "progress"},
        {TabField::BackForward, "back-forward"},
        {TabField::Pinned, "pinned"},
        {TabField::DisplayAddress, "display-address"},
        {TabField::DownloadMessage, "download-message"},
    };
    std::string text;
    for (const auto& [field, name] : names) {
        if (fields.has(field)) {
            text += text.empty() ? "" : " ";
            text += name;
        }
    }
    return text;
}

// A watched field's new value as the observer writes it down: lists by their length.
template <typename T> std::string text(const T& value) {
    if constexpr (std::is_same_v<T, std::string>) {
        return value;
    } else if constexpr (std::is_same_v<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_enum_v<T>) {
        return std::string(rawValue(value));
    } else if constexpr (std::is_same_v<T, std::optional<Uuid>>) {
        return value ? "a tab" : "none";
    } else {
        return std::to_string(value.size());
    }
}

RecordingObserver::RecordingObserver(BrowserState& state) : state_(state) {
    connections_.add(state.tabs.changed().connect([this](const TabListChange& change) {
        std::string line = "tabs:";
        for (const auto& step : change.steps) {
            line += " " + describe(step);
        }
        note(line);
    }));
    connections_.add(state.selectionChanged.connect([this](const SelectionChange& change) {
        note("selection: " + std::to_string(change.oldIndex) + " -> " +
             std::to_string(change.newIndex) +
             (change.oldTab == change.newTab ? " (same tab)" : ""));
    }));
    connections_.add(state.tabChanged.connect([this](const BrowserTab& tab, TabFields fields) {
        const int index = state_.indexOfTab(tab.id());
        if (index < 0) {
            broken.push_back("a tab outside the strip announced " + describe(fields));
        }
        note("tab " + std::to_string(index) + ": " + describe(fields));
    }));
    auto watch = [this](auto& field, std::string name) {
        connections_.add(field.changed().connect(
            [this, name](const auto& value) { note(name + ": " + text(value)); }));
    };
    watch(state.addressText, "addressText");
    watch(state.bookmarks, "bookmarks");
    watch(state.historyEntries, "history");
    watch(state.downloads, "downloads");
    watch(state.sitePermissionRules, "siteRules");
    watch(state.profiles, "profiles");
    watch(state.activeProfileID, "activeProfile");
    watch(state.showSidebar, "showSidebar");
    watch(state.showTabOverview, "showTabOverview");
    watch(state.showCommandPalette, "showCommandPalette");
    watch(state.showFindBar, "showFindBar");
    watch(state.findText, "findText");
    watch(state.smoothAnimations, "smoothAnimations");
    watch(state.theme, "theme");
    watch(state.searchEngine, "searchEngine");
    watch(state.adBlockEnabled, "adBlock");
    watch(state.workspaceSnapshots, "workspaces");
    watch(state.dropTargetTabID, "dropTarget");
    watch(state.dropInsertAfter, "dropInsertAfter");
}

std::vector<std::string> RecordingObserver::take() {
    return std::exchange(lines, {});
}

void RecordingObserver::note(std::string line) {
    const int count = static_cast<int>(state_.tabs->size());
    const int selected = state_.selectedIndex.get();
    if (count == 0) {
        broken.push_back(line + " heard with no tabs");
    } else if (selected < 0 || selected >= count || !state_.selectedTab()) {
        broken.push_back(line + " heard with the selection at " + std::to_string(selected) +
                         " of " + std::to_string(count));
    }
    lines.push_back(std::move(line));
}

using Lines = std::vector<std::string>;

// Three tabs showing T1, T2 and T3, the last selected; then one operation, the strip it leaves
// (as BrowserFixture::strip() writes it) and what views hear.
class Notices : public BrowserFixture {
public:
    // The table's steps drive the fixture from outside.
    using BrowserFixture::mainQueue;
    using BrowserFixture::showPage;
    using BrowserFixture::strip;
    using BrowserFixture::viewAt;

    void SetUp() override {
        uuids = SequentialUuidSource();
        launchWithTabs(3);
        mainQueue.drain();
    }
    const Uuid& idAt(int index) const { return state->tabs.get().at(index)->id(); }
};

using Step = std::function<void(Notices&, BrowserState&)>;

struct NoticeCase {
    const char* name;
    Step act;
    const char* strip;
    Lines expected;
    // What is done before anyone listens, if anything.
    Step prepare = {};
};

const Step pinFirst = [](Notices&, BrowserState& s) { s.togglePinTab(0); };
const Step pinFirstTwo = [](Notices&, BrowserState& s) {
    s.togglePinTab(0);
    s.togglePinTab(1);
};

TEST_F(Notices, EachOperationIsAnnouncedOnceAndOnlyWhenTheStateIsWhole) {
    const std::vector<NoticeCase> cases{
        {"close the selected tab",
         [](Notices&, BrowserState& s) { s.closeTab(2); },
         "T1 [T2]",
         {"tabs: removed 2", "selection: 2 -> 1", "addressText: https://t2.test/"}},
        {"close the last unpinned tab beside pinned ones",
         [](Notices&, BrowserState& s) { s.closeTab(2); },
         "T1p [T2p]",
         {"tabs: removed 2", "selection: 2 -> 1", "addressText: https://t2.test/"},
         pinFirstTwo},
        {"close a tab before the selected one",
         [](Notices&, BrowserState& s) { s.closeTab(0); },
         "T2 [T3]",
         {"tabs: removed 0", "selection: 2 -> 1 (same tab)"}},
        {"close the selected tab in the middle: the one sliding into its place is selected",
         [](Notices&, BrowserState& s) { s.closeTab(1); },
         "T1 [T3]",
         {"tabs: removed 1", "selection: 1 -> 1", "addressText: https://t3.test/"},
         [](Notices&, BrowserState& s) { s.selectTab(1); }},
        {"close the only tab, or none",
         [](Notices&, BrowserState& s) {
             s.closeTab(0);
             s.closeTab(5);
             s.closeTab(-1);
         },
         "[T3]",
         {},
         [](Notices&, BrowserState& s) { s.closeOtherTabs(2); }},
        {"move left",
         [](Notices&, BrowserState& s) { s.moveTabLeft(2); },
         "T1 [T3] T2",
         {"tabs: moved 2->1", "selection: 2 -> 1 (same tab)"}},
        {"move right among the pinned",
         [](Notices&, BrowserState& s) { s.moveTabRight(0); },
         "T2p T1p [T3]",
         {"tabs: moved 0->1"},
         pinFirstTwo},
        {"moves out of a section or past the ends change nothing",
         [](Notices&, BrowserState& s) {
             s.moveTabRight(0);
             s.moveTabLeft(1);
             s.moveTabLeft(0);
             s.moveTabRight(2);
             s.moveTabRight(9);
         },
         "T1p T2 [T3]",
         {},
         pinFirst},
        {"pin",
         [](Notices&, BrowserState& s) { s.togglePinTab(2); },
         "[T3p] T1 T2",
         {"tab 0: pinned", "tabs: moved 2->0", "selection: 2 -> 0 (same tab)"}},
        {"pin after the pinned ones",
         [](Notices&, BrowserState& s) { s.togglePinTab(2); },
         "T1p [T3p] T2",
         {"tab 1: pinned", "tabs: moved 2->1", "selection: 2 -> 1 (same tab)"},
         pinFirst},
        {"unpin: to the very end",
         [](Notices&, BrowserState& s) { s.togglePinTab(0); },
         "T2p [T3] T1",
         {"tab 2: pinned", "tabs: moved 0->2", "selection: 2 -> 1 (same tab)"},
         pinFirstTwo},
        {"reorder by drag",
         [](Notices& t, BrowserState& s) { s.reorderTab(t.idAt(0), t.idAt(2), true); },
         "T2 [T3] T1",
         {"tabs: moved 0->2", "selection: 2 -> 1 (same tab)"}},
        {"a drop that changes nothing",
         [](Notices& t, BrowserState& s) { s.reorderTab(t.idAt(1), t.idAt(2), false); },
         "T1 T2 [T3]",
         {}},
        {"a drop of an unknown tab",
         [](Notices& t, BrowserState& s) { s.reorderTab("unknown", t.idAt(0), false); },
         "T1 T2 [T3]",
         {}},
        {"a pinned tab dropped among the others stays last of the pinned",
         [](Notices& t, BrowserState& s) { s.reorderTab(t.idAt(0), t.idAt(2), true); },
         "T2p T1p [T3]",
         {"tabs: moved 0->1"},
         pinFirstTwo},
        {"another dropped onto a pinned one goes first of the others",
         [](Notices& t, BrowserState& s) { s.reorderTab(t.idAt(2), t.idAt(0), false); },
         "T1p [T3] T2",
         {"tabs: moved 2->1", "selection: 2 -> 1 (same tab)"},
         pinFirst},
        {"reopen",
         [](Notices&, BrowserState& s) { s.reopenLastClosedTab(); },
         "[https://t1.test/] T2 T3",
         {"tabs: inserted 0", "selection: 1 -> 0", "addressText: https://t1.test/"},
         [](Notices&, BrowserState& s) { s.closeTab(0); }},
        {"duplicate",
         [](Notices&, BrowserState& s) { s.duplicateSelectedTab(); },
         "T1 T2 T3 [https://t3.test/]",
         {"tabs: inserted 3", "selection: 2 -> 3"}},
        {"close others",
         [](Notices&, BrowserState& s) { s.closeOtherTabs(1); },
         "[T2]",
         {"tabs: removed 2 removed 0", "selection: 2 -> 0", "addressText: https://t2.test/"}},
        {"close duplicates",
         [](Notices&, BrowserState& s) { s.closeDuplicateTabs(); },
         "[T1] T2",
         {"tabs: removed 2", "selection: 2 -> 0", "addressText: https://t1.test/"},
         [](Notices& t, BrowserState&) { t.showPage(2, "https://t2.test/", "T2"); }},
        {"restore a workspace",
         [](Notices&, BrowserState& s) { s.restoreWorkspaceSnapshot(s.workspaceSnapshots->at(0)); },
         "https://t1.test/ https://t2.test/ [https://t3.test/]",
         {"tabs: replaced", "selection: 2 -> 2"},
         [](Notices&, BrowserState& s) { s.createWorkspaceSnapshot("Three"); }},
        {"switch to a new profile",
         [](Notices&, BrowserState& s) { s.createProfile(); },
         "[New Tab]",
         {"profiles: 2", "activeProfile: 00000000-0000-4000-8000-000000000008", "history: 0",
          "tabs: replaced", "selection: 2 -> 0", "addressText: "}},
        {"delete the active profile",
         [](Notices&, BrowserState& s) { s.deleteActiveProfile(); },
         "https://t1.test/ https://t2.test/ [https://t3.test/]",
         {"profiles: 1", "activeProfile: 00000000-0000-4000-8000-000000000001", "history: 3",
          "tabs: replaced", "selection: 0 -> 2", "addressText: https://t3.test/"},
         [](Notices&, BrowserState& s) { s.createProfile(); }},
        {"a page load in a background tab",
         [](Notices& t, BrowserState&) { t.showPage(0, "https://t1.test/next", "T1 next"); },
         "T1 next T2 [T3]",
         {"tab 0: loading", "tab 0: url", "tab 0: title loading", "history: 4"}},
        {"a progress tick",
         [](Notices& t, BrowserState&) {
             t.viewAt(2).simulateProgress(0.5);
             t.mainQueue.drain();
         },
         "T1 T2 [T3]",
         {"tab 2: progress"}},
        {"a settings switch set twice to the same value",
         [](Notices&, BrowserState& s) {
             s.setTheme(BrowserTheme::Ocean);
             s.setTheme(BrowserTheme::Ocean);
         },
         "T1 T2 [T3]",
         {"theme: ocean"}},
    };
    for (const NoticeCase& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        if (c.prepare) {
            c.prepare(*this, *state);
        }
        mainQueue.drain();
        RecordingObserver observer(*state);
        c.act(*this, *state);
        EXPECT_EQ(strip(), c.strip);
        EXPECT_EQ(observer.take(), c.expected);
        EXPECT_EQ(observer.broken, Lines{});
    }
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
