#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"
#include "web/StartPage.h"

#include <algorithm>

// Bookmarks, history, workspace snapshots and profiles of BrowserState.

namespace ovel::test {
namespace {

using BrowserStateStartup = BrowserFixture;
using BrowserStatePersistence = BrowserFixture;
using BrowserStateProfileSwitch = BrowserFixture;

TEST_F(BrowserStateStartup, FirstLaunchOnAnEmptyStore) {
    BrowserState& browser = launch();

    ASSERT_EQ(browser.profiles->size(), 1u);
    EXPECT_EQ(browser.profiles->front().name, "Default");
    EXPECT_TRUE(isUuidText(browser.activeProfileID.get()));
    EXPECT_EQ(browser.activeProfileID.get(), browser.profiles->front().id);
    EXPECT_EQ(decodeProfiles(store.data(BrowserState::profilesKey).value()), browser.profiles.get())
        << "the profile list is written at once";
    EXPECT_FALSE(store.string(BrowserState::activeProfileIDKey)) << "the active id is not";
    EXPECT_EQ(store.entries("set "), std::vector<std::string>{"set ovel.profiles.v1"})
        << "nothing else is written at start-up";

    ASSERT_EQ(browser.tabs->size(), 1u);
    EXPECT_EQ(browser.selectedIndex.get(), 0);
    EXPECT_EQ(viewAt(0).htmlLoads, std::vector<std::string>{startPageHTML(BrowserTheme::Midnight)});
    EXPECT_EQ(browser.addressText.get(), "");
    EXPECT_EQ(browser.theme.get(), BrowserTheme::Midnight);
    EXPECT_EQ(browser.searchEngine.get(), SearchEngine::Google);
    EXPECT_TRUE(browser.smoothAnimations.get());
    EXPECT_FALSE(browser.adBlockEnabled.get());
    EXPECT_EQ(engine.compiledIdentifier, "ovel.adblock.rules");
}

TEST_F(BrowserStateStartup, SecondLaunchFindsTheSameProfileAndSession) {
    launch();
    const std::string firstID = profileID();
    showPage(0, "https://example.test/", "Example");
    state->addBookmark();

    BrowserState& again = launch();
    EXPECT_EQ(again.activeProfileID.get(), firstID);
    ASSERT_EQ(again.tabs->size(), 1u);
    ASSERT_EQ(viewAt(0).loadRequests.size(), 1u);
    EXPECT_EQ(viewAt(0).loadRequests[0].url, "https://example.test/");
    EXPECT_EQ(viewAt(0).loadRequests[0].timeout, std::chrono::seconds(60));
    ASSERT_EQ(again.bookmarks->size(), 1u);
    EXPECT_EQ(again.historyEntries->size(), 1u);
}

TEST_F(BrowserStateStartup, SettingsAreWrittenOnEveryAssignmentAndReadAtTheNextLaunch) {
    for (BrowserTheme theme : allThemes) {
        store.setString(BrowserState::themeKey, rawValue(theme));
        EXPECT_EQ(launch().theme.get(), theme);
    }
    // Raw values are exact: what is not one falls back.
    store.setString(BrowserState::themeKey, "Ocean");
    store.setString(BrowserState::searchEngineKey, "duckduckgo");
    store.setString(BrowserState::smoothAnimationsKey, "false"); // not a boolean
    EXPECT_EQ(launch().theme.get(), BrowserTheme::Midnight);
    EXPECT_EQ(state->searchEngine.get(), SearchEngine::Google);
    EXPECT_TRUE(state->smoothAnimations.get());

    store.log.clear();
    state->setTheme(BrowserTheme::Citrus);
    state->setTheme(BrowserTheme::Citrus);
    state->setSearchEngine(SearchEngine::DuckDuckGo);
    state->setSmoothAnimations(false);
    state->setAdBlockEnabled(true);
    EXPECT_EQ(store.entries("set "),
              (std::vector<std::string>{"set ovel.theme", "set ovel.theme", "set ovel.searchEngine",
                                        "set ovel.smoothAnimations", "set ovel.adBlockEnabled"}));
    EXPECT_EQ(store.string(BrowserState::searchEngineKey), "duckDuckGo");
    EXPECT_EQ(viewAt(0).htmlLoads.size(), 3u) << "each theme assignment regenerates the start page";
    launch();
    EXPECT_EQ(state->theme.get(), BrowserTheme::Citrus);
    EXPECT_EQ(state->searchEngine.get(), SearchEngine::DuckDuckGo);
    EXPECT_FALSE(state->smoothAnimations.get());
    EXPECT_TRUE(state->adBlockEnabled.get());
    EXPECT_EQ(viewAt(0).htmlLoads.back(), startPageHTML(BrowserTheme::Citrus));
}

TEST_F(BrowserStateStartup, AStoredActiveIDNamingNoProfileFallsBackToTheFirst) {
    store.setData(BrowserState::profilesKey, encodeProfiles({{"P-ONE", "One"}, {"P-TWO", "Two"}}));
    store.setString(BrowserState::activeProfileIDKey, "P-GONE");
    store.log.clear();

    launch();
    EXPECT_EQ(profileID(), "P-ONE");
    EXPECT_EQ(store.string(BrowserState::activeProfileIDKey), "P-ONE");
    EXPECT_EQ(store.entries("set "), std::vector<std::string>{"set ovel.activeProfileID.v1"})
        << "start-up only writes the corrected id";
}

// A stored index is clamped to the tabs; a tab without a URL that parses shows the start page.
TEST_F(BrowserStateStartup, AStoredSessionComesBackWithItsTabsAndAClampedSelection) {
    const std::string two = R"("tabs":[{"url":"https://a.test/","isPinned":false},)"
                            R"({"url":"https://b.test/","isPinned":false}])";
    const std::pair<std::string, const char*> cases[] = {
        {R"(7,"tabs":[{"url":"https://one.test/","isPinned":false},{"isPinned":true},)"
         R"({"url":"not a url","isPinned":false}])",
         "https://one.test/ New Tabp [New Tab]"},
        {"99999999999," + two, "https://a.test/ [https://b.test/]"},
        {"1.0," + two, "https://a.test/ [https://b.test/]"},
        {"0.5," + two, "[https://a.test/] https://b.test/"},
        {"-99999999999," + two, "[https://a.test/] https://b.test/"},
        {R"(-4,"tabs":[])", "[New Tab]"},
    };
    for (const auto& [session, expected] : cases) {
        store.setData(BrowserState::profilesKey, encodeProfiles({{"P", "Default"}}));
        store.setData(BrowserState::profileKey(BrowserState::sessionKeyBase, "P"),
                      R"({"selectedIndex":)" + session + "}");
        launch();
        EXPECT_EQ(strip(), expected) << session;
    }
}

TEST_F(BrowserStateStartup, UnreadableBlobsFallBackAndStayUntouched) {
    const std::string garbage = "{\"not\": \"the right shape\"";
    store.setData(BrowserState::profilesKey, encodeProfiles({{"P", "Default"}}));
    const std::vector<std::string_view> bases{
        BrowserState::sessionKeyBase,         BrowserState::closedTabsKeyBase,
        BrowserState::bookmarksKeyBase,       BrowserState::historyKeyBase,
        BrowserState::sitePermissionsKeyBase, BrowserState::workspaceSnapshotsKeyBase};
    for (std::string_view base : bases) {
        store.setData(BrowserState::profileKey(base, "P"), garbage);
    }
    store.log.clear();

    BrowserState& browser = launch();
    EXPECT_EQ(browser.tabs->size(), 1u);
    EXPECT_TRUE(browser.bookmarks->empty());
    EXPECT_TRUE(browser.historyEntries->empty());
    EXPECT_TRUE(browser.sitePermissionRules->empty());
    EXPECT_TRUE(browser.workspaceSnapshots->empty());
    EXPECT_TRUE(browser.closedTabs().empty());
    EXPECT_TRUE(store.entries("set ").empty());
    for (std::string_view base : bases) {
        EXPECT_EQ(store.data(BrowserState::profileKey(base, "P")), garbage) << base;
    }

    // An unreadable profile list counts as none: a fresh "Default" replaces it.
    store.setData(BrowserState::profilesKey, "[{\"id\":1}]");
    launch();
    EXPECT_EQ(state->profiles->size(), 1u);
    EXPECT_NE(profileID(), "P");
}

TEST_F(BrowserStatePersistence, ABackgroundPageUpdateRecordsHistoryButNotTheAddress) {
    launch();
    state->newTab();
    state->setAddressText("typed");
    showPage(0, "https://background.test/", "Background");
    EXPECT_EQ(state->addressText.get(), "typed");
    ASSERT_EQ(state->historyEntries->size(), 1u);
    EXPECT_EQ(state->historyEntries->front().title, "Background");
    EXPECT_EQ(decodeSession(store.data(key(BrowserState::sessionKeyBase)).value())->tabs[0].url,
              "https://background.test/");

    showPage(1, "https://front.test/", "Front");
    EXPECT_EQ(state->addressText.get(), "https://front.test/");
    showPage(1, "file:///etc/hosts", "Hosts");
    showPage(1, "about:blank", "");
    EXPECT_EQ(state->historyEntries->size(), 2u) << "only http and https pages enter history";
}

TEST_F(BrowserStateProfileSwitch, SavesTheLeavingProfileInOrderBeforeReadingTheNewOne) {
    launch();
    const std::string first = profileID();
    showPage(0, "https://first.test/", "First");
    state->createProfile();
    const std::string second = profileID();
    EXPECT_EQ(state->activeProfileName(), "Profile 2");
    EXPECT_EQ(store.string(BrowserState::activeProfileIDKey), second);
    store.log.clear();

    state->switchToProfile(first);
    const std::vector<std::string> expectedStart{
        "set ovel.activeProfileID.v1",
        "set ovel.bookmarks.v1." + second,
        "set ovel.history.v1." + second,
        "set ovel.sitePermissions.v1." + second,
        "set ovel.workspaceSnapshots.v1." + second,
        "set ovel.closedTabs.v2." + second,
        "set ovel.session.v3." + second,
    };
    ASSERT_GE(store.log.size(), expectedStart.size());
    EXPECT_EQ(std::vector<std::string>(store.log.begin(), store.log.begin() + 7), expectedStart);
    EXPECT_EQ(store.entries("set ").size(), 7u) << "loading the new profile writes nothing";
    EXPECT_NE(std::find(store.log.begin(), store.log.end(), "read ovel.session.v3." + first),
              store.log.end());
    EXPECT_EQ(viewAt(0).loadRequests.at(0).url, "https://first.test/");
    EXPECT_EQ(state->historyEntries->size(), 1u);
}

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
