#include "presentation/CommandPalette.h"
#include "presentation/TabOverview.h"
#include "presentation/ToolbarState.h"
#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"
#include "web/StartPage.h"

#include <string>
#include <vector>

namespace ovel::test {
namespace {

// Tabs T1..Tn show https://t1.test/ to https://tn.test/; strip() reads like "T1p T2 [T3]". How
// closing, moving, pinning and dragging rearrange the strip is in the notices' table.
class TabOperations : public BrowserFixture {
protected:
    static std::string url(int n) { return "https://t" + std::to_string(n) + ".test/"; }

    std::vector<TabStore> storedClosedTabs() {
        return decodeClosedTabs(store.data(key(BrowserState::closedTabsKeyBase)).value_or("[]"))
            .value_or(std::vector<TabStore>{});
    }
    std::size_t sessionWrites() { return store.entries("set ovel.session").size(); }
};

TEST_F(TabOperations, TheClosedTabStackKeepsTwentyAndReopensTheLatest) {
    launchWithTabs(22);
    state->togglePinTab(20); // T21, which moves to the front
    for (int closed = 0; closed < 21; ++closed) {
        state->closeTab(0);
    }
    EXPECT_EQ(state->closedTabs().size(), 20u);
    EXPECT_EQ(storedClosedTabs(), state->closedTabs());
    EXPECT_EQ(state->closedTabs().front().url, url(20));
    EXPECT_EQ(state->closedTabs().back().url, url(1)) << "T21, closed first, was dropped";

    state->reopenLastClosedTab();
    EXPECT_EQ(viewAt(0).loadRequests.at(0).url, url(20)) << "back at its old place";
    EXPECT_EQ(state->selectedIndex.get(), 0);
    EXPECT_EQ(state->closedTabs().size(), 19u);
    EXPECT_EQ(storedClosedTabs().size(), 19u);

    launchWithTabs(4);
    state->closeOtherTabs(1);
    EXPECT_EQ(storedClosedTabs(),
              (std::vector<TabStore>{{url(4), false}, {url(3), false}, {url(1), false}}))
        << "the others are recorded rightmost first";
}

TEST_F(TabOperations, ReopeningKeepsThePinAndThePlaceWithinItsSection) {
    launchWithTabs(3);
    state->togglePinTab(1);
    EXPECT_EQ(strip(), "T2p T1 [T3]");
    state->closeTab(0);
    state->reopenLastClosedTab();
    EXPECT_EQ(strip(), "[https://t2.test/p] T1 T3") << "back at its place, loading";
    state->closeTab(1);
    state->togglePinTab(1);
    EXPECT_EQ(strip(), "[https://t2.test/p] T3p");
    state->reopenLastClosedTab();
    EXPECT_EQ(viewAt(2).loadRequests.at(0).url, url(1)) << "after the pinned tabs";

    state->setTheme(BrowserTheme::Ocean);
    state->newTab();
    state->closeTab(3);
    state->reopenLastClosedTab();
    // A start page reopens as the start page of the current theme, loaded once.
    EXPECT_EQ(viewAt(3).htmlLoads, std::vector<std::string>{startPageHTML(BrowserTheme::Ocean)});
}

// Back and Forward survive closing, reopening and restarting: the engine's list goes with the
// tab's record, and one the engine cannot read costs that history alone.
TEST_F(TabOperations, ATabsHistoryGoesWithItsRecord) {
    launchWithTabs(3);
    viewAt(0).engineState = "T1 and before";
    showPage(0, url(1), "T1");
    state->closeTab(0);
    EXPECT_TRUE(
        storedClosedTabs().at(0).sameHistoryAndPlace(TabStore{url(1), false, "T1 and before", 0}));
    state->reopenLastClosedTab();
    EXPECT_EQ(viewAt(0).restoredStates, std::vector<std::string>{"T1 and before"});

    viewAt(1).engineState = "unreadable";
    showPage(1, url(2), "T2");
    state->selectTab(1);
    launch();
    EXPECT_EQ(state->selectedIndex.get(), 1) << "the selection was stored as it changed";
    EXPECT_EQ(viewAt(0).restoredStates, std::vector<std::string>{"T1 and before"});
    EXPECT_TRUE(viewAt(1).restoredStates.empty());
    EXPECT_EQ(viewAt(1).loadRequests.at(0).url, url(2)) << "the tab itself stays";
}

TEST_F(TabOperations, DuplicatesAreKeyedByAddressAndTitle) {
    launchWithTabs(4);
    showPage(1, url(1), "T1");    // same page as T1
    showPage(2, url(9), "T1");    // same title, other page
    showPage(3, url(1), "Other"); // same page, other title
    state->selectTab(1);
    state->closeDuplicateTabs();
    EXPECT_EQ(strip(), "[T1] T1 Other");
    ASSERT_EQ(state->closedTabs().size(), 1u);

    const auto writes = sessionWrites();
    state->closeDuplicateTabs();
    EXPECT_EQ(sessionWrites(), writes) << "nothing to close saves nothing";

    launchFresh();
    state->newTab();
    state->closeDuplicateTabs();
    EXPECT_EQ(state->tabs->size(), 1u) << "two start pages with one title are duplicates";
}

TEST_F(TabOperations, DuplicatingCopiesOnlyTheAddressAndThePin) {
    launchWithTabs(2);
    state->selectTab(0);
    state->togglePinTab(0);
    state->duplicateSelectedTab();
    EXPECT_EQ(state->selectedIndex.get(), 2);
    EXPECT_TRUE(state->tabs.get()[2]->isPinned.get());
    EXPECT_EQ(viewAt(2).loadRequests.at(0).url, url(1));
}

TEST_F(TabOperations, NewTabsGetPoliciesAndTheirHostBeforeTheyAreShown) {
    launch();
    showPage(0, url(2) + "rules", "T2 rules");
    state->setCurrentSiteRule(SitePermissionRule{.location = PermissionSetting::Block});
    state->newTab();
    showPage(1, url(2), "T2");
    EXPECT_EQ(viewAt(1).userScripts.size(), 1u) << "the navigation re-applied the host's scripts";
    EXPECT_EQ(state->historyEntries->size(), 2u);
}

// Four tabs T1..T4, T1 pinned, T4 selected. Tabs are named by number in the tables (0: none).
class TabStripDecisions : public BrowserFixture {
protected:
    void SetUp() override { launchWithTabs(4).togglePinTab(0); }
    Uuid id(int number) const { return state->tabs.get().at(number - 1)->id(); }
    int number(const std::optional<Uuid>& tab) const {
        return tab ? state->indexOfTab(*tab) + 1 : 0;
    }
};

TEST_F(TabStripDecisions, EnteringShowsTheIndicatorOnlyWhereTheTabCouldLandAndUpdatingAlways) {
    enum class Event { Enter, Update };
    struct Case {
        const char* what;
        int dragged;
        Event event;
        int target;
        double x;
        int shownOn;
        bool after;
    };
    const Case cases[] = {
        {"no drag in progress", 0, Event::Enter, 3, 100, 0, false},
        {"a tab over itself", 3, Event::Enter, 3, 100, 0, false},
        {"pinned over unpinned", 1, Event::Enter, 3, 100, 0, false},
        {"unpinned over pinned", 3, Event::Enter, 1, 100, 0, false},
        {"past the threshold", 2, Event::Enter, 4, 72.5, 4, true},
        {"exactly on the threshold", 2, Event::Enter, 4, 72, 4, false},
        {"at the leading edge", 4, Event::Enter, 2, 0, 2, false},
        {"update: no drag", 0, Event::Update, 3, 100, 3, true},
        {"update: a tab over itself", 3, Event::Update, 3, 10, 3, false},
        {"update: pinned over unpinned", 1, Event::Update, 3, 100, 3, true},
        {"update: exactly on the threshold", 2, Event::Update, 4, 72, 4, false},
    };
    for (const Case& c : cases) {
        SetUp();
        if (c.dragged) {
            state->beginTabDrag(id(c.dragged));
        }
        if (c.event == Event::Enter) {
            state->dropEntered(id(c.target), c.x);
        } else {
            state->dropUpdated(id(c.target), c.x);
        }
        EXPECT_EQ(number(state->dropTargetTabID.get()), c.shownOn) << c.what;
        EXPECT_EQ(state->dropInsertAfter.get(), c.after) << c.what;
    }
}

TEST_F(TabStripDecisions, LeavingClearsOnlyItsOwnIndicatorAndKeepsTheSide) {
    state->beginTabDrag(id(2));
    state->dropUpdated(id(3), 100);
    state->dropExited(id(4));
    EXPECT_EQ(number(state->dropTargetTabID.get()), 3) << "another item's exit is ignored";
    state->dropExited(id(3));
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt);
    EXPECT_TRUE(state->dropInsertAfter.get());
}

TEST_F(TabStripDecisions, DroppingMovesTheTabAndEndsTheDrag) {
    state->dropUpdated(id(3), 100);
    state->beginTabDrag(id(4));
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt) << "a new drag starts without indicator";
    state->dropUpdated(id(2), 10);
    EXPECT_TRUE(state->performDrop(id(2)));
    EXPECT_EQ(strip(), "T1p [T4] T2 T3");
    EXPECT_EQ(state->draggedTabID(), std::nullopt);
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt);

    state->dropUpdated(id(4), 100);
    EXPECT_FALSE(state->performDrop(id(4))) << "no drag in progress";
    EXPECT_EQ(strip(), "T1p [T4] T2 T3");
    EXPECT_EQ(state->dropTargetTabID.get(), std::nullopt);

    state->beginTabDrag(id(3));
    EXPECT_TRUE(state->performDrop(id(3))) << "a tab dropped onto itself stays";
    EXPECT_EQ(strip(), "T1p [T4] T2 T3");
}

TEST_F(TabStripDecisions, NextAndPreviousSelectionWrapAround) {
    struct Case {
        int from;
        bool next;
        int expected;
    };
    const Case cases[] = {{0, true, 1}, {3, true, 0}, {0, false, 3}, {2, false, 1}};
    for (const Case& c : cases) {
        state->selectTab(c.from);
        c.next ? state->selectNextTab() : state->selectPreviousTab();
        EXPECT_EQ(state->selectedIndex.get(), c.expected) << c.from << (c.next ? " next" : " prev");
        EXPECT_EQ(state->addressText.get(), *state->selectedTab()->url());
    }
}

TEST_F(TabStripDecisions, ToolbarButtonsFollowTheSelectedTab) {
    viewAt(1).backAvailable = true;
    viewAt(1).forwardAvailable = true;
    showPage(1, "https://t2.test/next", "T2");
    viewAt(2).forwardAvailable = true;
    showPage(2, "https://t3.test/", "T3");
    struct Case {
        int selected;
        ToolbarState expected;
    };
    const Case cases[] = {
        {0, {false, false, true}}, {1, {true, true, true}}, {2, {false, true, true}}};
    for (const Case& c : cases) {
        state->selectTab(c.selected);
        EXPECT_EQ(toolbarStateOf(*state), c.expected) << "tab " << c.selected;
    }
    state->closeOtherTabs(1);
    EXPECT_EQ(toolbarStateOf(*state), (ToolbarState{true, true, false})) << "one tab left";
}

TEST_F(TabStripDecisions, EscapeGivesBackTheSelectedTabsAddress) {
    state->setAddressText("half-typed");
    state->resetAddressText();
    EXPECT_EQ(state->addressText.get(), "https://t4.test/");
}

// Four tabs, the last selected: a start page, a news page, a docs page and another start page;
// one saved workspace of one tab.
class SheetQueries : public BrowserFixture {
protected:
    void SetUp() override {
        launchFresh();
        state->createWorkspaceSnapshot("Solo");
        state->newTab();
        showPage(1, "https://News.Example.com/today", "Morning Tabloid");
        state->newTab();
        showPage(2, "https://docs.kernel.org/index.html", "Kernel docs");
        state->newTab();
    }

    std::vector<std::string> paletteTitles(std::string_view query) const {
        std::vector<std::string> titles;
        for (const auto& action : commandPaletteActions(*state, query)) {
            titles.push_back(action.title);
        }
        return titles;
    }
    std::vector<int> overviewOffsets(std::string_view query) const {
        std::vector<int> offsets;
        for (const auto& entry : filteredTabs(*state, query)) {
            EXPECT_EQ(entry.tab, state->tabs.get().at(entry.offset));
            offsets.push_back(entry.offset);
        }
        return offsets;
    }
};

TEST_F(SheetQueries, PaletteFilter) {
    const auto all = paletteTitles("");
    const struct {
        std::string query;
        std::vector<std::string> titles;
    } cases[] = {
        {"", all},
        {" \t\n\u3000", all},
        {" TAB ",
         {"New Tab", "Reopen Closed Tab", "Tab Overview", "Close Duplicate Tabs",
          "Close Other Tabs", "Switch to New Tab", "Switch to Morning Tabloid", "Switch to New Tab",
          "Restore Workspace: Solo"}},
        {"ovel://", {"Open Settings", "Open Downloads", "Open History", "Open Workspaces"}},
        {"example.COM", {"Switch to Morning Tabloid"}},
        {"kernel.org", {"Switch to Kernel docs"}},
        {"start", {"Switch to New Tab", "Switch to New Tab"}},
        {"1 tab(s)", {"Restore Workspace: Solo"}},
        {"safari", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(paletteTitles(c.query), c.titles) << "query \"" << c.query << "\"";
    }
}

// Running an entry of the palette is the UI tests' to show; these two only the state shows.
TEST_F(SheetQueries, PaletteEntriesActWhenTheyRun) {
    // Built while the last tab was selected, run after the selection moved.
    const auto actions = commandPaletteActions(*state, "Close Other Tabs");
    state->selectTab(1);
    actions.front().run();
    ASSERT_EQ(state->tabs->size(), 1u);
    EXPECT_EQ(state->tabs.get()[0]->title.get(), "Morning Tabloid");

    commandPaletteActions(*state, "Restore Workspace: Solo").front().run();
    ASSERT_EQ(state->tabs->size(), 1u);
    EXPECT_FALSE(state->tabs.get()[0]->url().has_value()) << "the workspace's start page";
}

TEST_F(SheetQueries, OverviewFilterKeepsOffsetsInTheFullList) {
    const struct {
        std::string query;
        std::vector<int> offsets;
    } cases[] = {
        {"", {0, 1, 2, 3}}, {"  ", {0, 1, 2, 3}}, {" TABLOID ", {1}}, {"EXAMPLE", {1}},
        {"kernel", {2}},    {"docs.kernel", {2}}, {"start", {}},      {"page", {}},
        {"new", {0, 1, 3}}, {"https", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(overviewOffsets(c.query), c.offsets) << "query \"" << c.query << "\"";
    }
}

} // namespace
} // namespace ovel::test
