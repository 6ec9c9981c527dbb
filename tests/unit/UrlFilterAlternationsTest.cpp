#include "webkit/UrlFilterAlternations.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ovel {
namespace {

std::string joined(const std::optional<std::vector<std::string>>& patterns) {
    if (!patterns) {
        return "(none)";
    }
    std::string text;
    for (const auto& pattern : *patterns) {
        text += (text.empty() ? "" : " ") + pattern;
    }
    return text;
}

TEST(UrlFilterAlternations, SpellsOutEachAlternative) {
    const std::pair<const char*, const char*> cases[] = {
        {R"((a|b|c))", "a b c"},
        {R"((doubleclick\.net|tracker\.example/tr|ads\.))",
         R"(doubleclick\.net tracker\.example/tr ads\.)"},
        {R"(ads\.)", R"(ads\.)"},
        {R"(a|b)", "a b"},
        {R"(^https?://(a|b)\.com/)", R"(^https?://a\.com/ ^https?://b\.com/)"},
        {R"((a|b)\.(x|y))", R"(a\.x a\.y b\.x b\.y)"},
        {R"((a|(b|c)))", "a b c"},
        {R"((?:a|b))", "a b"},
        {R"((a|))", "a "},
        {R"((abc)(d|e))", "(abc)d (abc)e"},
        // No syntax inside a character class or after a backslash.
        {R"([a|b])", "[a|b]"},
        {R"([]|])", "[]|]"},
        {R"(a\|b)", R"(a\|b)"},
        {R"(\((a|b)\))", R"(\(a\) \(b\))"},
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(joined(expandAlternations(pattern)), expected) << "pattern: " << pattern;
    }
}

TEST(UrlFilterAlternations, LeavesWhatCannotBeSpelledOut) {
    const char* cases[] = {
        R"((a|b)+)",  R"((a|b)*)", R"((a|b){2})", R"((a|b)?)",
        R"((?=a|b))", R"((a|b)",   R"(a|b))",     R"([a|b)",
    };
    for (const char* pattern : cases) {
        EXPECT_EQ(joined(expandAlternations(pattern)), "(none)") << "pattern: " << pattern;
    }
    // Ten two-way groups would make 1024 patterns; eleven pass the limit.
    std::string ten;
    for (int i = 0; i < 10; ++i) {
        ten += "(a|b)";
    }
    EXPECT_EQ(expandAlternations(ten)->size(), 1024u);
    EXPECT_FALSE(expandAlternations(ten + "(a|b)").has_value());
}

TEST(UrlFilterAlternations, RewritesRulesWithAlternationIntoOneRuleEach) {
    const auto rules = nlohmann::json::parse(R"json([
        {"trigger": {"url-filter": "(one\\.example|two\\.example/tr|ads\\.)"},
         "action": {"type": "block"}},
        {"trigger": {"url-filter": ".*", "resource-type": ["image"],
                     "if-domain": ["a.example", "b.example", "c.example"]},
         "action": {"type": "block"}},
        {"trigger": {"url-filter": "(x|y)", "resource-type": ["script"]},
         "action": {"type": "css-display-none", "selector": ".ad"}}
    ])json");
    // Each alternative is a rule of its own with the rest of the trigger and the action; rules
    // without alternation pass as they were.
    const auto expected = nlohmann::json::parse(R"json([
        {"trigger": {"url-filter": "one\\.example"}, "action": {"type": "block"}},
        {"trigger": {"url-filter": "two\\.example/tr"}, "action": {"type": "block"}},
        {"trigger": {"url-filter": "ads\\."}, "action": {"type": "block"}},
        {"trigger": {"url-filter": ".*", "resource-type": ["image"],
                     "if-domain": ["a.example", "b.example", "c.example"]},
         "action": {"type": "block"}},
        {"trigger": {"url-filter": "x", "resource-type": ["script"]},
         "action": {"type": "css-display-none", "selector": ".ad"}},
        {"trigger": {"url-filter": "y", "resource-type": ["script"]},
         "action": {"type": "css-display-none", "selector": ".ad"}}
    ])json");
    EXPECT_EQ(nlohmann::json::parse(expandUrlFilterAlternations(rules.dump())), expected);
}

TEST(UrlFilterAlternations, PassesOtherTextThrough) {
    for (const char* text : {"", "not json", "{\"trigger\": {}}", "[1, \"two\", {\"x\": 1}]",
                             R"([{"trigger": {"url-filter": "(a|b)+"}, "action": {}}])"}) {
        const auto rewritten = expandUrlFilterAlternations(text);
        const auto original = nlohmann::json::parse(text, nullptr, false);
        if (original.is_discarded() || !original.is_array()) {
            EXPECT_EQ(rewritten, text);
        } else {
            EXPECT_EQ(nlohmann::json::parse(rewritten), original) << text;
        }
    }
}

} // namespace
} // namespace ovel
