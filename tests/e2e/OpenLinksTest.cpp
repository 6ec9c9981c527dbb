#include "records/RecordsJson.h"
#include "state/BrowserState.h"
#include "support/LoopbackServer.h"
#include "support/ProcessBrowser.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

std::optional<SessionStore> storedSession(const ProcessBrowser& browser) {
    auto profiles = readStoredValue(browser.settingsFile(), std::string(BrowserState::profilesKey));
    auto list = profiles ? decodeProfiles(*profiles) : std::nullopt;
    if (!list || list->empty()) {
        return std::nullopt;
    }
    auto blob =
        readStoredValue(browser.settingsFile(),
                        BrowserState::profileKey(BrowserState::sessionKeyBase, list->front().id));
    return blob ? decodeSession(*blob) : std::nullopt;
}

TEST(OpenLinks, ALinkGivenToASecondLaunchOpensInANewTabOfTheRunningBrowser) {
    LoopbackServer server;
    server.serveHtml("/given", "<title>Given</title><p>given");
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());
    ASSERT_TRUE(ProcessBrowser::waitUntil([&] { return storedSession(browser).has_value(); }, 60s))
        << "the browser never saved its first session";

    EXPECT_EQ(browser.runAgain({server.url("/given")}), 0)
        << "the second launch hands the link over and leaves";
    EXPECT_TRUE(ProcessBrowser::waitUntil([&] { return server.requestCount("/given") > 0; }, 60s))
        << "the running browser loads the link";
    std::optional<SessionStore> session;
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            session = storedSession(browser);
            return session && session->tabs.size() == 2;
        },
        30s));
    EXPECT_TRUE(browser.isRunning()) << "one browser, not two";
    EXPECT_EQ(browser.quit(), 0);

    session = storedSession(browser);
    ASSERT_TRUE(session);
    ASSERT_EQ(session->tabs.size(), 2u);
    EXPECT_FALSE(session->tabs[0].url) << "the start page it had";
    EXPECT_EQ(session->tabs[1].url, server.url("/given"));
    EXPECT_EQ(session->selectedIndex, 1);
}

} // namespace
} // namespace ovel::test
