#include "web/ContentPolicies.h"
#include "support/BrowserFixture.h"
#include "support/FakeFilterListSource.h"
#include "web/StartPage.h"

#include <set>

namespace ovel::test {
namespace {

constexpr auto ask = PermissionSetting::Ask;
constexpr auto allow = PermissionSetting::Allow;
constexpr auto block = PermissionSetting::Block;

TEST(ContentPolicyDecisions, MediaCaptureFollowsTheHostRule) {
    const SitePermissionRules rules{{"cam.test", {allow, ask, ask, ask}},
                                    {"blocked.test", {block, allow, ask, ask}},
                                    {"both.test", {allow, allow, ask, ask}}};
    struct Case {
        const char* host;
        MediaCaptureType type;
        PermissionDecision expected;
    };
    const Case cases[] = {
        {"cam.test", MediaCaptureType::Camera, PermissionDecision::Grant},
        {"cam.test", MediaCaptureType::Microphone, PermissionDecision::Prompt},
        {"cam.test", MediaCaptureType::CameraAndMicrophone, PermissionDecision::Prompt},
        {"blocked.test", MediaCaptureType::CameraAndMicrophone, PermissionDecision::Deny},
        {"both.test", MediaCaptureType::CameraAndMicrophone, PermissionDecision::Grant},
        {"both.test", MediaCaptureType::Other, PermissionDecision::Prompt},
        {"unknown.test", MediaCaptureType::Camera, PermissionDecision::Prompt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(mediaCaptureDecision(rules, c.host, c.type), c.expected) << c.host;
    }
}

TEST(ContentPolicyDecisions, ScriptsForBlockedLocationAndNotifications) {
    EXPECT_FALSE(userScriptSource({ask, ask, ask, ask}));
    EXPECT_FALSE(userScriptSource({block, block, allow, ask}));
    EXPECT_EQ(userScriptSource({ask, ask, block, ask}), std::string(locationBlockingScript));
    EXPECT_EQ(userScriptSource({ask, ask, block, block}),
              std::string(locationBlockingScript) + "\n" + std::string(notificationBlockingScript));
}

using ContentPolicies = BrowserFixture;

TEST_F(ContentPolicies, TheCompiledListFollowsTheSwitchAndReloadsOnlyTheSelectedTab) {
    store.setBoolean(BrowserState::adBlockEnabledKey, true);
    launch();
    state->newTab();
    EXPECT_TRUE(viewAt(0).attachedRuleLists.empty()) << "nothing until compilation finishes";
    engine.finishCompilation(true);
    EXPECT_TRUE(viewAt(0).attachedRuleLists.empty()) << "the result arrives on the main queue";
    mainQueue.drain();
    EXPECT_EQ(viewAt(0).attachedRuleLists, std::vector<std::string>{"ovel.adblock.rules"});
    state->newTab();
    EXPECT_EQ(viewAt(2).attachedRuleLists.size(), 1u) << "new tabs get the list";

    const int reloadsBefore = viewAt(0).reloadCount;
    state->setAdBlockEnabled(false);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(viewAt(i).attachedRuleLists.empty());
    }
    EXPECT_EQ(viewAt(2).reloadCount, 1) << "the selected tab reloads";
    EXPECT_EQ(viewAt(0).reloadCount, reloadsBefore);

    // A list that cannot be compiled leaves blocking inactive, whatever the switch says.
    launch();
    state->setAdBlockEnabled(true);
    engine.finishCompilation(false);
    mainQueue.drain();
    EXPECT_FALSE(state->hasAdBlockList());
    EXPECT_TRUE(viewAt(0).attachedRuleLists.empty());
}

// The browser started with the published lists on the system, blocking on.
class PublishedLists : public BrowserFixture {
protected:
    BrowserState& launchWithLists() {
        store.setBoolean(BrowserState::adBlockEnabledKey, true);
        state.reset();
        BrowserServices withLists = services();
        withLists.filterLists = &lists;
        state = BrowserState::create(withLists);
        return *state;
    }
    std::vector<std::string> attached() { return viewAt(0).attachedRuleLists; }

    FakeFilterListSource lists;
};

TEST_F(PublishedLists, TheFirstLaunchCompilesThemBehindTheBuiltInRulesWithoutAReload) {
    launchWithLists();
    showPage(0, "https://news.test/", "News");
    engine.finishCompilation(true);
    mainQueue.drain();
    EXPECT_EQ(attached(), std::vector<std::string>{"ovel.adblock.rules"});
    EXPECT_EQ(state->adBlockStatus->ruleCount, 2u);

    lists.finishRead("abc");
    mainQueue.drain();
    EXPECT_EQ(state->adBlockStatus->lists, AdBlockStatus::Lists::Compiling);
    EXPECT_EQ(lists.convertedLeadingRules, adBlockRuleListJSON) << "the built-in rules stay";
    lists.finishConversion(120000);
    EXPECT_EQ(engine.compiledIdentifier, "ovel.adblock.rules.lists-abc-120000");

    const int reloads = viewAt(0).reloadCount;
    engine.finishCompilation(true);
    mainQueue.drain();
    EXPECT_EQ(attached(), std::vector<std::string>{"ovel.adblock.rules.lists-abc-120000"});
    EXPECT_EQ(viewAt(0).reloadCount, reloads) << "the next requests are blocked, not the page";
    EXPECT_EQ(*state->adBlockStatus,
              (AdBlockStatus{AdBlockStatus::Lists::Ready, 120000, true, Date{815000000}}));
}

TEST_F(PublishedLists, ALaterLaunchLoadsThemAndAnUpdateCompilesWhileTheLastOneBlocks) {
    engine.storedLists = {"ovel.adblock.rules", "ovel.adblock.rules.lists-abc-120000"};
    launchWithLists();
    lists.finishRead("abc");
    mainQueue.drain();
    EXPECT_EQ(lists.conversions, 0);
    EXPECT_EQ(attached(), std::vector<std::string>{"ovel.adblock.rules.lists-abc-120000"});
    EXPECT_EQ(state->adBlockStatus->lists, AdBlockStatus::Lists::Ready);
    engine.finishCompilation(true);

    // The package was upgraded.
    launchWithLists();
    lists.finishRead("def");
    mainQueue.drain();
    engine.finishCompilation(true); // the built-in rules, too late to matter
    mainQueue.drain();
    EXPECT_EQ(attached(), std::vector<std::string>{"ovel.adblock.rules.lists-abc-120000"});
    EXPECT_EQ(state->adBlockStatus->lists, AdBlockStatus::Lists::Compiling);
    lists.finishConversion(121000);
    engine.finishCompilation(true);
    mainQueue.drain();
    EXPECT_EQ(attached(), std::vector<std::string>{"ovel.adblock.rules.lists-def-121000"});
    EXPECT_EQ(engine.storedLists,
              (std::set<std::string>{"ovel.adblock.rules", "ovel.adblock.rules.lists-def-121000"}));
}

TEST_F(ContentPolicies, ASiteAllowedAdsLoadsWithoutTheList) {
    store.setBoolean(BrowserState::adBlockEnabledKey, true);
    launch();
    engine.finishCompilation(true);
    mainQueue.drain();
    showPage(0, "https://ads.test/a", "A");
    const int reloads = viewAt(0).reloadCount;
    state->setCurrentSiteRule(SitePermissionRule{.allowAds = true});
    EXPECT_TRUE(viewAt(0).attachedRuleLists.empty());
    EXPECT_EQ(viewAt(0).reloadCount, reloads + 1) << "the page comes back with its ads";

    showPage(0, "https://other.test/", "B");
    EXPECT_EQ(viewAt(0).attachedRuleLists, std::vector<std::string>{"ovel.adblock.rules"});
    showPage(0, "https://ADS.test/b", "A");
    EXPECT_TRUE(viewAt(0).attachedRuleLists.empty());
}

TEST_F(ContentPolicies, TheCurrentHostRuleAndItsPlaceholder) {
    launch();
    EXPECT_EQ(state->currentHost(), "start.page");
    state->setCurrentSiteRule(SitePermissionRule{.camera = block});
    EXPECT_EQ(state->currentSiteRule().camera, block);

    showPage(0, "https://MAPS.Example.test/route", "Maps");
    EXPECT_EQ(state->currentHost(), "maps.example.test");
    EXPECT_EQ(state->currentSiteRule(), SitePermissionRule{});
    state->setCurrentSiteRule(SitePermissionRule{ask, ask, block, block});
    showPage(0, "https://maps.example.test/again", "Maps");
    EXPECT_EQ(viewAt(0).userScripts.size(), 1u);
    EXPECT_EQ(viewAt(0).delegate().decideSitePermission("Maps.Example.Test",
                                                        SitePermissionKind::Notifications),
              PermissionDecision::Deny);

    const int reloads = viewAt(0).reloadCount;
    state->clearCurrentSiteRule();
    EXPECT_EQ(state->sitePermissionRules->count("maps.example.test"), 0u);
    EXPECT_EQ(viewAt(0).reloadCount, reloads + 1);
    EXPECT_EQ(
        store.data(key(BrowserState::sitePermissionsKeyBase)),
        R"({"start.page":{"camera":"block","location":"ask","microphone":"ask","notifications":"ask"}})");
}

TEST(StartPage, EachThemeFillsTheTemplate) {
    std::set<std::string> pages;
    for (BrowserTheme theme : allThemes) {
        const std::string page = startPageHTML(theme);
        EXPECT_EQ(page.find("[["), std::string::npos) << "no placeholder left";
        EXPECT_TRUE(page.ends_with("</html>"));
        pages.insert(page);
    }
    EXPECT_EQ(pages.size(), allThemes.size()) << "each theme has its own colours";
}

using StartPages = LaunchedBrowser;

TEST_F(StartPages, AThemeChangeRegeneratesOnlyTabsShowingTheStartPage) {
    state->newTab();
    state->newTab();
    showPage(1, "https://web.test/", "Web");
    state->selectTab(2);
    state->openURL("OVEL://NEWTAB");
    viewAt(2).currentUrl = "about:srcdoc"; // a URL under the page, yet it shows the start page
    const std::size_t before[] = {viewAt(0).htmlLoads.size(), viewAt(1).htmlLoads.size(),
                                  viewAt(2).htmlLoads.size()};
    state->setTheme(BrowserTheme::Citrus);
    EXPECT_EQ(viewAt(0).htmlLoads.size(), before[0] + 1) << "no URL: the start page";
    EXPECT_EQ(viewAt(1).htmlLoads.size(), before[1]) << "a web page is left alone";
    EXPECT_EQ(viewAt(2).htmlLoads.size(), before[2] + 1) << "addressed as ovel://newtab";
    EXPECT_EQ(viewAt(0).htmlLoads.back(), startPageHTML(BrowserTheme::Citrus));
}

} // namespace
} // namespace ovel::test
