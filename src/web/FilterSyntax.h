#pragma once

#include "web/FilterListConverter.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

// When a WebKit content-blocker rule applies: every field but the address pattern may be empty.
struct EngineTrigger {
    // A regular expression in the subset WebKit's matcher takes.
    std::string urlFilter;
    bool caseSensitive = false;
    std::vector<std::string> resourceTypes;
    std::vector<std::string> loadType;
    std::vector<std::string> loadContext;
    // Sites of the page, "*" before a domain taking in its subdomains; one of the two at most.
    std::vector<std::string> ifDomain;
    std::vector<std::string> unlessDomain;
    bool operator==(const EngineTrigger&) const = default;
};

// "example.com##.ad", "##.ad", "example.com#@#.ad": domains are lower-case ASCII, without "*".
struct HidingFilter {
    bool isException = false;
    std::vector<std::string> domains;
    // For a generic rule: the sites it is not for ("~example.com##.ad").
    std::vector<std::string> exceptDomains;
    std::string selector;
};

// "@@||example.com^$document" and its like: a whole site is let off blocking or hiding.
struct PageException {
    bool document = false;
    bool elementHiding = false;
    bool genericHiding = false;
};

// A blocking rule or an exception, as the engine's triggers (two when a frame is among the
// resource types: frames need a load context of their own).
struct NetworkFilter {
    bool isException = false;
    bool important = false;
    std::vector<EngineTrigger> triggers;
    std::optional<PageException> pageException;
    // The site of a page exception.
    std::string host;
};

struct FilterLine {
    enum class Kind {
        // Blank, a comment or a list header.
        Ignored,
        Skipped,
        // "$badfilter": turns another line of the lists off.
        Disabling,
        Hiding,
        Network,
    };
    Kind kind = Kind::Ignored;
    SkippedFilter skipped = SkippedFilter::Malformed;
    HidingFilter hiding;
    NetworkFilter network;
    // For Disabling: the line it turns off, as the lists write it.
    std::string disables;
};

FilterLine parseFilterLine(std::string_view line);

// The address pattern of a network filter ("||ads.example^", "/banner/*/img^") as a url-filter
// WebKit takes; ".*" for a pattern that matches every address. None, with the reason, when it
// cannot be written.
std::optional<std::string> urlFilterFor(std::string_view pattern, SkippedFilter& reason);

// True when WebKit's content-blocker matcher takes `pattern`: no alternation, no counted
// repetition, no character class escapes or assertions but ^ first and $ last.
bool isEngineRegex(std::string_view pattern);

// Calls `visit` with each line of `text`, without its line break (LF or CR LF).
template <typename Visit> void forEachLine(std::string_view text, Visit&& visit) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        visit(line);
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + 1);
    }
}

} // namespace ovel
