#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <csignal>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// A page that is one link to its own part: a click anywhere in the page area follows it.
std::string pageWithPart(const std::string& title) {
    return "<title>" + title +
           "</title><style>body{margin:0} #all{position:fixed;inset:0;display:block}</style>"
           "<a id=\"all\" href=\"#part\">to the part</a><p id=\"part\">the part</p>";
}

bool clickInPage(const ProcessBrowserDriver& driver) {
    auto address = driver.extents("text", "Address");
    return address && driver.clickAt(address->x + address->width / 2, address->y + 300);
}

bool storedFirstTab(const ProcessBrowser& browser, const std::string& url) {
    auto session = storedSession(browser);
    return session && !session->tabs.empty() && session->tabs[0].url == url;
}

// An address nobody answers on shows why, with "Try Again"; the tab, the session and the
// address keep what was asked for. A scheme-less local address then reaches a plain-HTTP server.
TEST(KeepingThePlace, AFailedLoadSaysWhyAndALocalAddressGoesOverHttp) {
    LoopbackServer server;
    server.serveHtml("/one", "<title>Alpha page</title><p>one");
    server.serveHtml("/docs/index", "<title>Docs page</title><p>docs");
    ProcessBrowser browser;
    seedSession(browser, {0, {{server.url("/one")}}});
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("page tab", "Alpha page", 60s)) << driver.dump();

    const std::string unanswered = "http://127.0.0.1:9/x";
    ASSERT_TRUE(enterText(driver, "Address", unanswered));
    ASSERT_TRUE(driver.waitFor("label", "This address is blocked", 30s)) << driver.dump();
    EXPECT_TRUE(driver.exists("push button", "Try Again")) << driver.dump();
    EXPECT_TRUE(driver.exists("page tab", "127.0.0.1")) << driver.dump();
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return storedFirstTab(browser, unanswered); }, 20s))
        << "the session keeps the address that failed";
    ASSERT_TRUE(driver.click("push button", "Back"));
    ASSERT_TRUE(driver.waitFor("page tab", "Alpha page", 30s)) << "Back from the failure\n"
                                                               << driver.dump();

    const std::string local = "localhost:" + std::to_string(server.port()) + "/docs/index";
    ASSERT_TRUE(enterText(driver, "Address", local));
    EXPECT_TRUE(driver.waitFor("page tab", "Docs page", 30s)) << driver.dump();
    EXPECT_FALSE(driver.exists("push button", "Try Again"));
    EXPECT_EQ(browser.quit(), 0);
    auto session = storedSession(browser);
    ASSERT_TRUE(session);
    EXPECT_EQ(session->tabs.at(0).url, "http://" + local);
}

// The tab switched to is the one a crash comes back to; each tab's Back survives a restart and
// a reopened tab; an in-page jump is in the stored address.
TEST(KeepingThePlace, SelectionHistoryAndFragmentsSurviveAKill) {
    LoopbackServer server;
    server.serveHtml("/one", pageWithPart("Alpha page"));
    server.serveHtml("/two", "<title>Bravo page</title><p>two");
    server.serveHtml("/three", "<title>Charlie page</title><p>three");
    ProcessBrowser browser;
    seedSession(browser, {1, {{server.url("/one")}, {server.url("/three")}}});
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("page tab", "Charlie page", 60s)) << driver.dump();
    ASSERT_TRUE(driver.waitFor("page tab", "Alpha page", 60s)) << driver.dump();

    ASSERT_TRUE(clickTab(driver, "Alpha page"));
    ProcessBrowser::waitUntil([] { return false; }, 1s);
    ASSERT_TRUE(clickInPage(driver));
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return storedFirstTab(browser, server.url("/one#part")); }, 20s))
        << "the fragment is in the stored address";
    ASSERT_TRUE(enterText(driver, "Address", server.url("/two")));
    ASSERT_TRUE(driver.waitFor("page tab", "Bravo page", 30s)) << driver.dump();
    ASSERT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(browser);
            return session && session->selectedIndex == 0 && session->tabs[0].sessionState &&
                   session->tabs[0].url == server.url("/two");
        },
        20s));

    kill(browser.pid(), SIGKILL);
    ProcessBrowser::waitUntil([&] { return !browser.isRunning(); }, 10s);
    ASSERT_TRUE(browser.launch());
    ASSERT_TRUE(driver.waitFor("page tab", "Bravo page", 60s)) << driver.dump();
    EXPECT_EQ(storedSession(browser)->selectedIndex, 0) << "the tab switched to before the kill";
    ASSERT_TRUE(driver.waitFor("push button", "Back", 10s));
    ASSERT_TRUE(driver.click("push button", "Back"));
    ASSERT_TRUE(driver.waitFor("page tab", "Alpha page", 30s)) << "Back after a restart\n"
                                                               << driver.dump();
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return storedFirstTab(browser, server.url("/one#part")); }, 20s));

    auto closeButton = driver.extents("push button", "Close Alpha page");
    ASSERT_TRUE(closeButton) << driver.dump();
    ASSERT_TRUE(driver.clickAt(closeButton->x + closeButton->width / 2,
                               closeButton->y + closeButton->height / 2));
    ASSERT_TRUE(ProcessBrowser::waitUntil([&] { return storedTabCount(browser) == 1; }, 20s));
    ASSERT_TRUE(driver.keys("shift+ctrl+t"));
    ASSERT_TRUE(driver.waitFor("page tab", "Alpha page", 30s)) << driver.dump();
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return storedFirstTab(browser, server.url("/one#part")); }, 20s))
        << "reopened where it stood";
    ASSERT_TRUE(driver.click("push button", "Back"));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return storedFirstTab(browser, server.url("/one")); }, 20s))
        << "Back after reopening\n"
        << driver.dump();
    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
