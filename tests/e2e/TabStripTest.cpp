#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

TEST(TabStrip, TabsCloseAndPinFromTheStripAndTheKeptTabNavigates) {
    LoopbackServer server;
    server.serveHtml("/one", "<title>Alpha page</title><p>one");
    server.serveHtml("/two", "<title>Bravo page</title><p>two");
    server.serveHtml("/three", "<title>Charlie page</title><p>three");
    server.serveHtml("/four", "<title>Delta page</title><p>four");
    ProcessBrowser browser;
    seedProfile(browser);
    seedProfileBlob(
        browser, BrowserState::sessionKeyBase,
        encodeSession({0, {{server.url("/one")}, {server.url("/two")}, {server.url("/three")}}}));
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    auto tabCount = [&] {
        auto session = storedSession(browser);
        return session ? session->tabs.size() : 0u;
    };
    for (const char* title : {"Alpha page", "Bravo page", "Charlie page"}) {
        ASSERT_TRUE(driver.waitFor("page tab", title, 60s)) << title << "\n" << driver.dump();
    }

    auto closeButton = driver.extents("push button", "Close Bravo page");
    ASSERT_TRUE(closeButton) << driver.dump();
    ASSERT_TRUE(driver.clickAt(closeButton->x + closeButton->width / 2,
                               closeButton->y + closeButton->height / 2));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return tabCount() == 2; }, 20s))
        << "its close button closes a tab";
    auto charlie = driver.extents("page tab", "Charlie page");
    ASSERT_TRUE(charlie) << driver.dump();
    ASSERT_TRUE(driver.clickAt(charlie->x + 20, charlie->y + charlie->height / 2, 2));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return tabCount() == 1; }, 20s))
        << "a middle click closes a tab";

    auto alpha = driver.extents("page tab", "Alpha page");
    ASSERT_TRUE(alpha) << driver.dump();
    ASSERT_TRUE(driver.clickAt(alpha->x + 20, alpha->y + alpha->height / 2, 3));
    ASSERT_TRUE(driver.waitFor("menu item", "Pin Tab", 10s)) << driver.dump();
    ASSERT_TRUE(driver.click("menu item", "Pin Tab"));

    ASSERT_TRUE(enterText(driver, "Address", server.url("/four")));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return server.requestCount("/four") > 0; }, 20s))
        << "Return loads the typed address";
    ASSERT_TRUE(driver.waitFor("page tab", "Delta page", 20s)) << driver.dump();
    ASSERT_TRUE(driver.click("push button", "Back"));
    EXPECT_TRUE(driver.waitFor("page tab", "Alpha page", 20s)) << driver.dump();

    EXPECT_EQ(browser.quit(), 0);
    auto session = storedSession(browser);
    ASSERT_TRUE(session);
    ASSERT_EQ(session->tabs.size(), 1u);
    EXPECT_TRUE(session->tabs[0].isPinned) << "the context menu pinned it";
    EXPECT_EQ(session->tabs[0].url, server.url("/one")) << "Back went to the first page";
}

TEST(TabStrip, DraggingTheThirdTabOntoTheLeadingHalfOfTheFirstMovesItToTheFront) {
    LoopbackServer server;
    server.serveHtml("/one", "<title>Alpha page</title><p>one");
    server.serveHtml("/two", "<title>Bravo page</title><p>two");
    server.serveHtml("/three", "<title>Charlie page</title><p>three");
    ProcessBrowser browser;
    seedProfile(browser);
    seedProfileBlob(
        browser, BrowserState::sessionKeyBase,
        encodeSession({0, {{server.url("/one")}, {server.url("/two")}, {server.url("/three")}}}));
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    for (const char* title : {"Alpha page", "Bravo page", "Charlie page"}) {
        ASSERT_TRUE(driver.waitFor("page tab", title, 60s)) << title << "\n" << driver.dump();
    }
    auto alpha = driver.extents("page tab", "Alpha page");
    auto charlie = driver.extents("page tab", "Charlie page");
    ASSERT_TRUE(alpha && charlie) << driver.dump();

    // Within the first 72 points of the first tab: the dragged tab goes before it.
    ASSERT_TRUE(driver.drag(charlie->x + charlie->width / 2, charlie->y + charlie->height / 2,
                            alpha->x + 20, alpha->y + alpha->height / 2));
    auto firstUrl = [&] {
        auto session = storedSession(browser);
        return session && !session->tabs.empty() ? session->tabs[0].url : std::nullopt;
    };
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return firstUrl() == server.url("/three"); }, 20s))
        << "the drop reorders the stored session";

    EXPECT_EQ(browser.quit(), 0);
    auto session = storedSession(browser);
    ASSERT_TRUE(session);
    ASSERT_EQ(session->tabs.size(), 3u);
    EXPECT_EQ(session->tabs[0].url, server.url("/three"));
    EXPECT_EQ(session->tabs[1].url, server.url("/one"));
    EXPECT_EQ(session->tabs[2].url, server.url("/two"));
}

} // namespace
} // namespace ovel::test
