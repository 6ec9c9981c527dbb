#include "BrowserOnWebKitFixture.h"
#include "webkit/WebKitSessionState.h"

namespace ovel::test {
namespace {

using BrowserTabOnWebKit = BrowserOnWebKit;

TEST_F(BrowserTabOnWebKit, PageLoadsDriveTheTabAndHistoryInOrder) {
    server.serveHtml("/a", titled("Page A", "<a id=link href='/b'>b</a>"));
    server.serveHtml("/b", titled("Page B"));
    EXPECT_FALSE(tab().url()) << "the start page has no address";

    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page A | loaded");
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
    EXPECT_EQ(state->addressText.get(), server.url("/a"));
    EXPECT_TRUE(waitUntil([&] { return tab().loadingProgress.get() == 1.0; }));

    runScript(webKitView(tab()), "document.getElementById('link').click(); return 1;");
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

    // Same-page navigations change the address without a load.
    runScript(webKitView(tab()), "history.pushState({}, '', '/pushed'); return 1;");
    EXPECT_TRUE(waitUntil([&] { return tab().url() == server.url("/pushed"); }));
    runScript(webKitView(tab()), "location.hash = 'part'; return 1;");
    EXPECT_TRUE(waitUntil([&] { return tab().url() == server.url("/pushed#part"); }));
    EXPECT_EQ(takeLog(), "");
}

// WebKit tells a title only after the load has finished, resets it to empty at each commit and
// reports an empty title element as no title: the tab and history must still get what the
// page says, "Untitled" only for a page without a title.
TEST_F(BrowserTabOnWebKit, TitlesAreWhatThePageSays) {
    server.serveHtml("/plain", titled("Plain Title"));
    server.serveHtml("/scripted",
                     "<html><body>x<script>onload = () => setTimeout(() => "
                     "document.title = 'Scripted Title', 300);</script></body></html>");
    server.serveSlowly("/deep", "text/html",
                       {"<html><body><p>" + std::string(4000, 'x') + "</p>", "<p>more</p>",
                        "<title>Deep Title</title><p>end</p></body></html>"},
                       200ms);
    server.serveHtml("/untitled", "<html><body>no title</body></html>");
    server.serveHtml("/empty", "<html><head><title></title></head><body>empty</body></html>");
    server.serveHtml("/much-later", "<html><body>x<script>onload = () => setTimeout(() => "
                                    "document.title = 'Much Later', 1800);</script></body></html>");
    const struct {
        const char* path;
        const char* title;
        // A title that comes after the finish was announced untitled.
        const char* later;
    } cases[] = {
        {"/plain", "Plain Title", nullptr},
        {"/scripted", "Scripted Title", nullptr},
        {"/deep", "Deep Title", nullptr},
        {"/untitled", "Untitled", nullptr},
        {"/empty", "", nullptr},
        {"/much-later", "Untitled", "Much Later"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        ASSERT_TRUE(openAndWait(server.url(c.path)));
        EXPECT_EQ(tab().title.get(), c.title);
        EXPECT_EQ(state->historyEntries->front().title, c.title);
        if (c.later != nullptr) {
            EXPECT_TRUE(waitUntil([&] { return tab().title.get() == c.later; }));
        }
    }
    // Only the pages reached a history entry each, the late title aside.
    EXPECT_EQ(state->historyEntries->size(), std::size(cases));
}

// A failed load says why and keeps its address; a stop says nothing. Nothing of it is history.
TEST_F(BrowserTabOnWebKit, FailedLoadsSayWhyAndKeepTheirAddress) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    server.serveBrokenBody("/broken", "text/html", "<html><body>" + std::string(3000, 'x'), 100000);
    ASSERT_TRUE(openAndWait(server.url("/a")));

    const std::string refused =
        "http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()) + "/";
    const struct {
        const char* what;
        LoadRequest request;
        bool stopByUser;
        std::optional<LoadFailureKind> failure;
    } cases[] = {
        {"refused", {refused}, false, LoadFailureKind::ConnectionRefused},
        {"a port kept for other services",
         {"http://127.0.0.1:9/x"},
         false,
         LoadFailureKind::PortBlocked},
        {"never answered, the time-out made short",
         {server.url("/never"), 400ms},
         false,
         LoadFailureKind::TimedOut},
        {"stopped by the user", {server.url("/never")}, true, std::nullopt},
        {"cut off in the middle", {server.url("/broken")}, false, LoadFailureKind::ConnectionLost},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        webViewOf(tab()).load(c.request);
        if (c.stopByUser) {
            ASSERT_TRUE(waitUntil([&] { return tab().isLoading.get(); }));
            webViewOf(tab()).stopLoading();
        }
        // An address on a refused port fails without reaching WebKit, just after it is asked.
        ASSERT_TRUE(waitUntil([&] {
            return isIdle(tab()) && (!c.failure || tab().loadFailure->has_value());
        })) << takeLog();
        takeLog();
        if (!c.failure) {
            EXPECT_FALSE(tab().loadFailure->has_value());
            EXPECT_EQ(tab().url(), server.url("/a"));
            continue;
        }
        ASSERT_TRUE(tab().loadFailure->has_value());
        EXPECT_EQ(tab().loadFailure.get()->kind, *c.failure);
        EXPECT_EQ(tab().url(), c.request.url);
        EXPECT_EQ(tab().title.get(), "127.0.0.1");
        state->goBack();
        ASSERT_TRUE(waitUntil([&] { return isIdle(tab()) && tab().url() == server.url("/a"); }))
            << "Back leads to the page before";
        takeLog();
    }
    // Nothing more arrives for any of them, a late title included.
    runMainLoopFor(WebKitWebViewAdapter::titleWait + 500ms);
    EXPECT_EQ(takeLog(), "");
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
}

// The back/forward list goes with a closed tab and comes back with it, kept to its last entries.
TEST_F(BrowserTabOnWebKit, BackAndForwardComeBackWithTheTab) {
    for (const char* page : {"/a", "/b", "/c"}) {
        server.serveHtml(page, titled(std::string("Page ") + page));
        ASSERT_TRUE(openAndWait(server.url(page)));
    }
    const std::optional<std::string> recorded = tab().storedRecord().sessionState;
    ASSERT_TRUE(recorded);
    state->newTab();
    state->closeTab(0);
    state->reopenLastClosedTab();
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/c")));
    EXPECT_TRUE(tab().canGoBack.get());
    state->goBack();
    ASSERT_TRUE(waitUntil([&] { return isIdle(tab()) && tab().url() == server.url("/b"); }));
    EXPECT_TRUE(tab().canGoForward.get());

    const std::optional<std::string> lastTwo = boundedSessionState(*recorded, 2);
    ASSERT_TRUE(lastTwo);
    EXPECT_LT(lastTwo->size(), recorded->size());
    state->newTab();
    ASSERT_TRUE(webViewOf(tab()).restoreSessionState(*lastTwo, {server.url("/c")}));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/c")));
    state->goBack();
    ASSERT_TRUE(waitUntil([&] { return isIdle(tab()) && tab().url() == server.url("/b"); }));
    EXPECT_FALSE(tab().canGoBack.get()) << "the first page was left out";
    EXPECT_FALSE(webViewOf(tab()).restoreSessionState("not a state", {server.url("/a")}));
}

// The sixty-second time-out, made short, starts over at everything WebKit reports arriving: a
// slow page that keeps sending is never cut off. (A load that stalls is stopped in
// FailedLoadsOnlyStopTheLoading; what else starts and forgets the time-out is LoadGate's.)
TEST_F(BrowserTabOnWebKit, TimeOutSparesASlowPageThatKeepsSending) {
    std::vector<std::string> trickle = {"<html><head><title>Trickle</title></head><body>"};
    for (int i = 0; i < 8; ++i) {
        trickle.push_back("<p>" + std::string(2000, 'x') + "</p>");
    }
    trickle.push_back("</body></html>");
    server.serveSlowly("/trickle", "text/html", trickle, 300ms);

    webViewOf(tab()).load({server.url("/trickle"), 1000ms});
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Trickle | loaded");
}

TEST_F(BrowserTabOnWebKit, TabIsReloadableAfterItsWebProcessEnds) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    ASSERT_TRUE(openAndWait(server.url("/a")));

    // Killed while loading: the load fails and the tab keeps its page. (A page killed while
    // shown and then reloaded is the end-to-end tests' to show.)
    webViewOf(tab()).load({server.url("/never")});
    ASSERT_TRUE(waitUntil([&] { return tab().isLoading.get(); }));
    webkit_web_view_terminate_web_process(webKitView(tab()));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");
    EXPECT_EQ(tab().title.get(), "Page A");

    state->reload();
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_EQ(tab().url(), server.url("/a"));
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
