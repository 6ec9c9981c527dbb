#include "webkit/UrlFilterAlternations.h"

#include <nlohmann/json.hpp>

namespace ovel {

namespace {

struct Group {
    std::size_t open;
    std::size_t close;
};

// The '|' and the parenthesised groups at the outermost level of a pattern. Escaped characters
// and character classes ("[a|(]") hold no syntax.
struct TopLevel {
    std::vector<std::size_t> bars;
    std::vector<Group> groups;
};

std::optional<TopLevel> scanTopLevel(std::string_view pattern) {
    TopLevel result;
    int depth = 0;
    std::size_t groupOpen = 0;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '\\') {
            ++i;
        } else if (c == '[') {
            std::size_t j = i + 1;
            if (j < pattern.size() && pattern[j] == '^') {
                ++j;
            }
            if (j < pattern.size() && pattern[j] == ']') {
                ++j;
            }
            while (j < pattern.size() && pattern[j] != ']') {
                j += pattern[j] == '\\' ? 2 : 1;
            }
            if (j >= pattern.size()) {
                return std::nullopt;
            }
            i = j;
        } else if (c == '(') {
            if (depth == 0) {
                groupOpen = i;
            }
            ++depth;
        } else if (c == ')') {
            if (--depth < 0) {
                return std::nullopt;
            }
            if (depth == 0) {
                result.groups.push_back({groupOpen, i});
            }
        } else if (c == '|' && depth == 0) {
            result.bars.push_back(i);
        }
    }
    if (depth != 0) {
        return std::nullopt;
    }
    return result;
}

bool isQuantifier(char c) {
    return c == '*' || c == '+' || c == '?' || c == '{';
}

class Expander {
public:
    explicit Expander(std::size_t limit) : limit_(limit) {}

    // Appends the plain patterns of `pattern` to `out`; false when it cannot.
    bool expand(std::string_view pattern, std::vector<std::string>& out) {
        const auto top = scanTopLevel(pattern);
        if (!top) {
            return false;
        }
        if (!top->bars.empty()) {
            std::size_t begin = 0;
            for (std::size_t bar : top->bars) {
                if (!expand(pattern.substr(begin, bar - begin), out)) {
                    return false;
                }
                begin = bar + 1;
            }
            return expand(pattern.substr(begin), out);
        }
        for (const Group& group : top->groups) {
            std::string_view inner = pattern.substr(group.open + 1, group.close - group.open - 1);
            if (inner.starts_with("?:")) {
                inner.remove_prefix(2);
            } else if (inner.starts_with("?")) {
                // A look-around: leave it whole when it holds no alternation.
                if (inner.find('|') != std::string_view::npos) {
                    return false;
                }
                continue;
            }
            std::vector<std::string> alternatives;
            if (!expand(inner, alternatives)) {
                return false;
            }
            if (alternatives.size() < 2) {
                continue;
            }
            if (group.close + 1 < pattern.size() && isQuantifier(pattern[group.close + 1])) {
                return false;
            }
            const std::string_view prefix = pattern.substr(0, group.open);
            const std::string_view suffix = pattern.substr(group.close + 1);
            for (const auto& alternative : alternatives) {
                std::string spelled;
                spelled.reserve(prefix.size() + alternative.size() + suffix.size());
                spelled.append(prefix).append(alternative).append(suffix);
                // Later groups of the same pattern are spelled out by the recursion.
                if (!expand(spelled, out)) {
                    return false;
                }
            }
            return true;
        }
        if (out.size() >= limit_) {
            return false;
        }
        out.emplace_back(pattern);
        return true;
    }

private:
    std::size_t limit_;
};

} // namespace

std::optional<std::vector<std::string>> expandAlternations(std::string_view pattern,
                                                           std::size_t limit) {
    std::vector<std::string> out;
    if (!Expander(limit).expand(pattern, out)) {
        return std::nullopt;
    }
    return out;
}

namespace {

// The elements of a JSON array as their text, without parsing them; none when the text is not
// an array. Only valid JSON is handed here.
std::optional<std::vector<std::string_view>> arrayElements(std::string_view json) {
    const std::size_t open = json.find_first_not_of(" \t\r\n");
    if (open == std::string_view::npos || json[open] != '[') {
        return std::nullopt;
    }
    std::vector<std::string_view> elements;
    int depth = 0;
    bool inString = false;
    std::size_t start = open + 1;
    for (std::size_t i = open; i < json.size(); ++i) {
        const char c = json[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            ++depth;
        } else if (c == ']' || c == '}') {
            if (--depth == 0) {
                elements.push_back(json.substr(start, i - start));
                break;
            }
        } else if (c == ',' && depth == 1) {
            elements.push_back(json.substr(start, i - start));
            start = i + 1;
        }
    }
    // "[]" and "[ ]" hold no element.
    if (elements.size() == 1 &&
        elements.front().find_first_not_of(" \t\r\n") == std::string_view::npos) {
        elements.clear();
    }
    return elements;
}

// The rule, or one rule per alternative of its url-filter.
void appendExpanded(std::string& out, std::string_view element) {
    // Most rules hold no '|' at all and are copied as they are.
    if (element.find('|') == std::string_view::npos) {
        out.append(element);
        return;
    }
    auto rule = nlohmann::json::parse(element);
    const auto* filter =
        rule.is_object() && rule.contains("trigger") && rule["trigger"].is_object() &&
                rule["trigger"].contains("url-filter") && rule["trigger"]["url-filter"].is_string()
            ? &rule["trigger"]["url-filter"].get_ref<const std::string&>()
            : nullptr;
    const auto patterns = filter != nullptr && filter->find('|') != std::string::npos
                              ? expandAlternations(*filter)
                              : std::nullopt;
    if (!patterns) {
        out.append(element);
        return;
    }
    for (std::size_t i = 0; i < patterns->size(); ++i) {
        auto copy = rule;
        copy["trigger"]["url-filter"] = (*patterns)[i];
        if (i > 0) {
            out += ',';
        }
        out += copy.dump();
    }
}

} // namespace

std::string expandUrlFilterAlternations(std::string_view ruleListJson) {
    // Checked without building the document: a list of the published filters is megabytes.
    const auto elements =
        nlohmann::json::accept(ruleListJson) ? arrayElements(ruleListJson) : std::nullopt;
    if (!elements) {
        return std::string(ruleListJson);
    }
    std::string expanded = "[";
    expanded.reserve(ruleListJson.size() + 64);
    for (std::size_t i = 0; i < elements->size(); ++i) {
        if (i > 0) {
            expanded += ',';
        }
        appendExpanded(expanded, (*elements)[i]);
    }
    expanded += ']';
    return expanded;
}

} // namespace ovel
