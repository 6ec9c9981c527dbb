#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

TEST(Panels, ASidebarBookmarkLoadsInTheSelectedTab) {
    LoopbackServer server;
    server.serveHtml("/saved", "<title>Saved page</title><p>saved");
    ProcessBrowser browser;
    seedProfile(browser);
    seedProfileBlob(browser, BrowserState::bookmarksKeyBase,
                    encodeBookmarks({{"Saved page", server.url("/saved")}}));
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("push button", "Show Sidebar", 60s)) << driver.dump();
    EXPECT_FALSE(driver.exists("push button", "Saved page")) << "the sidebar starts hidden";

    ASSERT_TRUE(driver.click("push button", "Show Sidebar"));
    ASSERT_TRUE(driver.waitFor("push button", "Saved page", 10s)) << driver.dump();
    ASSERT_TRUE(driver.click("push button", "Saved page"));
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return server.requestCount("/saved") > 0; }, 30s));
    // The stored session says where it loaded: in the one tab there was, not in a new one.
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(browser);
            return session && session->tabs.size() == 1 &&
                   session->tabs[0].url == server.url("/saved");
        },
        30s))
        << "the page loads in the selected tab";
    EXPECT_EQ(browser.quit(), 0);
}

TEST(Panels, CtrlFOpensAndClosesTheFindBar) {
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("push button", "Main Menu", 60s)) << driver.dump();
    EXPECT_FALSE(driver.exists("text", "Find in page"));

    ASSERT_TRUE(driver.clickAt(600, 450));
    ASSERT_TRUE(driver.keys("ctrl+f"));
    ASSERT_TRUE(driver.waitFor("text", "Find in page", 10s)) << driver.dump();
    // GTK 4.8 does not show an entry's text to AT-SPI; the UI tests check the text itself.
    ASSERT_TRUE(driver.type("Ovel"));
    ASSERT_TRUE(driver.keys("Return"));
    EXPECT_TRUE(driver.exists("text", "Find in page")) << "Return searches and keeps the bar";

    ASSERT_TRUE(driver.click("push button", "Done"));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return !driver.exists("text", "Find in page"); }, 10s))
        << "Done hides the bar";
    ASSERT_TRUE(driver.keys("ctrl+f"));
    EXPECT_TRUE(driver.waitFor("text", "Find in page", 10s)) << "and Ctrl+F brings it back";
    ASSERT_TRUE(driver.keys("ctrl+f"));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return !driver.exists("text", "Find in page"); }, 10s))
        << "a second Ctrl+F hides it again";
    EXPECT_EQ(browser.quit(), 0);
}

TEST(Panels, ADownloadAppearsOnTheShelfWithItsFolderButton) {
    LoopbackServer server;
    server.serveAttachment("/report", "report.txt", "a small report");
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("text", "Address", 60s)) << driver.dump();
    EXPECT_FALSE(driver.exists("push button", "Clear")) << "no shelf without downloads";

    auto field = driver.extents("text", "Address");
    ASSERT_TRUE(field);
    ASSERT_TRUE(driver.clickAt(field->x + 40, field->y + field->height / 2));
    ASSERT_TRUE(driver.type(server.url("/report")));
    ASSERT_TRUE(driver.keys("Return"));

    ASSERT_TRUE(driver.waitFor("push button", "Clear", 30s)) << driver.dump();
    EXPECT_TRUE(driver.waitFor("label", "report.txt", 10s));
    EXPECT_TRUE(driver.waitFor("push button", "Show in Folder", 30s)) << driver.dump();
    EXPECT_TRUE(std::filesystem::exists(browser.home() + "/Downloads/report.txt"));
    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
