#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"
#include "web/StartPage.h"

#include <algorithm>

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

} // namespace
} // namespace ovel::test
