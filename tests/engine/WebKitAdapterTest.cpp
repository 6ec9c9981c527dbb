#include "WebKitTestFixture.h"

#include <variant>

namespace ovel::test {
namespace {

using WebKitContent = WebKitTest;

// Shaped like the browser's own list: one alternation of hosts and a path, then an image rule.
constexpr const char* ruleList = R"json([
    {"trigger": {"url-filter": "(tracker\\.invalid|127\\.0\\.0\\.1:[0-9]+/pixel/tr|ads\\.)"},
     "action": {"type": "block"}},
    {"trigger": {"url-filter": ".*", "resource-type": ["image"],
                 "if-domain": ["ads.invalid", "banners.invalid", "popups.invalid"]},
     "action": {"type": "block"}}
])json";

std::shared_ptr<ContentRuleList> compile(WebKitEngine& engine, const std::string& json) {
    bool done = false;
    std::shared_ptr<ContentRuleList> compiled;
    const bool started = engine.compileContentRuleList("test.rules", json, [&](auto list) {
        compiled = std::move(list);
        done = true;
    });
    EXPECT_TRUE(started);
    EXPECT_TRUE(waitUntil([&] { return done; }));
    return compiled;
}

TEST_F(WebKitContent, RuleListWebKitCannotCompileGivesNone) {
    EXPECT_EQ(compile(*engine, R"([{"trigger": {"url-filter": "(a|b)+"},
                                    "action": {"type": "block"}}])"),
              nullptr);
    EXPECT_EQ(compile(*engine, "not json"), nullptr);

    WebKitEngine storeless(
        {environment.dataHome() + "/other", environment.cacheHome() + "/other", ""});
    bool called = false;
    EXPECT_FALSE(storeless.compileContentRuleList("x", ruleList, [&](auto) { called = true; }));
    runMainLoopFor(100ms);
    EXPECT_FALSE(called);
}

constexpr const char* notificationScript = "return await Notification.requestPermission();";
constexpr const char* locationScript = R"(
    return await new Promise(resolve => navigator.geolocation.getCurrentPosition(
        () => resolve('position'), e => resolve('error ' + e.code), {timeout: 5000}));)";

// Each case asks from a page of its own origin (a server of its own), since WebKit remembers
// some answers per origin.
class WebKitPermission : public WebKitTest {
protected:
    AdaptedPage& openPageOnNewOrigin() {
        servers.push_back(std::make_unique<LoopbackServer>());
        servers.back()->serveHtml("/", "<html><head><title>Asking</title></head></html>");
        auto& page = openPage();
        // Fake camera and microphone, so capture works without devices.
        webkit_settings_set_enable_mock_capture_devices(
            webkit_web_view_get_settings(page.webKitView()), TRUE);
        page.view->load({servers.back()->url("/")});
        EXPECT_TRUE(page.waitForOutcomes(1)) << page.events();
        return page;
    }

    std::vector<std::unique_ptr<LoopbackServer>> servers;
    std::vector<PermissionQuestion> questions;
};

// The view's own decision answers each kind of request, and each reaches the delegate once, by
// the hook for its kind.
TEST_F(WebKitPermission, TheDelegatesDecisionAnswersEachKindOfRequest) {
    using enum PermissionDecision;
    using Kind = std::variant<MediaCaptureType, SitePermissionKind>;
    const struct {
        std::string script;
        Kind kind;
        PermissionDecision decision;
        const char* result;
        // Allowed, a location request gets past the permission to no location service.
        bool same = true;
    } cases[] = {
        {notificationScript, SitePermissionKind::Notifications, Grant, "granted"},
        {notificationScript, SitePermissionKind::Notifications, Deny, "denied"},
        // No one to ask: denied.
        {notificationScript, SitePermissionKind::Notifications, Prompt, "denied"},
        {locationScript, SitePermissionKind::Location, Deny, "error 1"}, // PERMISSION_DENIED
        {locationScript, SitePermissionKind::Location, Grant, "error 1", false},
        {mediaScript("{video: true}"), MediaCaptureType::Camera, Grant, "stream"},
        {mediaScript("{audio: true}"), MediaCaptureType::Microphone, Grant, "stream"},
        {mediaScript("{audio: true, video: true}"), MediaCaptureType::CameraAndMicrophone, Deny,
         "error NotAllowedError"},
        {mediaScript("{video: true}"), MediaCaptureType::Camera, Prompt, "error NotAllowedError"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.script + " -> " + (c.same ? "" : "not ") + c.result);
        auto& page = openPageOnNewOrigin();
        page.delegate.siteDecision = c.decision;
        page.delegate.mediaDecision = c.decision;
        EXPECT_EQ(runScript(page.webKitView(), c.script) == c.result, c.same);
        std::vector<std::pair<std::string, Kind>> heard;
        for (const auto& [host, kind] : page.delegate.siteRequests) {
            heard.emplace_back(host, kind);
        }
        for (const auto& [host, kind] : page.delegate.mediaRequests) {
            heard.emplace_back(host, kind);
        }
        EXPECT_EQ(heard, (std::vector<std::pair<std::string, Kind>>{{"127.0.0.1", c.kind}}));
    }
}

TEST_F(WebKitPermission, PromptIsPutToTheUserWhoseAnswerReachesThePage) {
    // The user answers later, from the main loop, as a dialog would. (A second answer is
    // AnswerOnce's to ignore.)
    std::vector<PermissionAnswer> pending;
    engine->setPermissionPrompter([&](const PermissionQuestion& question, PermissionAnswer answer) {
        questions.push_back(question);
        pending.push_back(std::move(answer));
    });
    auto& page = openPageOnNewOrigin();
    page.delegate.siteDecision = PermissionDecision::Prompt;
    page.delegate.mediaDecision = PermissionDecision::Prompt;

    std::shared_ptr<ScriptResult> result;
    auto ask = [&](const std::string& script) { result = startScript(page.webKitView(), script); };
    ask(notificationScript);
    ASSERT_TRUE(waitUntil([&] { return pending.size() == 1; }));
    EXPECT_EQ(questions[0].host, "127.0.0.1");
    EXPECT_EQ(std::get<SitePermissionKind>(questions[0].kind), SitePermissionKind::Notifications);
    EXPECT_EQ(questions[0].webView, page.view->widget());
    pending[0](true);
    ASSERT_TRUE(waitUntil([&] { return result->done; }));
    EXPECT_EQ(result->value, "granted");

    ask(mediaScript("{video: true}"));
    ASSERT_TRUE(waitUntil([&] { return pending.size() == 2; }));
    EXPECT_EQ(std::get<MediaCaptureType>(questions[1].kind), MediaCaptureType::Camera);
    pending[1](false);
    ASSERT_TRUE(waitUntil([&] { return result->done; }));
    EXPECT_EQ(result->value, "error NotAllowedError");

    // A question dropped without an answer denies.
    ask(mediaScript("{audio: true}"));
    ASSERT_TRUE(waitUntil([&] { return pending.size() == 3; }));
    pending.pop_back();
    ASSERT_TRUE(waitUntil([&] { return result->done; }));
    EXPECT_EQ(result->value, "error NotAllowedError");
}

} // namespace
} // namespace ovel::test
