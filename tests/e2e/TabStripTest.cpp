#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// Three loopback tabs, shown in the strip.
struct ThreeTabs {
    ThreeTabs() {
        server.serveHtml("/one", "<title>Alpha page</title><p>one");
        server.serveHtml("/two", "<title>Bravo page</title><p>two");
        server.serveHtml("/three", "<title>Charlie page</title><p>three");
        seedSession(browser,
                    {0, {{server.url("/one")}, {server.url("/two")}, {server.url("/three")}}});
    }
    bool launch() {
        if (!browser.launch()) {
            return false;
        }
        for (const char* title : {"Alpha page", "Bravo page", "Charlie page"}) {
            if (!driver.waitFor("page tab", title, 60s)) {
                return false;
            }
        }
        return true;
    }

    LoopbackServer server;
    ProcessBrowser browser;
    ProcessBrowserDriver driver{browser};
};

TEST(TabStrip, DraggingTheThirdTabOntoTheLeadingHalfOfTheFirstMovesItToTheFront) {
    ThreeTabs tabs;
    ASSERT_TRUE(tabs.launch()) << tabs.driver.dump();
    auto alpha = tabs.driver.extents("page tab", "Alpha page");
    auto charlie = tabs.driver.extents("page tab", "Charlie page");
    ASSERT_TRUE(alpha && charlie) << tabs.driver.dump();

    // Within the first 72 points of the first tab: the dragged tab goes before it.
    ASSERT_TRUE(tabs.driver.drag(charlie->x + charlie->width / 2, charlie->y + charlie->height / 2,
                                 alpha->x + 20, alpha->y + alpha->height / 2));
    auto firstUrl = [&] {
        auto session = storedSession(tabs.browser);
        return session && !session->tabs.empty() ? session->tabs[0].url : std::nullopt;
    };
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return firstUrl() == tabs.server.url("/three"); }, 20s))
        << "the drop reorders the stored session";

    EXPECT_EQ(tabs.browser.quit(), 0);
    auto session = storedSession(tabs.browser);
    ASSERT_TRUE(session);
    EXPECT_EQ(session->tabs, (std::vector<TabStore>{{tabs.server.url("/three")},
                                                    {tabs.server.url("/one")},
                                                    {tabs.server.url("/two")}}));
}

// The other buttons on the strip: the middle button closes, the right button's menu pins, a
// tab's close button closes; then the kept tab goes to a typed address and back.
TEST(TabStrip, TheStripsButtonsAndTheAddressField) {
    ThreeTabs tabs;
    tabs.server.serveHtml("/four", "<title>Delta page</title><p>four");
    ASSERT_TRUE(tabs.launch()) << tabs.driver.dump();
    ASSERT_TRUE(clickTab(tabs.driver, "Bravo page", 2));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return storedTabCount(tabs.browser) == 2; }, 20s))
        << "a middle click closes a tab";
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return !tabs.driver.exists("page tab", "Bravo page"); }, 10s));

    ASSERT_TRUE(clickTab(tabs.driver, "Charlie page", 3));
    ASSERT_TRUE(tabs.driver.waitFor("menu item", "Pin Tab", 10s)) << tabs.driver.dump();
    ASSERT_TRUE(tabs.driver.click("menu item", "Pin Tab"));
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(tabs.browser);
            return session && !session->tabs.empty() && session->tabs[0].isPinned;
        },
        20s))
        << "the menu pins the tab";

    auto closeButton = tabs.driver.extents("push button", "Close Alpha page");
    ASSERT_TRUE(closeButton) << tabs.driver.dump();
    ASSERT_TRUE(tabs.driver.clickAt(closeButton->x + closeButton->width / 2,
                                    closeButton->y + closeButton->height / 2));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return storedTabCount(tabs.browser) == 1; }, 20s))
        << "its close button closes a tab";

    ASSERT_TRUE(enterText(tabs.driver, "Address", tabs.server.url("/four")));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return tabs.server.requestCount("/four") > 0; }, 20s))
        << "Return loads the typed address";
    ASSERT_TRUE(tabs.driver.waitFor("page tab", "Delta page", 20s)) << tabs.driver.dump();
    ASSERT_TRUE(tabs.driver.click("push button", "Back"));
    EXPECT_TRUE(tabs.driver.waitFor("page tab", "Charlie page", 20s)) << tabs.driver.dump();

    EXPECT_EQ(tabs.browser.quit(), 0);
    auto session = storedSession(tabs.browser);
    ASSERT_TRUE(session);
    EXPECT_EQ(session->tabs, (std::vector<TabStore>{{tabs.server.url("/three"), true}}))
        << "Charlie pinned and kept, back on its own page";
}

} // namespace
} // namespace ovel::test
