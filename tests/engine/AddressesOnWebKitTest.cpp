#include "BrowserOnWebKitFixture.h"

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
        state->addBookmark();
        EXPECT_EQ(state->bookmarks->back().url, address);
        EXPECT_EQ(state->currentHost(), "127.0.0.1");
        EXPECT_EQ(runScript(webKitView(tab()), askForLocation), "Location blocked");
        EXPECT_TRUE(waitUntil([&] { return server.requestCount("/favicon.ico") > iconRequests; }))
            << "the page's icon is asked for";
    }

    state->duplicateSelectedTab();
    EXPECT_TRUE(waitUntilShowing(tab(), addresses.back()));
    state->closeTab(state->selectedIndex.get());
    state->reopenLastClosedTab();
    EXPECT_TRUE(waitUntilShowing(tab(), addresses.back()));
    state->closeTab(state->selectedIndex.get());

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
        EXPECT_EQ(state->bookmarks->at(i).url, addresses[i]);
    }
}

} // namespace
} // namespace ovel::test
