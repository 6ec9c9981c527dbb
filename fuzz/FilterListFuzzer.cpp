#include "FuzzCheck.h"
#include "web/FilterListConverter.h"

#include <nlohmann/json.hpp>

#include <set>
#include <string>
#include <string_view>

namespace {

using nlohmann::json;
using ovel::fuzz::check;

bool isAscii(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

// What WebKit's content-blocker parser refuses outright, failing the whole list: an empty or
// non-ASCII url-filter, alternation, counted repetition, escaped letters (\b, \d, \w), '^'
// anywhere but first (outside a class) or '$' anywhere but last.
void checkUrlFilter(const std::string& filter) {
    check(!filter.empty() && isAscii(filter), "url-filter non-empty ASCII", filter);
    bool inClass = false;
    for (std::size_t i = 0; i < filter.size(); ++i) {
        const char c = filter[i];
        if (c == '\\') {
            check(i + 1 < filter.size() && !std::isalnum(static_cast<unsigned char>(filter[i + 1])),
                  "only punctuation escaped", filter);
            ++i;
        } else if (inClass) {
            inClass = c != ']';
        } else if (c == '[') {
            inClass = true;
            if (i + 1 < filter.size() && filter[i + 1] == '^') {
                ++i;
            }
        } else {
            check(c != '|' && c != '{' && c != '}', "no alternation or counted repetition", filter);
            check(c != '^' || i == 0, "'^' only first", filter);
            check(c != '$' || i + 1 == filter.size(), "'$' only last", filter);
        }
    }
    check(!inClass, "character classes close", filter);
}

void checkSites(const json& trigger, const char* key) {
    if (!trigger.contains(key)) {
        return;
    }
    check(trigger[key].is_array() && !trigger[key].empty(), "site lists are not empty", key);
    for (const json& site : trigger[key]) {
        const std::string text = site.get<std::string>();
        check(!text.empty() && isAscii(text), "sites are ASCII", text);
        for (const char c : text) {
            check(!(c >= 'A' && c <= 'Z'), "sites are lower case", text);
        }
    }
}

} // namespace

// Any text as a filter list: the converter must not crash or hang, and what it writes must be
// rules WebKit's parser takes, as many as it says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string_view lists[] = {text};
    const ovel::ConvertedFilterList converted = ovel::convertFilterLists(lists);
    const json rules = json::parse(converted.json, nullptr, false);
    check(rules.is_array(), "the rules are a JSON array", converted.json);
    check(rules.size() == converted.ruleCount, "the rule count is the rules'", converted.json);
    check(converted.ruleCount <= ovel::maxContentRules, "within the engine's limit");
    static const std::set<std::string> types{"script", "image", "style-sheet", "fetch",
                                             "media",  "font",  "popup",       "websocket",
                                             "ping",   "other", "document"};
    for (const json& rule : rules) {
        const json& trigger = rule.at("trigger");
        checkUrlFilter(trigger.at("url-filter").get<std::string>());
        checkSites(trigger, "if-domain");
        checkSites(trigger, "unless-domain");
        check(!(trigger.contains("if-domain") && trigger.contains("unless-domain")),
              "one site condition at most", rule.dump());
        for (const json& type : trigger.value("resource-type", json::array())) {
            check(types.contains(type.get<std::string>()), "known resource types", rule.dump());
        }
        const std::string action = rule.at("action").at("type").get<std::string>();
        check(action == "block" || action == "ignore-previous-rules" ||
                  (action == "css-display-none" &&
                   !rule["action"].value("selector", std::string()).empty()),
              "known actions", rule.dump());
    }
    return 0;
}
