#include "BrowserOnWebKitFixture.h"
#include "records/RecordsJson.h"

namespace ovel::test {
namespace {

using AddressesOnWebKit = BrowserOnWebKit;

const std::string askForLocation =
    "try { navigator.geolocation.getCurrentPosition(() => {}, () => {}); return 'asked'; }"
    " catch (e) { return e.message; }";

// Real pages' addresses hold characters a strict URI parser refuses. WebKit reports them as
// they are, and the browser must keep them so, wherever an address goes.
TEST_F(AddressesOnWebKit, ReportedAddressesAreKeptEverywhere) {
    server.serveHtml("/b", titled("B"));
    server.serveHtml("/app", titled("App"));
    const std::vector<std::string> addresses = {
        server.url("/b?family=Roboto|Open+Sans"), server.url("/b?q=100%"), server.url("/b?q={x}"),
        server.url("/b?q=a\\b"), server.url("/app#/route#anchor")};
    SitePermissionRule blockLocation;
    blockLocation.location = PermissionSetting::Block;
    // Set as the settings page sets it, for the site shown.
    ASSERT_TRUE(openAndWait(server.url("/app")));
    state->setCurrentSiteRule(blockLocation);

    for (std::size_t i = 0; i < addresses.size(); ++i) {
        const std::string& address = addresses[i];
        SCOPED_TRACE(address);
        if (i > 0) {
            state->newTab();
        }
        const int iconRequests = server.requestCount("/favicon.ico");
        state->openURL(address);
        ASSERT_TRUE(waitUntilShowing(tab(), address)) << tab().url().value_or("-");
        EXPECT_EQ(state->historyEntries->front().url, address);
        EXPECT_EQ(state->addressText.get(), address);
        EXPECT_EQ(state->currentHost(), "127.0.0.1");
        EXPECT_EQ(runScript(webKitView(tab()), askForLocation), "Location blocked");
        EXPECT_TRUE(waitUntil([&] { return server.requestCount("/favicon.ico") > iconRequests; }))
            << "the page's icon is asked for";
    }

    // Another host's page with such an address is no longer under the first host's rule.
    state->duplicateSelectedTab();
    ASSERT_TRUE(waitUntilShowing(tab(), addresses.back()));
    const std::string elsewhere = server.localhostUrl("/b?q={x}");
    state->openURL(elsewhere);
    ASSERT_TRUE(waitUntilShowing(tab(), elsewhere));
    EXPECT_EQ(runScript(webKitView(tab()), askForLocation), "asked");
    state->closeTab(state->selectedIndex.get());

    // The session written along the way brings every tab back at the next launch.
    relaunch();
    ASSERT_EQ(state->tabs->size(), addresses.size());
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        EXPECT_TRUE(waitUntilShowing(*state->tabs.get()[i], addresses[i])) << addresses[i];
    }
}

using RoutesOnWebKit = BrowserOnWebKit;

TEST_F(RoutesOnWebKit, PageLinksToInternalAddresses) {
    server.serveHtml("/a", titled("Page A", "<a id=settings href='ovel://settings'>Settings</a>"
                                            "<a id=history href='chrome://history'>History</a>"));
    ASSERT_TRUE(openAndWait(server.url("/a")));

    // An ovel:// address that names no page is left to WebKit, which cannot load it: the tab
    // says so, with the page behind it.
    runScript(webKitView(tab()), "location.href = 'ovel://nowhere';");
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title nowhere | can go back | loaded");
    ASSERT_TRUE(tab().loadFailure->has_value());
    EXPECT_EQ(tab().loadFailure.get()->kind, LoadFailureKind::Other);
    EXPECT_EQ(tab().displayAddress.get(), std::nullopt);
    EXPECT_EQ(state->addressText.get(), "ovel://nowhere");

    // The settings page opens in the tab, and the page behind it stays without a load.
    runScript(webKitView(tab()), "document.getElementById('settings').click();");
    ASSERT_TRUE(waitUntil([&] { return tab().displayAddress.get() == "ovel://settings"; }));
    runMainLoopFor(300ms);
    EXPECT_EQ(takeLog(), "title Settings | cannot go back");
    EXPECT_EQ(state->addressText.get(), "ovel://settings");
    EXPECT_EQ(tab().webViewUrl()->absoluteString(), server.url("/a"));
    EXPECT_EQ(history(), "Page A " + server.url("/a"));

    // A link in a tab behind opens its page in the selected tab.
    BrowserTab& pageTab = tab();
    state->newTab();
    ASSERT_TRUE(waitUntilIdle(tab()));
    runScript(webKitView(pageTab), "document.getElementById('history').click();");
    ASSERT_TRUE(waitUntil([&] { return tab().displayAddress.get() == "ovel://history"; }));
    EXPECT_EQ(tab().title.get(), "History");
    EXPECT_EQ(state->addressText.get(), "ovel://history");
    EXPECT_EQ(pageTab.title.get(), "Settings");
}

// The bounds, the other tabs and the trimming are the unit tests'.
TEST_F(RoutesOnWebKit, ZoomAndFindReachTheEngine) {
    server.serveHtml("/a", titled("Page A", "<p>a needle in a haystack</p><p>needle</p>"));
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/a")));
    WebKitWebView* view = webKitView(tab());
    EXPECT_EQ(webkit_web_view_get_zoom_level(view), 1.1);
    state->adjustZoom(+0.5);
    EXPECT_DOUBLE_EQ(webkit_web_view_get_zoom_level(view), 1.6);
    // Another site in the same tab keeps the zoom.
    state->openURL(server.localhostUrl("/a"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.localhostUrl("/a")));
    EXPECT_DOUBLE_EQ(webkit_web_view_get_zoom_level(view), 1.6);

    std::vector<guint> found;
    auto* finder = webkit_web_view_get_find_controller(view);
    const gulong handler = g_signal_connect_swapped(
        finder, "found-text",
        G_CALLBACK(+[](std::vector<guint>* seen, guint count) { seen->push_back(count); }), &found);
    state->setFindText("  NEEDLE  ");
    state->runFind();
    EXPECT_TRUE(waitUntil([&] { return !found.empty(); }));
    g_signal_handler_disconnect(finder, handler);
    EXPECT_EQ(found, std::vector<guint>{2}) << "in any case";
}

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
