#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"
#include "web/StartPage.h"

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

} // namespace
} // namespace ovel::test
