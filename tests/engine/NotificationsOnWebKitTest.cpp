#include "BrowserOnWebKitFixture.h"

#include "records/RecordsJson.h"

namespace ovel::test {
namespace {

constexpr auto ask = PermissionSetting::Ask;
constexpr auto allow = PermissionSetting::Allow;

// The browser starts with a rule that allows notifications on 127.0.0.1 (the loopback server),
// as the user left it. WebKit hands the rules to each web process as it starts.
class NotificationsOnWebKit : public BrowserOnWebKit {
protected:
    void SetUp() override {
        const std::string profile = "7E0F1A1C-0000-4000-8000-000000000001";
        settings.setData(BrowserState::profilesKey, encodeProfiles({{profile, "Personal"}}));
        settings.setString(BrowserState::activeProfileIDKey, profile);
        settings.setData(BrowserState::profileKey(BrowserState::sitePermissionsKeyBase, profile),
                         encodeSitePermissions({{"127.0.0.1", {ask, ask, ask, allow}}}));
        BrowserOnWebKit::SetUp();
    }
};

TEST_F(NotificationsOnWebKit, AnAllowedPageIsGrantedAndItsNotificationsReachTheDesktop) {
    server.serveHtml("/", titled("Mail"));
    const std::string allowed = server.url("/");
    // WebKit keys permissions by origin, port and all: the rules reach web processes started
    // after a page of the server's port was first asked for, which the new tab's is.
    ASSERT_TRUE(openAndWait(allowed));
    state->newTab();
    state->openURL(allowed);
    ASSERT_TRUE(waitUntilShowing(tab(), allowed));
    EXPECT_EQ(runScript(webKitView(tab()), "return Notification.permission;"), "granted");
    // The Permissions API asks the site's rule.
    EXPECT_EQ(runScript(webKitView(tab()),
                        "return (await navigator.permissions.query({name: 'notifications'}))"
                        ".state;"),
              "granted");

    // The notification reaches the desktop as plain text, and leaves it when the page closes it.
    runScript(webKitView(tab()), "window.shown = new Notification('<b>Mail</b>', {body: '2 new'});"
                                 "return 'ok';");
    ASSERT_TRUE(waitUntil([&] { return !desktop.shownNotifications.empty(); }));
    const DesktopNotification shown = desktop.shownNotifications.front();
    EXPECT_EQ(shown, (DesktopNotification{shown.id, "<b>Mail</b>", "2 new", tab().id()}));
    runScript(webKitView(tab()), "window.shown.close(); return 'ok';");
    EXPECT_TRUE(waitUntil([&] { return !desktop.withdrawnNotifications.empty(); }));
    EXPECT_EQ(desktop.withdrawnNotifications, std::vector<std::string>{shown.id});
}

} // namespace
} // namespace ovel::test
