#include "web/FilterListConverter.h"

#include "web/FilterSyntax.h"

#include <nlohmann/json.hpp>

#include <glib.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

namespace ovel {

std::string_view label(SkippedFilter reason) {
    switch (reason) {
    case SkippedFilter::Malformed:
        return "malformed";
    case SkippedFilter::RegularExpression:
        return "regular expression";
    case SkippedFilter::UnsupportedOption:
        return "unsupported option";
    case SkippedFilter::Domains:
        return "inexpressible domains";
    case SkippedFilter::NonAscii:
        return "non-ASCII address";
    case SkippedFilter::MatchesEverything:
        return "matches everything";
    case SkippedFilter::PageException:
        return "page exception";
    case SkippedFilter::ExtendedSelector:
        return "extended selector";
    case SkippedFilter::HidingException:
        return "hiding exception";
    case SkippedFilter::Scriptlet:
        return "scriptlet or HTML filter";
    case SkippedFilter::OverLimit:
        return "over the engine's limit";
    }
    return "unknown";
}

namespace {

// Selectors per element-hiding rule: WebKit joins the selectors of rules with the same trigger
// anyway, and fewer, larger rules parse faster. A selector WebKit's CSS parser refuses takes
// its whole rule with it, so the batches stay small.
constexpr std::size_t selectorsPerRule = 64;

enum class Action { Block, HideElements, IgnorePrevious };

struct Rule {
    EngineTrigger trigger;
    Action action = Action::Block;
    std::string selector;
    // A rule given as JSON text, written as it is.
    std::string raw;
};

void appendJsonString(std::string& out, std::string_view text) {
    static constexpr char hex[] = "0123456789abcdef";
    out += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20) {
            out += "\\u00";
            out += hex[byte >> 4];
            out += hex[byte & 0x0F];
        } else {
            out += c;
        }
    }
    out += '"';
}

void appendJsonStrings(std::string& out, std::string_view key,
                       const std::vector<std::string>& items) {
    if (items.empty()) {
        return;
    }
    out += ",\"";
    out += key;
    out += "\":[";
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            out += ',';
        }
        appendJsonString(out, items[i]);
    }
    out += ']';
}

void appendRule(std::string& out, const Rule& rule) {
    if (!rule.raw.empty()) {
        out += rule.raw;
        return;
    }
    const EngineTrigger& trigger = rule.trigger;
    out += "{\"trigger\":{\"url-filter\":";
    appendJsonString(out, trigger.urlFilter);
    if (trigger.caseSensitive) {
        out += ",\"url-filter-is-case-sensitive\":true";
    }
    appendJsonStrings(out, "resource-type", trigger.resourceTypes);
    appendJsonStrings(out, "load-type", trigger.loadType);
    appendJsonStrings(out, "load-context", trigger.loadContext);
    appendJsonStrings(out, "if-domain", trigger.ifDomain);
    appendJsonStrings(out, "unless-domain", trigger.unlessDomain);
    out += "},\"action\":{\"type\":";
    switch (rule.action) {
    case Action::Block:
        out += "\"block\"";
        break;
    case Action::HideElements:
        out += "\"css-display-none\",\"selector\":";
        appendJsonString(out, rule.selector);
        break;
    case Action::IgnorePrevious:
        out += "\"ignore-previous-rules\"";
        break;
    }
    out += "}}";
}

// A hiding rule of one site list, kept apart until the exceptions are known.
struct SiteHiding {
    std::vector<std::string> domains;
    std::string selector;
};

// The rules of the lists, section by section in the order they are written out.
struct Sections {
    // Generic selectors, each with the sites it is excepted on (none: everywhere).
    std::map<std::string, std::set<std::string>> genericHiding;
    std::vector<SiteHiding> siteHiding;
    // Element hiding exceptions: selector -> sites ("" for all sites).
    std::map<std::string, std::set<std::string>> hidingExceptions;
    std::vector<Rule> genericHideExceptions;
    std::vector<Rule> hideExceptions;
    // The rules of each blocking line together, so a line is dropped whole.
    std::vector<std::vector<Rule>> blocks;
    std::vector<Rule> exceptions;
    std::vector<Rule> importantBlocks;
    std::vector<Rule> siteExceptions;
};

class Converter {
public:
    explicit Converter(ConvertedFilterList& result) : result_(result) {}

    void addLeadingRules(std::string_view json) {
        auto rules = nlohmann::json::parse(json, nullptr, false);
        if (!rules.is_array()) {
            return;
        }
        for (const auto& rule : rules) {
            sections_.blocks.push_back({Rule{{}, Action::Block, {}, rule.dump()}});
        }
    }

    void addLine(std::string_view line, const std::set<std::string, std::less<>>& disabled) {
        const FilterLine parsed = parseFilterLine(line);
        if (parsed.kind != FilterLine::Kind::Ignored && !disabled.empty() &&
            disabled.contains(line)) {
            ++result_.filterCount;
            return;
        }
        switch (parsed.kind) {
        case FilterLine::Kind::Ignored:
            return;
        case FilterLine::Kind::Skipped:
            ++result_.filterCount;
            skip(parsed.skipped);
            return;
        case FilterLine::Kind::Disabling:
            ++result_.filterCount;
            return;
        case FilterLine::Kind::Hiding:
            ++result_.filterCount;
            addHiding(parsed.hiding);
            return;
        case FilterLine::Kind::Network:
            ++result_.filterCount;
            addNetwork(parsed.network);
            return;
        }
    }

    void finish();

private:
    void skip(SkippedFilter reason) { ++result_.skipped[static_cast<std::size_t>(reason)]; }

    void addHiding(const HidingFilter& filter) {
        if (filter.isException) {
            auto& sites = sections_.hidingExceptions[filter.selector];
            if (filter.domains.empty()) {
                sites.insert("");
            }
            sites.insert(filter.domains.begin(), filter.domains.end());
        } else if (!filter.domains.empty()) {
            sections_.siteHiding.push_back({filter.domains, filter.selector});
        } else {
            auto& excepted = sections_.genericHiding[filter.selector];
            excepted.insert(filter.exceptDomains.begin(), filter.exceptDomains.end());
        }
    }

    void addNetwork(const NetworkFilter& filter) {
        if (filter.pageException) {
            Rule rule{siteWideTrigger(filter.host), Action::IgnorePrevious, {}, {}};
            if (filter.pageException->document) {
                sections_.siteExceptions.push_back(rule);
            }
            if (filter.pageException->elementHiding) {
                sections_.hideExceptions.push_back(rule);
            } else if (filter.pageException->genericHiding) {
                sections_.genericHideExceptions.push_back(rule);
            }
            return;
        }
        const Action action = filter.isException ? Action::IgnorePrevious : Action::Block;
        std::vector<Rule> rules;
        for (const EngineTrigger& trigger : filter.triggers) {
            rules.push_back(Rule{trigger, action, {}, {}});
        }
        if (filter.isException) {
            sections_.exceptions.insert(sections_.exceptions.end(), rules.begin(), rules.end());
        } else if (filter.important) {
            sections_.importantBlocks.insert(sections_.importantBlocks.end(), rules.begin(),
                                             rules.end());
        } else {
            sections_.blocks.push_back(std::move(rules));
        }
    }

    static EngineTrigger siteWideTrigger(const std::string& host) {
        EngineTrigger trigger;
        trigger.urlFilter = ".*";
        trigger.ifDomain = {"*" + host};
        return trigger;
    }

    void applyHidingExceptions(std::vector<Rule>& hiding, std::vector<Rule>& siteHiding);
    void write(const std::vector<Rule>& rules) {
        for (const Rule& rule : rules) {
            if (result_.ruleCount++ > 0) {
                result_.json += ',';
            }
            appendRule(result_.json, rule);
        }
    }

    ConvertedFilterList& result_;
    Sections sections_;
};

// True when `domain` is `site` or one of its subdomains.
bool isWithin(std::string_view domain, std::string_view site) {
    return domain == site || (domain.size() > site.size() && domain.ends_with(site) &&
                              domain[domain.size() - site.size() - 1] == '.');
}

// Element hiding rules for `selectors`, batched, under one trigger.
void appendHidingRules(std::vector<Rule>& rules, const std::vector<std::string>& selectors,
                       const EngineTrigger& trigger) {
    for (std::size_t start = 0; start < selectors.size(); start += selectorsPerRule) {
        Rule rule{trigger, Action::HideElements, {}, {}};
        const std::size_t end = std::min(selectors.size(), start + selectorsPerRule);
        for (std::size_t i = start; i < end; ++i) {
            if (i > start) {
                rule.selector += ", ";
            }
            rule.selector += selectors[i];
        }
        rules.push_back(std::move(rule));
    }
}

void Converter::applyHidingExceptions(std::vector<Rule>& hiding, std::vector<Rule>& siteHiding) {
    const auto& exceptions = sections_.hidingExceptions;
    // Generic selectors: an exception for all sites removes the selector, one for some sites
    // keeps it off those sites.
    std::map<std::set<std::string>, std::vector<std::string>> genericByExcepted;
    for (auto& [selector, excepted] : sections_.genericHiding) {
        std::set<std::string> sites = excepted;
        if (auto it = exceptions.find(selector); it != exceptions.end()) {
            if (it->second.contains("")) {
                continue;
            }
            sites.insert(it->second.begin(), it->second.end());
        }
        genericByExcepted[sites].push_back(selector);
    }
    for (const auto& [sites, selectors] : genericByExcepted) {
        EngineTrigger trigger;
        trigger.urlFilter = ".*";
        for (const std::string& site : sites) {
            trigger.unlessDomain.push_back("*" + site);
        }
        appendHidingRules(hiding, selectors, trigger);
    }

    // Site selectors: the excepted sites leave the rule's list; an exception for a part of one
    // of its sites cannot be written, and the rule goes.
    std::map<std::vector<std::string>, std::vector<std::string>> siteBySites;
    for (SiteHiding& rule : sections_.siteHiding) {
        if (auto it = exceptions.find(rule.selector); it != exceptions.end()) {
            if (it->second.contains("")) {
                continue;
            }
            const auto& excepted = it->second;
            bool inexpressible = false;
            std::erase_if(rule.domains, [&](const std::string& domain) {
                return std::any_of(excepted.begin(), excepted.end(),
                                   [&](const std::string& site) { return isWithin(domain, site); });
            });
            for (const std::string& domain : rule.domains) {
                inexpressible |=
                    std::any_of(excepted.begin(), excepted.end(),
                                [&](const std::string& site) { return isWithin(site, domain); });
            }
            if (inexpressible) {
                skip(SkippedFilter::HidingException);
                continue;
            }
            if (rule.domains.empty()) {
                continue;
            }
        }
        std::sort(rule.domains.begin(), rule.domains.end());
        siteBySites[rule.domains].push_back(rule.selector);
    }
    for (const auto& [sites, selectors] : siteBySites) {
        EngineTrigger trigger;
        trigger.urlFilter = ".*";
        for (const std::string& site : sites) {
            trigger.ifDomain.push_back("*" + site);
        }
        appendHidingRules(siteHiding, selectors, trigger);
    }
}

void Converter::finish() {
    std::vector<Rule> hiding;
    std::vector<Rule> siteHiding;
    applyHidingExceptions(hiding, siteHiding);

    std::size_t total = hiding.size() + siteHiding.size() + sections_.genericHideExceptions.size() +
                        sections_.hideExceptions.size() + sections_.exceptions.size() +
                        sections_.importantBlocks.size() + sections_.siteExceptions.size();
    for (const auto& line : sections_.blocks) {
        total += line.size();
    }
    // Past the engine's limit the last blocking lines go, whole; exceptions all stay.
    while (total > maxContentRules && !sections_.blocks.empty()) {
        total -= sections_.blocks.back().size();
        sections_.blocks.pop_back();
        skip(SkippedFilter::OverLimit);
    }

    result_.json = "[";
    write(hiding);
    write(sections_.genericHideExceptions);
    write(siteHiding);
    write(sections_.hideExceptions);
    for (const auto& line : sections_.blocks) {
        write(line);
    }
    write(sections_.exceptions);
    write(sections_.importantBlocks);
    write(sections_.siteExceptions);
    result_.json += ']';
}

} // namespace

ConvertedFilterList convertFilterLists(std::span<const std::string_view> lists,
                                       std::string_view leadingBlockRules) {
    ConvertedFilterList result;
    Converter converter(result);
    converter.addLeadingRules(leadingBlockRules);
    // Lines that "$badfilter" lines turn off, wherever they are in the lists.
    std::set<std::string, std::less<>> disabled;
    for (std::string_view list : lists) {
        forEachLine(list, [&](std::string_view line) {
            if (line.find("badfilter") != std::string_view::npos) {
                const FilterLine parsed = parseFilterLine(line);
                if (parsed.kind == FilterLine::Kind::Disabling) {
                    disabled.insert(parsed.disables);
                }
            }
        });
    }
    for (std::string_view list : lists) {
        forEachLine(list, [&](std::string_view line) { converter.addLine(line, disabled); });
    }
    converter.finish();
    return result;
}

} // namespace ovel
