#include "WebKitTestFixture.h"

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

} // namespace
} // namespace ovel::test
