#include "BrowserOnWebKitFixture.h"
#include "FindRecorder.h"

namespace ovel::test {
namespace {

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

TEST_F(RoutesOnWebKit, ZoomStopsAtItsBoundsAndStaysWithItsTab) {
    server.serveHtml("/a", titled("Page A"));
    const auto zoomOf = [](BrowserTab& tab) {
        return webkit_web_view_get_zoom_level(webKitView(tab));
    };
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/a")));
    BrowserTab& first = tab();
    EXPECT_EQ(zoomOf(first), 1.1);
    for (int step = 0; step < 10; ++step) {
        state->adjustZoom(+0.1);
    }
    EXPECT_EQ(zoomOf(first), 2.0);
    // Another site in the same tab keeps the zoom.
    state->openURL(server.localhostUrl("/a"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.localhostUrl("/a")));
    EXPECT_EQ(zoomOf(first), 2.0);

    state->newTab();
    BrowserTab& second = tab();
    ASSERT_TRUE(waitUntilIdle(second));
    EXPECT_EQ(zoomOf(second), 1.1);
    for (int step = 0; step < 20; ++step) {
        state->adjustZoom(-0.1);
    }
    EXPECT_EQ(zoomOf(second), 0.75);
    EXPECT_EQ(zoomOf(first), 2.0);

    state->selectTab(0);
    state->resetZoom();
    EXPECT_EQ(zoomOf(first), 1.1);
    EXPECT_EQ(zoomOf(second), 0.75);
}

TEST_F(RoutesOnWebKit, FindLooksForTheTrimmedTextInAnyCase) {
    // Only "needle" without the blanks around it is found, in any case, twice.
    server.serveHtml("/a", titled("Page A", "<p>a needle in a haystack</p><p>needle</p>"));
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/a")));
    FindRecorder finds(webKitView(tab()));

    state->setFindText("  NEEDLE  ");
    state->runFind();
    ASSERT_TRUE(waitUntil([&] { return finds.results.size() == 1; }));
    state->setFindText("thimble");
    state->runFind();
    ASSERT_TRUE(waitUntil([&] { return finds.results.size() == 2; }));
    state->setFindText(" \n ");
    state->runFind();
    runMainLoopFor(300ms);
    EXPECT_EQ(finds.results, (std::vector<std::string>{"found 2", "not found"}));
    EXPECT_EQ(tab().title.get(), "Page A");
}

} // namespace
} // namespace ovel::test
