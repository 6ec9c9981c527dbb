#include "WebKitTestFixture.h"

namespace ovel::test {
namespace {

using WebKitNavigation = WebKitTest;

TEST_F(WebKitNavigation, ReportsLoadsInOrderWithTitleAndHistory) {
    server.serveHtml("/a", titled("Page A"));
    server.serveHtml("/b", titled("Page B"));
    auto& page = openPage();
    EXPECT_EQ(page.view->pageZoom(), 1.1);
    EXPECT_FALSE(page.view->url().has_value());

    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();
    EXPECT_EQ(page.events(), "start | finish 'Page A' " + server.url("/a"));
    EXPECT_GT(page.delegate.progressChanges, 0);
    EXPECT_EQ(page.view->estimatedProgress(), 1.0);
    EXPECT_FALSE(page.view->canGoBack());
    ASSERT_EQ(page.delegate.actions.size(), 1u);
    EXPECT_EQ(page.delegate.actions[0].url, server.url("/a"));
    ASSERT_EQ(page.delegate.responses.size(), 1u);
    EXPECT_TRUE(page.delegate.responses[0].canShowMimeType);

    page.view->load({server.url("/b")});
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Page B' " + server.url("/b"));
    EXPECT_TRUE(page.view->canGoBack());
    EXPECT_FALSE(page.view->canGoForward());

    page.view->goBack();
    ASSERT_TRUE(page.waitForOutcomes(3)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Page A' " + server.url("/a"));
    EXPECT_FALSE(page.view->canGoBack());
    EXPECT_TRUE(page.view->canGoForward());

    page.view->goForward();
    ASSERT_TRUE(page.waitForOutcomes(4)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Page B' " + server.url("/b"));
    EXPECT_EQ(page.delegate.count("start"), 4u);
}

TEST_F(WebKitNavigation, FollowsLinksAndSamePageNavigations) {
    server.serveHtml("/a", titled("Page A", "<a id=link href='/b'>b</a>"));
    server.serveHtml("/b", titled("Page B"));
    auto& page = openPage();
    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();

    runScript(page.webKitView(), "document.getElementById('link').click(); return 1;");
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Page B' " + server.url("/b"));
    EXPECT_TRUE(page.view->canGoBack());

    // Same-page navigations change the address without a load.
    runScript(page.webKitView(), "history.pushState({}, '', '/pushed'); return 1;");
    EXPECT_TRUE(waitUntil([&] { return page.view->url() == server.url("/pushed"); }))
        << page.view->url().value_or("-");
    runScript(page.webKitView(), "location.hash = 'part'; return 1;");
    EXPECT_TRUE(waitUntil([&] { return page.view->url() == server.url("/pushed#part"); }))
        << page.view->url().value_or("-");
    EXPECT_EQ(page.delegate.count("start"), 2u);
}

TEST_F(WebKitNavigation, GeneratedHtmlHasNoAddress) {
    server.serveHtml("/a", titled("Page A"));
    auto& page = openPage();
    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();

    page.view->loadHTMLString("<html><head><title>Start</title></head><body>hi</body></html>");
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Start' -");
    EXPECT_FALSE(page.view->url().has_value());
}

// WebKit tells the title only after the load has finished: whoever reads it at the finish
// must still get the page's real title.
TEST_F(WebKitNavigation, TitleKnownAtTheFinishEvenWhenItComesLate) {
    server.serveHtml("/plain", titled("Plain Title"));
    server.serveHtml("/scripted",
                     "<html><body>x<script>onload = () => setTimeout(() => "
                     "document.title = 'Scripted Title', 300);</script></body></html>");
    server.serveSlowly("/deep", "text/html",
                       {"<html><body><p>" + std::string(4000, 'x') + "</p>", "<p>more</p>",
                        "<title>Deep Title</title><p>end</p></body></html>"},
                       200ms);
    auto& page = openPage();
    const std::pair<const char*, const char*> cases[] = {
        {"/plain", "Plain Title"}, {"/scripted", "Scripted Title"}, {"/deep", "Deep Title"}};
    std::size_t outcomes = 0;
    for (const auto& [path, title] : cases) {
        page.view->load({server.url(path)});
        ASSERT_TRUE(page.waitForOutcomes(++outcomes)) << page.events();
        EXPECT_EQ(page.delegate.events.back(),
                  std::string("finish '") + title + "' " + server.url(path));
    }
    EXPECT_EQ(page.delegate.count("finish"), 3u) << page.events();
}

TEST_F(WebKitNavigation, UntitledPageFinishesWithoutTitleAndShowsALaterOne) {
    server.serveHtml("/untitled", "<html><body>no title</body></html>");
    server.serveHtml("/much-later", "<html><body>x<script>onload = () => setTimeout(() => "
                                    "document.title = 'Much Later', 1800);</script></body></html>");
    auto& page = openPage();
    page.view->load({server.url("/untitled")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();
    EXPECT_EQ(page.events(), "start | finish '-' " + server.url("/untitled"));

    // A title that comes after the wait is announced with one more finish.
    page.view->load({server.url("/much-later")});
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish '-' " + server.url("/much-later"));
    ASSERT_TRUE(waitUntil([&] { return page.delegate.count("finish") == 3; })) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Much Later' " + server.url("/much-later"));
}

TEST_F(WebKitNavigation, FailedLoadsLeaveThePageAsItWas) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    server.serveBrokenBody("/broken", "text/html", "<html><body>" + std::string(3000, 'x'), 100000);
    auto& page = openPage();
    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();

    // Connection refused.
    page.view->load({"http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()) + "/"});
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "fail");
    EXPECT_EQ(page.view->url(), server.url("/a"));
    EXPECT_EQ(page.view->title(), "Page A");

    // A server that never answers, with the time-out made short.
    page.view->load({server.url("/never"), 400ms});
    ASSERT_TRUE(page.waitForOutcomes(3)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "fail");
    EXPECT_EQ(server.requestCount("/never"), 1);
    EXPECT_EQ(page.view->url(), server.url("/a"));
    EXPECT_EQ(page.view->title(), "Page A");

    // Stopped by the user.
    page.view->load({server.url("/never")});
    ASSERT_TRUE(waitUntil([&] { return page.delegate.isLoading(); }));
    page.view->stopLoading();
    ASSERT_TRUE(page.waitForOutcomes(4)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "fail");
    EXPECT_EQ(page.view->url(), server.url("/a"));

    // The connection drops in the middle of the page.
    page.view->load({server.url("/broken")});
    ASSERT_TRUE(page.waitForOutcomes(5)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "fail");

    // Nothing more arrives for any of them, a late title included.
    runMainLoopFor(WebKitWebViewAdapter::titleWait + 500ms);
    EXPECT_EQ(page.events(), "start | finish 'Page A' " + server.url("/a") +
                                 " | start | fail | start | fail | start | fail | start | fail");
}

TEST_F(WebKitNavigation, TimeOutConcernsOnlyItsOwnLoad) {
    server.serveHtml("/a", titled("Page A", R"(<script>
        window.fetched = 'waiting';
        onload = () => fetch('/data').then(r => r.text()).then(
            t => window.fetched = t, e => window.fetched = 'aborted');
        </script>)"));
    server.serveSlowly("/data", "text/plain", {"da", "ta"}, 1500ms);
    server.serveNothing("/never");
    server.serveSlowly(
        "/slow", "text/html",
        {"<html><head><title>Slow</title></head><body>", "<p>1</p>", "<p>2</p></body></html>"},
        700ms);
    auto& page = openPage();
    // The web process is started first, so the timed load below is quick.
    page.view->loadHTMLString("<title>Warm</title>");
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();

    // The page's own requests go on after its load's time-out would have run out.
    page.view->load({server.url("/a"), 1000ms});
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    ASSERT_TRUE(waitUntil(
        [&] { return runScript(page.webKitView(), "return window.fetched;") != "waiting"; }));
    EXPECT_EQ(runScript(page.webKitView(), "return window.fetched;"), "data");

    // A navigation of the page that replaces the timed one is not stopped by its time-out.
    page.view->load({server.url("/never"), 1000ms});
    ASSERT_TRUE(waitUntil([&] { return page.delegate.isLoading(); }));
    runScript(page.webKitView(), "location.href = '/slow'; return 1;");
    ASSERT_TRUE(waitUntil([&] { return page.delegate.count("finish") == 3; })) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Slow' " + server.url("/slow"));
}

TEST_F(WebKitNavigation, PageStaysUsableAfterItsWebProcessEnds) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    auto& page = openPage();
    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();

    webkit_web_view_terminate_web_process(page.webKitView());
    runMainLoopFor(300ms);
    EXPECT_EQ(page.view->url(), server.url("/a"));
    page.view->reload();
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Page A' " + server.url("/a"));

    // While loading: the load fails and the page can load again.
    page.view->load({server.url("/never")});
    ASSERT_TRUE(waitUntil([&] { return page.delegate.isLoading(); }));
    webkit_web_view_terminate_web_process(page.webKitView());
    ASSERT_TRUE(page.waitForOutcomes(3)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "fail");
    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(4)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "finish 'Page A' " + server.url("/a"));
}

TEST_F(WebKitNavigation, CancelledActionLoadsNothing) {
    server.serveHtml("/a", titled("Page A"));
    server.serveHtml("/b", titled("Page B"));
    auto& page = openPage();
    page.view->load({server.url("/a")});
    ASSERT_TRUE(page.waitForOutcomes(1)) << page.events();

    page.delegate.actionPolicy = NavigationActionPolicy::Cancel;
    page.view->load({server.url("/b")});
    ASSERT_TRUE(waitUntil([&] { return page.delegate.actions.size() == 2; }));
    runMainLoopFor(300ms);
    EXPECT_EQ(page.delegate.count("start"), 1u);
    EXPECT_EQ(server.requestCount("/b"), 0);
    EXPECT_EQ(page.view->url(), server.url("/a"));
}

} // namespace
} // namespace ovel::test
