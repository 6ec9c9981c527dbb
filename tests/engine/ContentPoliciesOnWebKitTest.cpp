#include "BrowserOnWebKitFixture.h"

#include "web/ContentPolicies.h"

namespace ovel::test {
namespace {

const LoopbackServer::Response emptyScript{200, "text/javascript", "", {}};

using ContentPoliciesOnWebKit = BrowserOnWebKit;

// The browser starts with blocking switched on, as left by the user last time.
class AdBlockingOnWebKit : public BrowserOnWebKit {
protected:
    void SetUp() override {
        settings.setBoolean(BrowserState::adBlockEnabledKey, true);
        BrowserOnWebKit::SetUp();
    }
};

TEST_F(AdBlockingOnWebKit, AdScriptsNeverReachTheServerUntilBlockingIsOff) {
    server.serve("/ads.js", emptyScript);
    server.serve("/app.js", emptyScript);
    server.serveHtml("/news", titled("News", "<script src='/ads.js'></script>"
                                             "<script src='/app.js'></script>"));
    state->openURL(server.url("/news"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/news")));
    EXPECT_EQ(server.requestCount("/app.js"), 1);
    EXPECT_EQ(server.requestCount("/ads.js"), 0);

    // Switching blocking off reloads the page, and the ad comes in.
    state->setAdBlockEnabled(false);
    ASSERT_TRUE(waitUntilIdle(tab()));
    EXPECT_EQ(server.requestCount("/ads.js"), 1);
}

// The settings page files a rule under the state's key of the site; the engine's camera request
// for the same page must find it, IPv6 literal hosts included.
TEST_F(ContentPoliciesOnWebKit, ARuleSavedForAnIPv6SiteAnswersItsCameraRequests) {
    if (!server.listenOnIPv6Loopback()) {
        GTEST_SKIP() << "::1 cannot be bound here";
    }
    std::vector<std::string> questions;
    engine->setPermissionPrompter([&](const PermissionQuestion& question, PermissionAnswer answer) {
        questions.push_back(question.host);
        answer(true);
    });
    webkit_settings_set_enable_mock_capture_devices(webkit_web_view_get_settings(webKitView(tab())),
                                                    TRUE);
    server.serveHtml("/asking", titled("Asking"));
    state->openURL(server.ipv6Url("/asking"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.ipv6Url("/asking")));
    EXPECT_EQ(state->currentHost(), "[::1]");
    SitePermissionRule blocking;
    blocking.camera = PermissionSetting::Block;
    state->setCurrentSiteRule(blocking);
    EXPECT_EQ(runScript(webKitView(tab()), mediaScript("{video: true}")), "error NotAllowedError");
    EXPECT_TRUE(questions.empty());
}

} // namespace
} // namespace ovel::test
