// Bookmarks, history, workspace snapshots and profiles of BrowserState.

#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"

namespace ovel::test {
namespace {

using History = LaunchedBrowser;
using Bookmarks = LaunchedBrowser;
using WorkspaceSnapshots = LaunchedBrowser;
using Profiles = LaunchedBrowser;

std::vector<std::string> urlsOf(const std::vector<HistoryEntry>& entries) {
    std::vector<std::string> urls;
    for (const HistoryEntry& entry : entries) {
        urls.push_back(entry.url);
    }
    return urls;
}

TEST_F(History, SkipsOnlyImmediateRepeatsNewestFirst) {
    for (const char* page :
         {"https://a.test/", "https://a.test/", "https://b.test/", "https://a.test/"}) {
        clock.advance(1);
        showPage(0, page, "Page");
    }
    EXPECT_EQ(urlsOf(state->historyEntries.get()),
              (std::vector<std::string>{"https://a.test/", "https://b.test/", "https://a.test/"}));
    EXPECT_EQ(state->historyEntries->front().visitedAt, clock.now());
    EXPECT_EQ(decodeHistory(store.data(key(BrowserState::historyKeyBase)).value()),
              state->historyEntries.get());
}

TEST_F(History, ClearingOneProfileLeavesTheOthers) {
    const std::string first = profileID();
    showPage(0, "https://first.test/", "First");
    state->createProfile();
    showPage(0, "https://second.test/", "Second");
    state->clearHistory();
    EXPECT_TRUE(state->historyEntries->empty());
    EXPECT_EQ(store.data(key(BrowserState::historyKeyBase)), "[]");
    state->switchToProfile(first);
    EXPECT_EQ(urlsOf(state->historyEntries.get()), std::vector<std::string>{"https://first.test/"});
}

TEST_F(Bookmarks, AddsThePageOfTheSelectedTabOnly) {
    const auto writes = store.log.size();
    state->addBookmark();
    EXPECT_TRUE(state->bookmarks->empty());
    EXPECT_EQ(store.log.size(), writes) << "a start page is not bookmarked and nothing is saved";

    showPage(0, "https://a.test/", "A");
    state->addBookmark();
    state->addBookmark();
    ASSERT_EQ(state->bookmarks->size(), 2u);
    EXPECT_NE(state->bookmarks.get()[0].id, state->bookmarks.get()[1].id);
    EXPECT_EQ(decodeBookmarks(store.data(key(BrowserState::bookmarksKeyBase)).value()),
              (std::vector<BookmarkStore>{{"A", "https://a.test/"}, {"A", "https://a.test/"}}));
}

TEST_F(Bookmarks, LoadingDropsUnparsableAddressesAndGivesFreshIds) {
    store.setData(
        key(BrowserState::bookmarksKeyBase),
        encodeBookmarks(
            {{"One", "https://one.test/"}, {"Broken", "not a url"}, {"Two", "https://two.test/"}}));
    launch();
    ASSERT_EQ(state->bookmarks->size(), 2u);
    EXPECT_EQ(state->bookmarks.get()[0].title, "One");
    EXPECT_EQ(state->bookmarks.get()[1].title, "Two");
    const Uuid firstID = state->bookmarks->front().id;
    launch();
    EXPECT_NE(state->bookmarks->front().id, firstID);
}

TEST_F(WorkspaceSnapshots, NamingAndTheThirtyNewest) {
    for (int i = 0; i < 4; ++i) {
        state->createWorkspaceSnapshot(std::nullopt);
    }
    state->createWorkspaceSnapshot("  \n ");
    EXPECT_EQ(state->workspaceSnapshots->front().name, "Workspace 5");
    state->createWorkspaceSnapshot("  Research \n");
    EXPECT_EQ(state->workspaceSnapshots->front().name, "Research");
    for (int i = 0; i < 25; ++i) {
        state->createWorkspaceSnapshot("More");
    }
    ASSERT_EQ(state->workspaceSnapshots->size(), 30u);
    const std::string secondOldest = state->workspaceSnapshots.get()[28].id;
    state->createWorkspaceSnapshot("Newest");
    ASSERT_EQ(state->workspaceSnapshots->size(), 30u);
    EXPECT_EQ(state->workspaceSnapshots->front().name, "Newest");
    EXPECT_EQ(state->workspaceSnapshots->back().id, secondOldest) << "the oldest was dropped";
    EXPECT_EQ(
        decodeWorkspaceSnapshots(store.data(key(BrowserState::workspaceSnapshotsKeyBase)).value()),
        state->workspaceSnapshots.get());
}

TEST_F(WorkspaceSnapshots, RestoringReplacesTabsClampsAndLeavesClosedTabsAlone) {
    viewAt(0).engineState = "A and before";
    showPage(0, "https://a.test/", "A");
    state->newTab();
    state->togglePinTab(0);
    state->createWorkspaceSnapshot("Two tabs");
    WorkspaceSnapshot snapshot = state->workspaceSnapshots->front();
    EXPECT_EQ(snapshot.tabs,
              (std::vector<TabStore>{{"https://a.test/", true}, {std::nullopt, false}}));
    EXPECT_EQ(snapshot.selectedIndex, 1);

    state->newTab();
    state->closeTab(0);
    const auto closed = state->closedTabs();
    snapshot.selectedIndex = 9;
    state->restoreWorkspaceSnapshot(snapshot);
    ASSERT_EQ(state->tabs->size(), 2u);
    EXPECT_EQ(state->selectedIndex.get(), 1);
    EXPECT_TRUE(state->tabs.get()[0]->isPinned.get());
    EXPECT_EQ(viewAt(0).loadRequests.at(0).url, "https://a.test/");
    EXPECT_EQ(viewAt(0).restoredStates, std::vector<std::string>{"A and before"})
        << "with its back/forward list";
    EXPECT_EQ(viewAt(1).htmlLoads.size(), 1u) << "a start page restores as a start page";
    EXPECT_EQ(state->closedTabs(), closed);
    EXPECT_EQ(engine.liveViewCount(), 2) << "the replaced tabs are gone";

    state->restoreWorkspaceSnapshot(WorkspaceSnapshot{"E", "Empty", {}, 0, {}});
    EXPECT_EQ(state->tabs->size(), 2u);
    state->deleteWorkspaceSnapshot(snapshot.id);
    EXPECT_TRUE(state->workspaceSnapshots->empty());
}

TEST_F(Profiles, RenamingTrimsAndRefusesBlanks) {
    state->renameActiveProfile(" \t\n");
    EXPECT_EQ(state->activeProfileName(), "Default");
    state->renameActiveProfile("  Work \n");
    EXPECT_EQ(state->activeProfileName(), "Work");
    EXPECT_EQ(decodeProfiles(store.data(BrowserState::profilesKey).value())->front().name, "Work");
    state->switchToProfile("NO-SUCH-PROFILE");
    EXPECT_EQ(state->activeProfileName(), "Profile");
}

TEST_F(Profiles, DeletingRemovesItsKeysAndActivatesTheNeighbour) {
    state->deleteActiveProfile();
    EXPECT_EQ(state->profiles->size(), 1u) << "the only profile stays";

    const std::string first = profileID();
    state->createProfile();
    const std::string second = profileID();
    state->createProfile();
    showPage(0, "https://third.test/", "Third");
    state->addBookmark();
    const std::string third = profileID();
    store.log.clear();

    state->deleteActiveProfile();
    EXPECT_EQ(profileID(), second);
    const std::vector<std::string> removals{
        "remove ovel.session.v3." + third,         "remove ovel.closedTabs.v2." + third,
        "remove ovel.bookmarks.v1." + third,       "remove ovel.history.v1." + third,
        "remove ovel.sitePermissions.v1." + third, "remove ovel.workspaceSnapshots.v1." + third};
    EXPECT_EQ(store.entries("remove "), removals);
    for (const auto& [storedKey, value] : store.values()) {
        EXPECT_EQ(storedKey.find(third), std::string::npos) << storedKey << " was written back";
    }

    state->switchToProfile(first);
    state->deleteActiveProfile();
    EXPECT_EQ(profileID(), second) << "deleting the first activates the new first";
}

} // namespace
} // namespace ovel::test
