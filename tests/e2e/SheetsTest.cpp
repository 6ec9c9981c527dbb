#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// Three loaded tabs on two hosts, the last one selected.
class Sheets : public ::testing::Test {
protected:
    void SetUp() override {
        server.serveHtml("/one", "<title>Alpha page</title><p>one");
        server.serveHtml("/two", "<title>Bravo page</title><p>two");
        server.serveHtml("/three", "<title>Charlie page</title><p>three");
        seedProfile(browser);
        seedProfileBlob(
            browser, BrowserState::sessionKeyBase,
            encodeSession(
                {2,
                 {{server.url("/one")}, {server.localhostUrl("/two")}, {server.url("/three")}}}));
        ASSERT_TRUE(browser.launch());
        for (const char* title : {"Alpha page", "Bravo page", "Charlie page"}) {
            ASSERT_TRUE(driver.waitFor("page tab", title, 60s)) << title << "\n" << driver.dump();
        }
    }

    // Selecting a tab alone is not saved, so the selected one is found by reloading it.
    void expectReloadRequests(std::string_view path) {
        const int before = server.requestCount(path);
        ASSERT_TRUE(driver.click("push button", "Reload"));
        EXPECT_TRUE(
            ProcessBrowser::waitUntil([&] { return server.requestCount(path) > before; }, 20s))
            << "the selected tab is the one behind " << path;
        EXPECT_EQ(browser.quit(), 0);
    }

    LoopbackServer server;
    ProcessBrowser browser;
    ProcessBrowserDriver driver{browser};
};

TEST_F(Sheets, ThePaletteSwitchesToTheTabWhoseHostIsTyped) {
    ASSERT_TRUE(driver.clickAt(600, 450));
    ASSERT_TRUE(driver.keys("ctrl+shift+k"));
    ASSERT_TRUE(driver.waitFor("text", "Type a command, tab, or workspace", 10s)) << driver.dump();
    ASSERT_TRUE(driver.type("localhost"));
    ASSERT_TRUE(driver.waitFor("push button", "Switch to Bravo page", 10s)) << driver.dump();
    EXPECT_FALSE(driver.exists("push button", "Switch to Alpha page")) << "the list is filtered";
    ASSERT_TRUE(driver.keys("Return"));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return !driver.exists("dialog", "Command Palette"); }, 10s))
        << driver.dump();
    expectReloadRequests("/two");
}

TEST_F(Sheets, AnOverviewCardFoundByTitleSelectsItsTab) {
    ASSERT_TRUE(driver.clickAt(600, 450));
    ASSERT_TRUE(driver.keys("ctrl+backslash"));
    ASSERT_TRUE(driver.waitFor("text", "Search tabs by title or host", 10s)) << driver.dump();
    ASSERT_TRUE(driver.type("Alpha"));
    ASSERT_TRUE(
        ProcessBrowser::waitUntil([&] { return !driver.exists("push button", "Bravo page"); }, 10s))
        << "the cards are filtered\n"
        << driver.dump();
    auto card = driver.extents("push button", "Alpha page");
    ASSERT_TRUE(card) << driver.dump();
    ASSERT_TRUE(driver.clickAt(card->x + card->width / 2, card->y + card->height / 2));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return !driver.exists("dialog", "Tab Overview"); }, 10s))
        << driver.dump();
    expectReloadRequests("/one");
}

} // namespace
} // namespace ovel::test
