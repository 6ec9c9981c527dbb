#include "support/BrowserFixture.h"
#include "web/ContentPolicies.h"

namespace ovel::test {
namespace {

constexpr auto ask = PermissionSetting::Ask;
constexpr auto allow = PermissionSetting::Allow;
constexpr auto block = PermissionSetting::Block;

TEST(NotificationPermissionDecisions, HostsSortedByTheirNotificationSetting) {
    const SitePermissionRules rules{{"a.test", {block, block, block, allow}},
                                    {"b.test", {allow, allow, allow, block}},
                                    {"c.test", {allow, allow, allow, ask}},
                                    {"d.test", {ask, ask, ask, allow}}};
    EXPECT_EQ(notificationPermissions(rules),
              (NotificationPermissions{{"a.test", "d.test"}, {"b.test"}}));
    EXPECT_EQ(notificationPermissions({}), NotificationPermissions{});
}

using DesktopIntegration = LaunchedBrowser;

TEST_F(DesktopIntegration, TheEngineHearsTheNotificationRulesOfTheActiveProfile) {
    EXPECT_EQ(engine.notificationPermissions, NotificationPermissions{});
    showPage(0, "https://news.test/", "News");
    state->setCurrentSiteRule({ask, ask, ask, allow});
    EXPECT_EQ(engine.notificationPermissions.allowedHosts, std::vector<std::string>{"news.test"});
    state->setCurrentSiteRule({ask, ask, ask, block});
    EXPECT_EQ(engine.notificationPermissions, (NotificationPermissions{{}, {"news.test"}}));

    // A fresh profile has no rules: nothing stays decided for its pages.
    state->createProfile();
    EXPECT_EQ(engine.notificationPermissions, NotificationPermissions{});
}

TEST_F(DesktopIntegration, APageNotificationGoesToTheDesktopUnderItsTab) {
    state->newTab();
    const BrowserTab& second = *state->tabs.get().at(1);
    WebViewDelegate& page = viewAt(1).delegate();
    page.pageDidShowNotification({7, "<b>Mail</b>", "2 new"});
    page.pageDidShowNotification({8, "Chat", ""});
    page.pageDidCloseNotification(7);

    ASSERT_EQ(desktop.shownNotifications.size(), 2u);
    const DesktopNotification first = desktop.shownNotifications[0];
    EXPECT_EQ(first, (DesktopNotification{first.id, "<b>Mail</b>", "2 new", second.id()}));
    EXPECT_NE(first.id, desktop.shownNotifications[1].id);
    EXPECT_EQ(desktop.withdrawnNotifications, std::vector<std::string>{first.id});
    // Another tab's notification of the same number is a different one.
    viewAt(0).delegate().pageDidShowNotification({7, "Other", ""});
    EXPECT_NE(desktop.shownNotifications.back().id, first.id);
}

TEST_F(DesktopIntegration, FullScreenFollowsTheShownPageOnly) {
    state->newTab();
    struct Step {
        int tab;
        bool fullscreen;
        bool expected;
    };
    // Tab 1 is selected; tab 0 is in the background.
    const Step steps[] = {
        {0, true, false}, {1, true, true}, {0, false, false}, {1, true, true}, {1, false, false}};
    for (const Step& step : steps) {
        viewAt(step.tab).delegate().pageDidChangeFullscreen(step.fullscreen);
        EXPECT_EQ(state->pageFullscreen.get(), step.expected)
            << "tab " << step.tab << (step.fullscreen ? " enters" : " leaves");
    }
    viewAt(1).delegate().pageDidChangeFullscreen(true);
    state->selectTab(0);
    EXPECT_FALSE(state->pageFullscreen.get()) << "the page in full screen was left behind";
}

TEST_F(DesktopIntegration, PrintingNeedsAWebPage) {
    showPage(0, "https://news.test/", "News");
    EXPECT_TRUE(state->canPrintPage());
    state->printPage();
    EXPECT_EQ(viewAt(0).printCount, 1);

    state->openURL("ovel://settings");
    EXPECT_FALSE(state->canPrintPage());
    state->printPage();
    EXPECT_EQ(viewAt(0).printCount, 1);
}

} // namespace
} // namespace ovel::test
