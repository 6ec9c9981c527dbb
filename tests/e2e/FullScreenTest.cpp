#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

TEST(FullScreen, ShortcutsWindowAndAPageTakingTheWholeWindow) {
    LoopbackServer server;
    // One button over the whole page: a click on it asks for full screen, as a video's does.
    server.serveHtml("/film", "<title>Film</title><body style='margin:0'>"
                              "<button style='width:100vw;height:100vh'"
                              " onclick='document.body.requestFullscreen()'>Play</button>");
    ProcessBrowser browser;
    seedSession(browser, {0, {{server.url("/film")}}});
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("push button", "Main Menu", 60s)) << driver.dump();
    // The page is not in the accessibility tree: its tab's title tells it has loaded.
    ASSERT_TRUE(driver.waitFor("label", "Film", 30s)) << driver.dump();

    // The page's full screen hides the tab strip and the toolbar; Escape gives them back.
    auto chromeShown = [&] {
        return driver.exists("push button", "Main Menu") && driver.exists("text", "Address");
    };
    auto chromeHidden = [&] {
        return !driver.exists("push button", "Main Menu") && !driver.exists("text", "Address");
    };
    ASSERT_TRUE(chromeShown()) << driver.dump();
    ASSERT_TRUE(driver.clickAt(600, 450));
    EXPECT_TRUE(ProcessBrowser::waitUntil(chromeHidden, 20s)) << driver.dump();
    ASSERT_TRUE(driver.keys("Escape"));
    EXPECT_TRUE(ProcessBrowser::waitUntil(chromeShown, 20s)) << driver.dump();

    // Ctrl+? lists the shortcuts; Escape closes the list.
    ASSERT_TRUE(driver.clickAt(600, 40));
    ASSERT_TRUE(driver.keys("ctrl+question"));
    EXPECT_TRUE(driver.waitFor("frame", "Keyboard Shortcuts", 20s)) << driver.dump();
    EXPECT_TRUE(driver.waitFor("label", "Reopen Last Closed Tab", 5s)) << driver.dump();
    ASSERT_TRUE(driver.keys("Escape", "Shortcuts"));
    ASSERT_TRUE(ProcessBrowser::waitUntil(
        [&] { return !driver.exists("frame", "Keyboard Shortcuts"); }, 20s));

    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
