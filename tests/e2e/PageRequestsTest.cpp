#include "app/SqliteSettingsStore.h"
#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"
#include "support/ProcessTree.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// A page that is one link, or one click handler, over all of the page area: a click anywhere
// in it is a click on it.
std::string wholePage(const std::string& title, const std::string& inside) {
    return "<title>" + title +
           "</title><style>body{margin:0} #all{position:fixed;inset:0;display:block}</style>" +
           inside;
}

// Where a click lands in the page area of the browser's window.
bool clickInPage(const ProcessBrowserDriver& driver) {
    auto address = driver.extents("text", "Address");
    return address && driver.clickAt(address->x + address->width / 2, address->y + 300);
}

TEST(PageRequests, NewWindowsAndTheContextMenusLinksOpenAsTabsNextToTheirPage) {
    LoopbackServer server;
    server.serveHtml("/blank", wholePage("Blank opener", R"(<a id="all" target="_blank"
        href="/from-blank">open</a>)"));
    server.serveHtml("/script", wholePage("Script opener", R"html(<div id="all"
        onclick="window.open('/from-script')">open</div>)html"));
    server.serveHtml("/last", wholePage("Last page", R"(<a id="all" href="/from-menu">open</a>)"));
    server.serveHtml("/from-menu", "<title>From menu</title>");
    server.serveHtml("/from-blank", "<title>From blank</title>");
    server.serveHtml("/from-script", "<title>From script</title>");
    ProcessBrowser browser;
    seedSession(browser,
                {0, {{server.url("/blank")}, {server.url("/script")}, {server.url("/last")}}});
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("page tab", "Blank opener", 60s)) << driver.dump();

    ASSERT_TRUE(clickInPage(driver));
    ASSERT_TRUE(driver.waitFor("page tab", "From blank", 30s)) << driver.dump();
    ASSERT_TRUE(driver.waitFor("page tab", "Script opener", 30s)) << driver.dump();
    ASSERT_TRUE(clickTab(driver, "Script opener"));
    ProcessBrowser::waitUntil([] { return false; }, 1s);
    ASSERT_TRUE(clickInPage(driver));
    ASSERT_TRUE(driver.waitFor("page tab", "From script", 30s)) << driver.dump();

    // The page's own menu opens its link in a tab behind.
    ASSERT_TRUE(clickTab(driver, "Last page"));
    ProcessBrowser::waitUntil([] { return false; }, 1s);
    auto address = driver.extents("text", "Address");
    ASSERT_TRUE(address);
    ASSERT_TRUE(driver.clickAt(address->x + address->width / 2, address->y + 300, 3));
    ASSERT_TRUE(driver.waitFor("menu item", "Open Link in New Tab", 10s)) << driver.dump();
    EXPECT_FALSE(driver.exists("menu item", "Open Link in New Window"));
    ASSERT_TRUE(driver.click("menu item", "Open Link in New Tab"));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return server.requestCount("/from-menu") > 0; }, 20s));
    ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(browser);
            return session && session->tabs.size() == 6;
        },
        20s);

    EXPECT_EQ(browser.quit(), 0);
    auto session = storedSession(browser);
    ASSERT_TRUE(session);
    std::vector<std::string> order;
    for (const auto& tab : session->tabs) {
        order.push_back(tab.url.value_or("start page"));
    }
    EXPECT_EQ(order, (std::vector<std::string>{server.url("/blank"), server.url("/from-blank"),
                                               server.url("/script"), server.url("/from-script"),
                                               server.url("/last"), server.url("/from-menu")}));
    EXPECT_EQ(session->selectedIndex, 4) << "a new window's tab was selected, the menu's was not";
}

TEST(PageRequests, AKilledPageShowsItsMessageAndReloadsWhileOtherTabsWork) {
    LoopbackServer server;
    // Never from a cache: the reload must reach the server.
    server.serve(
        "/crashy",
        {200, "text/html", "<title>Crashy page</title><p>crashy", {{"Cache-Control", "no-store"}}});
    server.serveHtml("/other", "<title>Other page</title><p>other");
    ProcessBrowser browser;
    seedSession(browser, {0, {{server.url("/crashy")}}});
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("page tab", "Crashy page", 60s)) << driver.dump();

    // The only page tab: every web process of the browser is its page's.
    int killed = 0;
    for (const ChildProcess& process : descendantsOf(browser.pid())) {
        if (process.name.starts_with("WebKitWebProces")) {
            kill(process.pid, SIGKILL);
            ++killed;
        }
    }
    ASSERT_GT(killed, 0);
    ASSERT_TRUE(driver.waitFor("label", "This page stopped working", 30s)) << driver.dump();
    EXPECT_TRUE(driver.exists("label", "The page from 127.0.0.1 closed unexpectedly. Your other "
                                       "tabs are not affected."))
        << driver.dump();

    ASSERT_TRUE(driver.keys("ctrl+t"));
    ProcessBrowser::waitUntil([] { return false; }, 1s);
    ASSERT_TRUE(enterText(driver, "Address", server.url("/other")));
    EXPECT_TRUE(driver.waitFor("page tab", "Other page", 30s)) << "another tab loads pages\n"
                                                               << driver.dump();
    EXPECT_FALSE(driver.exists("label", "This page stopped working"))
        << "the message is the crashed tab's only";

    ASSERT_TRUE(clickTab(driver, "Crashy page"));
    ASSERT_TRUE(driver.waitFor("push button", "Reload Page", 10s)) << driver.dump();
    const int before = server.requestCount("/crashy");
    ASSERT_TRUE(driver.click("push button", "Reload Page"));
    EXPECT_TRUE(
        ProcessBrowser::waitUntil([&] { return server.requestCount("/crashy") > before; }, 30s));
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return !driver.exists("label", "This page stopped working"); }, 20s))
        << driver.dump();
    EXPECT_EQ(browser.quit(), 0);
}

// What the page says is the engine tests' to check; here, how it looks in two themes.
TEST(PageRequests, ARefusedCertificateShowsTheErrorPageInEachTheme) {
    for (const char* theme : {"midnight", "citrus"}) {
        LoopbackServer secure(LoopbackServer::Transport::Https);
        secure.serveHtml("/", "<title>Secret page</title><p>SECRET BODY TEXT");
        ProcessBrowser browser;
        seedSession(browser, {0, {{secure.url("/")}}});
        SqliteSettingsStore::open(browser.settingsFile())->setString(BrowserState::themeKey, theme);
        ASSERT_TRUE(browser.launch());
        ProcessBrowserDriver driver(browser);
        ASSERT_TRUE(driver.waitFor("page tab", "Not a secure connection", 60s)) << driver.dump();
        ProcessBrowser::waitUntil([] { return false; }, 2s);

        // Next to the built browser, where the other screenshots go.
        const std::string artifacts =
            std::filesystem::path(OVEL_WEB_BINARY).parent_path() / "artifacts";
        const std::string shot = artifacts + "/certificate-error-" + theme + ".png";
        std::filesystem::create_directories(artifacts);
        const std::string command = "xwd -root -silent -display " + browser.display() +
                                    " | xwdtopnm 2>/dev/null | pnmtopng > " + shot;
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(browser.quit(), 0);
    }
}

// Runs xdotool on the browser's display; true when it succeeds (a search that finds nothing
// fails).
bool xdotool(const ProcessBrowser& browser, const std::string& arguments) {
    const std::string command =
        "DISPLAY=" + browser.display() + " xdotool " + arguments + " >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

TEST(PageRequests, ASignInQuestionCancelledFailsTheLoad) {
    LoopbackServer server;
    server.serveHtml("/open", "<title>Open page</title><p>open");
    server.serve("/vault", {401,
                            "text/html",
                            "<title>Refused</title><p>SHOULD NOT SHOW",
                            {{"WWW-Authenticate", "Basic realm=\"The Vault\""}}});
    ProcessBrowser browser;
    seedSession(browser, {0, {{server.url("/open")}}});
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("page tab", "Open page", 60s)) << driver.dump();
    ASSERT_TRUE(enterText(driver, "Address", server.url("/vault")));

    // The dialog is a window of its own, titled with its heading. (The accessibility tree of
    // GTK 4.8 does not list windows that open after the first.)
    ASSERT_TRUE(ProcessBrowser::waitUntil(
        [&] { return xdotool(browser, "search --name '^Sign in to 127.0.0.1$'"); }, 30s))
        << "the site's question is put to the user";
    // Escape is the dialog's "Cancel".
    driver.keys("Escape", "^Sign in to 127.0.0.1$");
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return !xdotool(browser, "search --name '^Sign in to 127.0.0.1$'"); }, 10s))
        << "the dialog goes";

    // The load failed: the tab keeps the page it had, nothing of the refusal shows, and
    // nothing asks again.
    ProcessBrowser::waitUntil([] { return false; }, 2s);
    EXPECT_EQ(server.requestCount("/vault"), 1);
    EXPECT_TRUE(driver.exists("page tab", "Open page")) << driver.dump();
    const std::string tree = driver.dump();
    EXPECT_EQ(tree.find("SHOULD NOT SHOW"), std::string::npos) << tree;
    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
