#include "BrowserOnWebKitFixture.h"

#include <gmock/gmock.h>

namespace ovel::test {
namespace {

using BrowserTabOnWebKit = BrowserOnWebKit;

TEST_F(BrowserTabOnWebKit, PageLoadsDriveTheTabAndHistoryInOrder) {
    server.serveHtml("/a", titled("Page A"));
    server.serveHtml("/b", titled("Page B"));

    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page A | loaded");
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
    EXPECT_EQ(state->addressText.get(), server.url("/a"));
    EXPECT_TRUE(waitUntil([&] { return tab().loadingProgress.get() == 1.0; }));

    state->openURL(server.url("/b"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page B | can go back | loaded");
    EXPECT_FALSE(tab().canGoForward.get());

    state->goBack();
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page A | cannot go back | loaded");
    EXPECT_TRUE(tab().canGoForward.get());
    EXPECT_EQ(history(), "Page A " + server.url("/a") + " | Page B " + server.url("/b") +
                             " | Page A " + server.url("/a"));
    EXPECT_EQ(state->addressText.get(), server.url("/a"));
}

TEST_F(BrowserTabOnWebKit, LateTitlesReachTheTabAndHistory) {
    server.serveHtml("/scripted",
                     "<html><body>x<script>onload = () => setTimeout(() => "
                     "document.title = 'Scripted Title', 300);</script></body></html>");
    server.serveSlowly("/deep", "text/html",
                       {"<html><body><p>" + std::string(4000, 'x') + "</p>",
                        "<title>Deep Title</title><p>end</p></body></html>"},
                       300ms);
    state->openURL(server.url("/scripted"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Scripted Title | loaded");
    state->openURL(server.url("/deep"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Deep Title | can go back | loaded");
    EXPECT_EQ(history(),
              "Deep Title " + server.url("/deep") + " | Scripted Title " + server.url("/scripted"));
}

TEST_F(BrowserTabOnWebKit, FailedLoadsOnlyStopTheLoading) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    ASSERT_TRUE(openAndWait(server.url("/a")));

    state->openURL("http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()) + "/");
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");

    // The sixty-second stop, made short.
    webViewOf(tab()).load({server.url("/never"), 400ms});
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");

    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
    EXPECT_EQ(tab().webViewUrl()->absoluteString(), server.url("/a"));
}

TEST_F(BrowserTabOnWebKit, TabIsReloadableAfterItsWebProcessEnds) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    ASSERT_TRUE(openAndWait(server.url("/a")));

    // Killed while loading: the load fails and the tab keeps its page.
    webViewOf(tab()).load({server.url("/never")});
    ASSERT_TRUE(waitUntil([&] { return tab().isLoading.get(); }));
    auto* view = WEBKIT_WEB_VIEW(WebKitWebViewAdapter::widgetOf(tab().webView()));
    webkit_web_view_terminate_web_process(view);
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");
    EXPECT_EQ(tab().title.get(), "Page A");

    state->reload();
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_EQ(tab().webViewUrl()->absoluteString(), server.url("/a"));
}

TEST_F(BrowserTabOnWebKit, FaviconIsFetchedAfterTheFinish) {
    server.serveHtml("/a", titled("Page A"));
    const auto icon = icoFile({{16, 16, icoBmpImage(16, 16, {0, 0, 255, 255})},
                               {32, 32, pngFile(32, 32, {200, 100, 50, 255})}});
    LoopbackServer::Response response;
    response.contentType = "image/x-icon";
    response.body.assign(icon.begin(), icon.end());
    server.serve("/favicon.ico", response);

    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntil([&] { return tab().favicon.get().has_value(); }));
    const auto& favicon = *tab().favicon.get();
    EXPECT_EQ(favicon.width, 32);
    EXPECT_EQ(favicon.height, 32);
    EXPECT_EQ(std::vector<std::uint8_t>(favicon.rgba.begin(), favicon.rgba.begin() + 4),
              (std::vector<std::uint8_t>{200, 100, 50, 255}));
    EXPECT_EQ(server.requestCount("/favicon.ico"), 1);
}

TEST_F(BrowserTabOnWebKit, ThemeChangeRedrawsOnlyTheStartPages) {
    const auto backgroundOf = [](BrowserTab& tab) {
        return runScript(webKitView(tab), "return getComputedStyle(document.body).backgroundImage;")
            .value_or("(none)");
    };
    BrowserTab& startTab = tab();
    // Midnight's first background stop, #080d18.
    EXPECT_THAT(backgroundOf(startTab), testing::HasSubstr("rgb(8, 13, 24) 0%"));
    server.serveHtml("/a", titled("Page A"));
    state->newTab();
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/a")));
    BrowserTab& pageTab = tab();

    state->setTheme(BrowserTheme::Citrus);
    EXPECT_FALSE(webkit_web_view_is_loading(webKitView(pageTab)));
    ASSERT_TRUE(waitUntilIdle(startTab));
    // Citrus runs from #222c0d to #d08f33.
    EXPECT_THAT(backgroundOf(startTab),
                testing::HasSubstr("rgb(34, 44, 13) 0%, rgb(208, 143, 51) 100%"));
    EXPECT_EQ(server.requestCount("/a"), 1);
    EXPECT_EQ(pageTab.title.get(), "Page A");
}

TEST_F(BrowserTabOnWebKit, AnAddressOpenedAsTheTabIsMadeIsTheOneItShows) {
    // The new tab's start page and the address are asked of a view whose web process has not
    // started yet; the address is the later request and must be what the tab ends up showing.
    server.serveHtml("/a", titled("Page A"));
    state->newTab();
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntil([&] { return tab().title.get() == "Page A" && isIdle(tab()); }))
        << "the tab reads " << tab().title.get();
    EXPECT_EQ(tab().url(), server.url("/a"));
    EXPECT_EQ(server.requestCount("/a"), 1);
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
}

} // namespace
} // namespace ovel::test
