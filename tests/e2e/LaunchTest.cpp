#include "state/BrowserState.h"
#include "records/RecordsJson.h"
#include "support/LoopbackServer.h"
#include "support/ProcessBrowser.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

TEST(BrowserLaunch, AFirstRunWritesOneDefaultProfileAndItsSession) {
    ProcessBrowser browser;
    ASSERT_TRUE(browser.launch());

    std::optional<std::vector<BrowserProfile>> profiles;
    std::string sessionKey;
    ASSERT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            if (auto blob = readStoredValue(browser.settingsFile(), std::string(BrowserState::profilesKey))) {
                profiles = decodeProfiles(*blob);
            }
            if (!profiles || profiles->empty()) {
                return false;
            }
            sessionKey = BrowserState::profileKey(BrowserState::sessionKeyBase, profiles->front().id);
            return readStoredValue(browser.settingsFile(), sessionKey).has_value();
        },
        60s))
        << "the store never held a profile and its session";

    EXPECT_EQ(browser.quit(), 0);
    profiles = decodeProfiles(readStoredValue(browser.settingsFile(),
                                              std::string(BrowserState::profilesKey)).value());
    ASSERT_TRUE(profiles);
    ASSERT_EQ(profiles->size(), 1u);
    EXPECT_EQ(profiles->front().name, "Default");
    auto session = decodeSession(readStoredValue(browser.settingsFile(), sessionKey).value());
    ASSERT_TRUE(session);
    ASSERT_EQ(session->tabs.size(), 1u);
    EXPECT_FALSE(session->tabs[0].url) << "the start page has no address";
}

TEST(BrowserLaunch, ARestoredSessionLoadsEveryTabAndClampsTheSelection) {
    LoopbackServer server;
    for (const char* page : {"/one", "/two", "/three"}) {
        server.serveHtml(page, std::string("<title>") + page + "</title><p>" + page);
    }
    ProcessBrowser browser;
    const std::string profileID = "5A3C8E1F-1111-4222-8333-444455556666";
    writeStoredBlob(browser.settingsFile(), std::string(BrowserState::profilesKey),
                    encodeProfiles({{profileID, "Default"}}));
    const std::string sessionKey = BrowserState::profileKey(BrowserState::sessionKeyBase, profileID);
    writeStoredBlob(browser.settingsFile(), sessionKey,
                    encodeSession({7,
                                   {{server.url("/one"), false},
                                    {server.url("/two"), true},
                                    {server.url("/three"), false}}}));
    ASSERT_TRUE(browser.launch());

    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            return server.requestCount("/one") > 0 && server.requestCount("/two") > 0 &&
                   server.requestCount("/three") > 0;
        },
        60s))
        << "every restored tab loads its page, selected or not";
    std::optional<SessionStore> written;
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] {
            auto blob = readStoredValue(browser.settingsFile(), sessionKey);
            written = blob ? decodeSession(*blob) : std::nullopt;
            return written && written->selectedIndex == 2;
        },
        60s))
        << "the session is written back with the clamped selection";
    EXPECT_EQ(browser.quit(), 0);
    ASSERT_TRUE(written);
    ASSERT_EQ(written->tabs.size(), 3u);
    EXPECT_EQ(written->tabs[1], (TabStore{server.url("/two"), true}));
}

} // namespace
} // namespace ovel::test
