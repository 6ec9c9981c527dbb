#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// A first run writes one "Default" profile and its session; a link given to a second launch
// is handed over the session bus and opens in a new, selected tab of the running browser.
TEST(BrowserLaunch, AFirstRunStoresItsProfileAndALinkFromASecondLaunchOpensInIt) {
    LoopbackServer server;
    server.serveHtml("/given", "<title>Given</title><p>given");
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ASSERT_TRUE(ProcessBrowser::waitUntil([&] { return storedSession(browser).has_value(); }, 60s))
        << "the store never held a profile and its session";

    EXPECT_EQ(browser.runAgain({server.url("/given")}), 0)
        << "the second launch hands the link over and leaves";
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return server.requestCount("/given") > 0; }, 60s));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return storedTabCount(browser) == 2; }, 30s));
    EXPECT_TRUE(browser.isRunning()) << "one browser, not two";
    EXPECT_EQ(browser.quit(), 0);

    auto profiles = decodeProfiles(
        readStoredValue(browser.settingsFile(), std::string(BrowserState::profilesKey)).value());
    ASSERT_TRUE(profiles);
    ASSERT_EQ(profiles->size(), 1u);
    EXPECT_EQ(profiles->front().name, "Default");
    auto session = storedSession(browser);
    ASSERT_TRUE(session);
    ASSERT_EQ(session->tabs.size(), 2u);
    EXPECT_FALSE(session->tabs[0].url) << "the start page has no address";
    EXPECT_EQ(session->tabs[1].url, server.url("/given"));
    EXPECT_EQ(session->selectedIndex, 1);
}

TEST(BrowserLaunch, TheMainMenuAndTheShortcutsOpenAndCloseTabs) {
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    auto tabsBecome = [&](std::size_t count) {
        return ProcessBrowser::waitUntil([&] { return storedTabCount(browser) == count; }, 20s);
    };
    ASSERT_TRUE(driver.waitFor("push button", "Main Menu", 60s)) << driver.dump();
    ASSERT_TRUE(tabsBecome(1));

    ASSERT_TRUE(driver.click("push button", "Main Menu"));
    ASSERT_TRUE(driver.waitFor("menu item", "New Tab", 10s)) << driver.dump();
    ASSERT_TRUE(driver.click("menu item", "New Tab"));
    EXPECT_TRUE(tabsBecome(2)) << "the menu's New Tab opens a tab";

    // The shortcuts work while the page has the keyboard.
    ASSERT_TRUE(driver.clickAt(600, 450));
    ASSERT_TRUE(driver.keys("ctrl+t"));
    EXPECT_TRUE(tabsBecome(3)) << "Ctrl+T opens a tab";
    ASSERT_TRUE(driver.keys("ctrl+w"));
    EXPECT_TRUE(tabsBecome(2)) << "Ctrl+W closes the selected one";
    ASSERT_TRUE(driver.keys("shift+ctrl+t"));
    EXPECT_TRUE(tabsBecome(3)) << "Shift+Ctrl+T reopens it";
    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
