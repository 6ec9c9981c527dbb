#include "support/BrowserFixture.h"
#include "web/ContentPolicies.h"

namespace ovel::test {
namespace {

constexpr auto ask = PermissionSetting::Ask;
constexpr auto allow = PermissionSetting::Allow;
constexpr auto block = PermissionSetting::Block;

using DesktopIntegration = LaunchedBrowser;

TEST_F(DesktopIntegration, TheEngineHearsTheNotificationRulesOfTheActiveProfile) {
    EXPECT_EQ(engine.notificationPermissions, NotificationPermissions{});
    // Hosts by their notification setting alone, sorted; the ones that ask are left out.
    for (const auto& [host, notifications] : {std::pair{"news.test", allow},
                                              {"cam.test", ask},
                                              {"ads.test", block},
                                              {"a.test", allow}}) {
        showPage(0, std::string("https://") + host + "/", host);
        state->setCurrentSiteRule({block, allow, block, notifications});
    }
    EXPECT_EQ(engine.notificationPermissions,
              (NotificationPermissions{{"a.test", "news.test"}, {"ads.test"}}));
    state->setCurrentSiteRule({ask, ask, ask, block});
    EXPECT_EQ(engine.notificationPermissions,
              (NotificationPermissions{{"news.test"}, {"a.test", "ads.test"}}));

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

} // namespace
} // namespace ovel::test
