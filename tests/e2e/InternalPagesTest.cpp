#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

TEST(InternalPages, HistoryShowsTheStoredEntriesAndClearsThem) {
    ProcessBrowser browser;
    seedProfile(browser);
    const Date visited = Date::fromUnixSeconds(1'760'000'000);
    seedProfileBlob(
        browser, BrowserState::historyKeyBase,
        encodeHistory({
            {"0D1E2F30-0000-4000-8000-000000000001", "First", "https://a.test/", visited},
            {"0D1E2F30-0000-4000-8000-000000000002", "Second", "https://b.test/", visited},
            {"0D1E2F30-0000-4000-8000-000000000003", "Third", "https://c.test/", visited},
        }));
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("text", "Address", 60s)) << driver.dump();

    ASSERT_TRUE(enterText(driver, "Address", "ovel://history"));
    ASSERT_TRUE(driver.waitFor("label", "3 entries", 20s)) << driver.dump();
    ASSERT_TRUE(driver.click("push button", "Clear History"));
    EXPECT_TRUE(driver.waitFor("label", "0 entries", 10s)) << driver.dump();
    EXPECT_TRUE(driver.exists("label", "No history yet."));

    EXPECT_EQ(browser.quit(), 0);
    auto stored = storedProfileBlob(browser, BrowserState::historyKeyBase);
    auto history = stored ? decodeHistory(*stored) : std::vector<HistoryEntry>{};
    ASSERT_TRUE(history) << *stored;
    EXPECT_TRUE(history->empty()) << "the next launch starts with no history";
}

TEST(InternalPages, TheSettingsThemePickerChangesTheStoredTheme) {
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("text", "Address", 60s)) << driver.dump();

    ASSERT_TRUE(enterText(driver, "Address", "ovel://settings"));
    ASSERT_TRUE(driver.waitFor("combo box", "Theme", 20s)) << driver.dump();
    auto picker = driver.extents("combo box", "Theme");
    ASSERT_TRUE(picker);
    ASSERT_TRUE(driver.clickAt(picker->x + picker->width / 2, picker->y + picker->height / 2));
    ASSERT_TRUE(driver.waitFor("label", "Citrus", 10s)) << driver.dump();
    // The list opens on the current theme; Citrus is the last one.
    ASSERT_TRUE(driver.keys("End"));
    ASSERT_TRUE(driver.keys("Return"));
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            return readStoredValue(browser.settingsFile(), std::string(BrowserState::themeKey)) ==
                   "citrus";
        },
        20s))
        << driver.dump();

    EXPECT_EQ(browser.quit(), 0);
    EXPECT_EQ(readStoredValue(browser.settingsFile(), std::string(BrowserState::themeKey)),
              "citrus");
}

TEST(InternalPages, AWorkspaceIsSavedAndRestoredFromItsPage) {
    LoopbackServer server;
    server.serveHtml("/first", "<title>First page</title><p>first");
    server.serveHtml("/second", "<title>Second page</title><p>second");
    ProcessBrowser browser;
    seedProfile(browser);
    seedProfileBlob(browser, BrowserState::sessionKeyBase,
                    encodeSession({0, {{server.url("/first")}, {server.url("/second")}}}));
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    ASSERT_TRUE(driver.waitFor("text", "Address", 60s)) << driver.dump();

    ASSERT_TRUE(enterText(driver, "Address", "ovel://workspaces"));
    ASSERT_TRUE(driver.waitFor("text", "Workspace name", 20s)) << driver.dump();
    auto field = driver.extents("text", "Workspace name");
    ASSERT_TRUE(field);
    ASSERT_TRUE(driver.clickAt(field->x + 40, field->y + field->height / 2));
    ASSERT_TRUE(driver.type("Reading"));
    ASSERT_TRUE(driver.click("push button", "Save Current"));
    ASSERT_TRUE(driver.waitFor("label", "Reading", 10s)) << driver.dump();

    // One tab less, then the workspace brings it back.
    ASSERT_TRUE(driver.waitFor("push button", "Close Second page", 20s)) << driver.dump();
    ASSERT_TRUE(driver.click("push button", "Close Second page"));
    ASSERT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(browser);
            return session && session->tabs.size() == 1;
        },
        20s));
    ASSERT_TRUE(driver.click("push button", "Restore")) << driver.dump();
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto session = storedSession(browser);
            return session && session->tabs.size() == 2 &&
                   session->tabs[1].url == server.url("/second");
        },
        20s))
        << driver.dump();

    EXPECT_EQ(browser.quit(), 0);
    auto blob = storedProfileBlob(browser, BrowserState::workspaceSnapshotsKeyBase);
    auto snapshots = blob ? decodeWorkspaceSnapshots(*blob) : std::nullopt;
    ASSERT_TRUE(snapshots);
    ASSERT_EQ(snapshots->size(), 1u);
    EXPECT_EQ(snapshots->front().name, "Reading");
    ASSERT_EQ(snapshots->front().tabs.size(), 2u);
    EXPECT_EQ(snapshots->front().tabs[1].url, server.url("/second"));
}

} // namespace
} // namespace ovel::test
