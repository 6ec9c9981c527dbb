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

TEST_F(BrowserStateStartup, StoredSettingsAndTheirFallbacks) {
    store.setString(BrowserState::themeKey, "Midnight");
    store.setString(BrowserState::searchEngineKey, "bing");
    store.setString(BrowserState::smoothAnimationsKey, "false"); // not a boolean
    EXPECT_EQ(launch().theme.get(), BrowserTheme::Midnight);
    EXPECT_EQ(state->searchEngine.get(), SearchEngine::Bing);
    EXPECT_TRUE(state->smoothAnimations.get());

    store.setString(BrowserState::themeKey, "citrus");
    store.setBoolean(BrowserState::smoothAnimationsKey, false);
    store.setBoolean(BrowserState::adBlockEnabledKey, true);
    launch();
    EXPECT_EQ(state->theme.get(), BrowserTheme::Citrus);
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

TEST_F(BrowserStateStartup, ASessionWithSelectedIndexSevenAndThreeTabs) {
    store.setData(BrowserState::profilesKey, encodeProfiles({{"P", "Default"}}));
    store.setData(
        BrowserState::profileKey(BrowserState::sessionKeyBase, "P"),
        encodeSession(
            {7, {{"https://one.test/", false}, {std::nullopt, true}, {"not a url", false}}}));
    BrowserState& browser = launch();

    ASSERT_EQ(browser.tabs->size(), 3u);
    EXPECT_EQ(browser.selectedIndex.get(), 2);
    EXPECT_EQ(viewAt(0).loadRequests.at(0).url, "https://one.test/");
    EXPECT_TRUE(browser.tabs.get()[1]->isPinned.get());
    EXPECT_EQ(viewAt(1).htmlLoads.size(), 1u) << "a tab without a URL shows the start page";
    EXPECT_EQ(viewAt(2).htmlLoads.size(), 1u) << "so does one whose URL does not parse";
    EXPECT_TRUE(viewAt(0).htmlLoads.empty());
}

TEST_F(BrowserStateStartup, AnOddStoredSelectionIsClampedAndTheTabsSurvive) {
    const std::pair<const char*, int> cases[] = {
        {"99999999999", 1}, {"1.0", 1}, {"0.5", 0}, {"-99999999999", 0}};
    for (const auto& [stored, selected] : cases) {
        store.setData(BrowserState::profilesKey, encodeProfiles({{"P", "Default"}}));
        store.setData(BrowserState::profileKey(BrowserState::sessionKeyBase, "P"),
                      std::string(R"({"selectedIndex":)") + stored +
                          R"(,"tabs":[{"url":"https://a.test/","isPinned":false},)" +
                          R"({"url":"https://b.test/","isPinned":false}]})");
        BrowserState& browser = launch();
        EXPECT_EQ(browser.tabs->size(), 2u) << stored;
        EXPECT_EQ(browser.selectedIndex.get(), selected) << stored;
    }
}

TEST_F(BrowserStateStartup, ASessionOfNoTabsOpensOneStartPage) {
    store.setData(BrowserState::profilesKey, encodeProfiles({{"P", "Default"}}));
    store.setData(BrowserState::profileKey(BrowserState::sessionKeyBase, "P"),
                  R"({"selectedIndex":-4,"tabs":[]})");
    launch();
    EXPECT_EQ(state->tabs->size(), 1u);
    EXPECT_EQ(state->selectedIndex.get(), 0);
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

TEST_F(BrowserStatePersistence, SettingsAreWrittenOnEveryAssignment) {
    launch();
    store.log.clear();
    state->setTheme(BrowserTheme::Ocean);
    state->setTheme(BrowserTheme::Ocean);
    state->setSearchEngine(SearchEngine::DuckDuckGo);
    state->setSmoothAnimations(false);
    state->setAdBlockEnabled(true);
    EXPECT_EQ(store.entries("set "),
              (std::vector<std::string>{"set ovel.theme", "set ovel.theme", "set ovel.searchEngine",
                                        "set ovel.smoothAnimations", "set ovel.adBlockEnabled"}));
    EXPECT_EQ(store.string("ovel.searchEngine"), "duckDuckGo");
    EXPECT_EQ(viewAt(0).htmlLoads.size(), 3u) << "each theme assignment regenerates the start page";
}

TEST_F(BrowserStatePersistence, TheSessionRecordsURLsPinsAndAClampedIndex) {
    launch();
    state->newTab();
    showPage(1, "https://two.test/path?q=1", "Two");
    state->togglePinTab(1);
    auto session = decodeSession(store.data(key(BrowserState::sessionKeyBase)).value());
    ASSERT_TRUE(session);
    EXPECT_EQ(session->tabs,
              (std::vector<TabStore>{{"https://two.test/path?q=1", true}, {std::nullopt, false}}));
    EXPECT_EQ(session->selectedIndex, 0);
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
