#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// The pointer on the strip: a drag reorders, the right button's menu pins, the middle button
// closes. The stored session tells what happened.
TEST(TabStrip, DraggingPinningAndClosingWithThePointer) {
    LoopbackServer server;
    server.serveHtml("/one", "<title>Alpha page</title><p>one");
    server.serveHtml("/two", "<title>Bravo page</title><p>two");
    server.serveHtml("/three", "<title>Charlie page</title><p>three");
    ProcessBrowser browser;
    seedSession(browser, {0, {{server.url("/one")}, {server.url("/two")}, {server.url("/three")}}});
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

    // The drag ends and the items glide to their places before the next click.
    ProcessBrowser::waitUntil([] { return false; }, 1500ms);
    ASSERT_TRUE(clickTab(driver, "Alpha page", 3));
    ASSERT_TRUE(driver.waitFor("menu item", "Pin Tab", 10s)) << driver.dump();
    ASSERT_TRUE(driver.click("menu item", "Pin Tab"));
    ASSERT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(browser);
            return session && !session->tabs.empty() && session->tabs[0].isPinned;
        },
        20s))
        << "the menu pins the tab";
    ProcessBrowser::waitUntil([] { return false; }, 1s); // the strip settles after the move
    ASSERT_TRUE(clickTab(driver, "Bravo page", 2));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return storedTabCount(browser) == 2; }, 20s))
        << "a middle click closes a tab";

    EXPECT_EQ(browser.quit(), 0);
    auto session = storedSession(browser);
    ASSERT_TRUE(session);
    EXPECT_EQ(session->tabs,
              (std::vector<TabStore>{{server.url("/one"), true}, {server.url("/three"), false}}))
        << "pinned, Alpha moved to the front";
}

} // namespace
} // namespace ovel::test
