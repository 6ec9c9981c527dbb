#include "BrowserOnWebKitFixture.h"

#include "app/ThreadedFilterListSource.h"
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

// Blocking with published lists in the lists' own syntax, read from a folder of the test's
// through the browser's own reading, conversion and compilation.
class PublishedListsOnWebKit : public AdBlockingOnWebKit {
protected:
    void SetUp() override {
        const std::string folder = environment.home() + "/lists";
        std::filesystem::create_directories(folder);
        g_file_set_contents((folder + "/easylist.txt").c_str(),
                            "[Adblock Plus 2.0]\n"
                            "! Lines of EasyList and EasyPrivacy\n"
                            "-tracking-pixel.\n"
                            "/amp-analytics-\n"
                            "/frontend-metrics^\n"
                            "##.sponsored-box\n"
                            "@@/amp-analytics-consent.\n",
                            -1, nullptr);
        source = std::make_unique<ThreadedFilterListSource>(std::vector<std::string>{folder});
        filterLists = source.get();
        AdBlockingOnWebKit::SetUp();
        ASSERT_TRUE(
            waitUntil([&] { return state->adBlockStatus->lists == AdBlockStatus::Lists::Ready; }));
    }

    std::unique_ptr<ThreadedFilterListSource> source;
};

TEST_F(PublishedListsOnWebKit, WhatTheListsNameNeverReachesTheServerUntilBlockingIsOff) {
    const std::vector<std::string> listed{"/img/site-tracking-pixel.gif", "/js/amp-analytics-v2.js",
                                          "/api/frontend-metrics"};
    const std::vector<std::string> ordinary{"/img/photo.gif", "/js/app.js",
                                            "/js/amp-analytics-consent.js", "/api/articles"};
    for (const auto& list : {listed, ordinary}) {
        for (const std::string& path : list) {
            server.serve(path, {200,
                                path.starts_with("/img") ? "image/gif" : "text/javascript",
                                path.starts_with("/img") ? "GIF89a" : "",
                                {}});
        }
    }
    server.serveHtml(
        "/news", titled("News", "<img src='/img/site-tracking-pixel.gif'><img src='/img/photo.gif'>"
                                "<script src='/js/amp-analytics-v2.js'></script>"
                                "<script src='/js/app.js'></script>"
                                "<script src='/js/amp-analytics-consent.js'></script>"
                                "<div class='sponsored-box' id='box'>Ad</div>"
                                "<script>fetch('/api/frontend-metrics?n=1');"
                                "fetch('/api/articles');</script>"));
    state->openURL(server.url("/news"));
    ASSERT_TRUE(waitUntilShowing(tab(), server.url("/news")));
    ASSERT_TRUE(waitUntil([&] { return server.requestCount("/api/articles") == 1; }));
    for (const std::string& path : ordinary) {
        EXPECT_EQ(server.requestCount(path), 1) << path;
    }
    for (const std::string& path : listed) {
        EXPECT_EQ(server.requestCount(path), 0) << path;
    }
    EXPECT_EQ(runScript(webKitView(tab()),
                        "return getComputedStyle(document.getElementById('box')).display;"),
              "none");

    state->setAdBlockEnabled(false);
    ASSERT_TRUE(waitUntil([&] { return server.requestCount("/api/frontend-metrics") == 1; }));
    for (const std::string& path : listed) {
        EXPECT_EQ(server.requestCount(path), 1) << path;
    }
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
