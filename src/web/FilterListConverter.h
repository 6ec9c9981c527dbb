#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace ovel {

// Why a line of a filter list was left out of the engine's rules. Every such line is counted
// under one reason; a line is either translated whole or not at all.
enum class SkippedFilter {
    // Not valid UTF-8, or not understood as any kind of filter.
    Malformed,
    // A regular expression the engine's matcher does not take.
    RegularExpression,
    // An option the engine has no equivalent for ($csp, $redirect, $removeparam, ...).
    UnsupportedOption,
    // Domains that cannot be written for the engine: sites excluded from a list of included ones,
    // or wildcard domains ("google.*") where they would widen a rule.
    Domains,
    // Characters outside ASCII in an address pattern.
    NonAscii,
    // A pattern that would block every request.
    MatchesEverything,
    // An exception for part of a site's pages rather than the whole site ($document,
    // $generichide on an address with a path).
    PageException,
    // Element hiding with a procedural or extended selector (:has-text, :xpath, ...).
    ExtendedSelector,
    // Element hiding exceptions the engine cannot express (for a subdomain of the hiding rule).
    HidingException,
    // Scriptlets (##+js), snippets (#$#), extended CSS (#?#) and HTML filters (##^).
    Scriptlet,
    // Beyond the number of rules the engine takes in one list.
    OverLimit,
};

inline constexpr std::array allSkippedFilters{
    SkippedFilter::Malformed,         SkippedFilter::RegularExpression,
    SkippedFilter::UnsupportedOption, SkippedFilter::Domains,
    SkippedFilter::NonAscii,          SkippedFilter::MatchesEverything,
    SkippedFilter::PageException,     SkippedFilter::ExtendedSelector,
    SkippedFilter::HidingException,   SkippedFilter::Scriptlet,
    SkippedFilter::OverLimit,
};

std::string_view label(SkippedFilter reason);

// Ad and tracker filter lists (Adblock Plus syntax, as EasyList and EasyPrivacy write it) as
// one WebKit content-blocker rule list.
struct ConvertedFilterList {
    // A JSON array of content-blocker rules.
    std::string json;
    std::size_t ruleCount = 0;
    // Filter lines read: neither blank nor comments nor headers.
    std::size_t filterCount = 0;
    std::array<std::size_t, allSkippedFilters.size()> skipped{};

    std::size_t skippedCount(SkippedFilter reason) const {
        return skipped[static_cast<std::size_t>(reason)];
    }
};

// The most rules WebKit compiles into one list.
inline constexpr std::size_t maxContentRules = 150000;

// Bumped whenever the same lists would convert differently, so stored compilations are redone.
inline constexpr int filterListConverterVersion = 1;

// Converts `lists` into WebKit's rules, with `leadingBlockRules` (a JSON array of block rules)
// among the blocking rules. Rules apply in this order, because WebKit's ignore-previous-rules
// cancels every earlier rule that matched the same load: generic element hiding, the sites
// where generic hiding is off, per-site element hiding, the sites where all hiding is off, then
// the blocking rules, their exceptions, the $important blocks, and last the sites allowed
// everything.
ConvertedFilterList convertFilterLists(std::span<const std::string_view> lists,
                                       std::string_view leadingBlockRules = "[]");

} // namespace ovel
