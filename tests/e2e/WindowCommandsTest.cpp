#include "records/RecordsJson.h"
#include "state/BrowserState.h"
#include "support/ProcessBrowser.h"
#include "support/ProcessBrowserDriver.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

// The number of tabs of the stored session of a browser started on a fresh profile.
class StoredTabs {
public:
    explicit StoredTabs(const ProcessBrowser& browser) : browser_(browser) {}

    std::optional<std::size_t> count() {
        if (sessionKey_.empty()) {
            auto profiles =
                readStoredValue(browser_.settingsFile(), std::string(BrowserState::profilesKey));
            auto decoded = profiles ? decodeProfiles(*profiles) : std::nullopt;
            if (!decoded || decoded->empty()) {
                return std::nullopt;
            }
            sessionKey_ =
                BrowserState::profileKey(BrowserState::sessionKeyBase, decoded->front().id);
        }
        auto blob = readStoredValue(browser_.settingsFile(), sessionKey_);
        auto session = blob ? decodeSession(*blob) : std::nullopt;
        return session ? std::optional(session->tabs.size()) : std::nullopt;
    }

    bool waitFor(std::size_t expected) {
        return ProcessBrowser::waitUntil([&] { return count() == expected; }, 20s);
    }

private:
    const ProcessBrowser& browser_;
    std::string sessionKey_;
};

TEST(WindowCommands, TheMainMenuAndTheShortcutsOpenAndCloseTabs) {
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ProcessBrowserDriver driver(browser);
    StoredTabs tabs(browser);
    ASSERT_TRUE(driver.waitFor("push button", "Main Menu", 60s)) << driver.dump();
    ASSERT_TRUE(tabs.waitFor(1));

    ASSERT_TRUE(driver.click("push button", "Main Menu"));
    ASSERT_TRUE(driver.waitFor("menu item", "New Tab", 10s)) << driver.dump();
    ASSERT_TRUE(driver.click("menu item", "New Tab"));
    EXPECT_TRUE(tabs.waitFor(2)) << "the menu's New Tab opens a tab";

    // The shortcuts work while the page has the keyboard.
    ASSERT_TRUE(driver.clickAt(600, 450));
    ASSERT_TRUE(driver.keys("ctrl+t"));
    EXPECT_TRUE(tabs.waitFor(3)) << "Ctrl+T opens a tab";
    ASSERT_TRUE(driver.keys("ctrl+w"));
    EXPECT_TRUE(tabs.waitFor(2)) << "Ctrl+W closes the selected one";
    ASSERT_TRUE(driver.keys("shift+ctrl+t"));
    EXPECT_TRUE(tabs.waitFor(3)) << "Shift+Ctrl+T reopens it";
    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
