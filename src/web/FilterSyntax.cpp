#include "web/FilterSyntax.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace ovel {

namespace {

// The resource types of network filters, as bits.
enum Type : std::uint32_t {
    Script = 1U << 0,
    Image = 1U << 1,
    Stylesheet = 1U << 2,
    Fetch = 1U << 3,
    Subdocument = 1U << 4,
    Media = 1U << 5,
    Font = 1U << 6,
    Popup = 1U << 7,
    WebSocket = 1U << 8,
    Ping = 1U << 9,
    Other = 1U << 10,
    Object = 1U << 11,
    Document = 1U << 12,
};

// What a filter without types is about: every request a page makes, frames included; not the
// page itself and not pop-ups.
constexpr std::uint32_t requestTypes = Script | Image | Stylesheet | Fetch | Subdocument | Media |
                                       Font | WebSocket | Ping | Other | Object;

struct TypeName {
    std::string_view option;
    std::uint32_t bit;
};

constexpr std::array typeOptions{
    TypeName{"script", Script},
    TypeName{"image", Image},
    TypeName{"stylesheet", Stylesheet},
    TypeName{"css", Stylesheet},
    TypeName{"xmlhttprequest", Fetch},
    TypeName{"xhr", Fetch},
    TypeName{"subdocument", Subdocument},
    TypeName{"frame", Subdocument},
    TypeName{"media", Media},
    TypeName{"font", Font},
    TypeName{"popup", Popup},
    TypeName{"websocket", WebSocket},
    TypeName{"ping", Ping},
    TypeName{"beacon", Ping},
    TypeName{"other", Other},
    TypeName{"object", Object},
    TypeName{"object-subrequest", Object},
    TypeName{"document", Document},
    TypeName{"doc", Document},
};

// WebKit's names, in bit order; frames and pages are written apart.
constexpr std::array<std::pair<std::uint32_t, std::string_view>, 11> engineTypes{{
    {Script, "script"},
    {Image, "image"},
    {Stylesheet, "style-sheet"},
    {Fetch, "fetch"},
    {Media, "media"},
    {Font, "font"},
    {Popup, "popup"},
    {WebSocket, "websocket"},
    {Ping, "ping"},
    {Other, "other"},
    {Document, "document"},
}};

// Every URL the engine checks starts with a scheme and "//"; the host follows, or one of its
// subdomains ends with the pattern's host.
constexpr std::string_view hostAnchor = "^[^:/]+://([^/]+\\.)?";
// "^": any character but a letter, a digit or one of _ - . %.
constexpr std::string_view separator = "[^a-zA-Z0-9_.%-]";

bool isAsciiAlnum(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isHostCharacter(char c) {
    return isAsciiAlnum(c) || c == '.' || c == '-' || c == '_';
}

std::string_view trimmed(std::string_view text) {
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::vector<std::string_view> split(std::string_view text, char delimiter) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = text.find(delimiter);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

// A site as the engine names it: lower-case ASCII (punycode for other scripts). None for what
// cannot be one ("google.*", an address, a pattern).
std::optional<std::string> siteDomain(std::string_view text) {
    if (text.empty() || text.size() > 253) {
        return std::nullopt;
    }
    std::string domain(text);
    if (std::any_of(domain.begin(), domain.end(), [](char c) { return (c & 0x80) != 0; })) {
        gchar* ascii = g_hostname_to_ascii(domain.c_str());
        if (ascii == nullptr) {
            return std::nullopt;
        }
        domain = ascii;
        g_free(ascii);
    }
    for (char& c : domain) {
        if (!isHostCharacter(c)) {
            return std::nullopt;
        }
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    if (domain.front() == '.' || domain.back() == '.' || domain.find("..") != std::string::npos) {
        return std::nullopt;
    }
    return domain;
}

struct Sites {
    std::vector<std::string> included;
    std::vector<std::string> excluded;
};

// "a.com|~b.com" (or with commas): included sites that cannot be named are left out, which
// only narrows the rule; one excluded that cannot, or both kinds together, and the line goes.
std::optional<Sites> parseSites(std::string_view text, char delimiter) {
    Sites sites;
    bool droppedIncluded = false;
    for (std::string_view part : split(text, delimiter)) {
        part = trimmed(part);
        const bool excluded = part.starts_with('~');
        if (excluded) {
            part.remove_prefix(1);
        }
        auto domain = siteDomain(part);
        if (!domain) {
            if (excluded) {
                return std::nullopt;
            }
            droppedIncluded = true;
            continue;
        }
        (excluded ? sites.excluded : sites.included).push_back(std::move(*domain));
    }
    if (!sites.included.empty() && !sites.excluded.empty()) {
        return std::nullopt;
    }
    if (droppedIncluded && sites.included.empty()) {
        return std::nullopt;
    }
    return sites;
}

std::vector<std::string> engineSites(const std::vector<std::string>& domains) {
    std::vector<std::string> sites;
    sites.reserve(domains.size());
    for (const std::string& domain : domains) {
        sites.push_back("*" + domain);
    }
    return sites;
}

bool isValidUtf8(std::string_view text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr);
}

// Procedural operators and other extensions of the blockers' own, which no browser's CSS knows.
constexpr std::array extendedSelectorMarks{
    std::string_view(":has-text("),   std::string_view(":-abp-"),
    std::string_view(":xpath("),      std::string_view(":upward("),
    std::string_view(":remove"),      std::string_view(":style("),
    std::string_view(":matches-"),    std::string_view(":min-text-length("),
    std::string_view(":watch-attr("), std::string_view(":others("),
    std::string_view(":if("),         std::string_view(":if-not("),
    std::string_view(":contains("),   std::string_view(":nth-ancestor("),
    std::string_view(":shadow"),
};

// A selector a browser might take: no procedural operator, brackets and quotes that close, no
// :has() within :has(), and no braces that would end the rule around it.
bool isPlainSelector(std::string_view selector) {
    for (std::string_view mark : extendedSelectorMarks) {
        if (selector.find(mark) != std::string_view::npos) {
            return false;
        }
    }
    std::vector<char> open;
    // For each open parenthesis, whether it is a :has( one.
    std::vector<bool> hasGroups;
    char quote = 0;
    for (std::size_t i = 0; i < selector.size(); ++i) {
        const char c = selector[i];
        if (c == '\\') {
            ++i;
            if (i == selector.size()) {
                return false;
            }
        } else if (quote != 0) {
            quote = c == quote ? 0 : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '{' || c == '}' || c == ';') {
            return false;
        } else if (c == '(' || c == '[') {
            open.push_back(c == '(' ? ')' : ']');
            const bool has = c == '(' && selector.substr(0, i).ends_with(":has");
            if (has && std::find(hasGroups.begin(), hasGroups.end(), true) != hasGroups.end()) {
                return false;
            }
            hasGroups.push_back(has);
        } else if (c == ')' || c == ']') {
            if (open.empty() || open.back() != c) {
                return false;
            }
            open.pop_back();
            hasGroups.pop_back();
        }
    }
    return quote == 0 && open.empty();
}

FilterLine skippedLine(SkippedFilter reason) {
    FilterLine line;
    line.kind = FilterLine::Kind::Skipped;
    line.skipped = reason;
    return line;
}

// The separators of element hiding: "##", "#@#" and the extended ones.
struct CosmeticMark {
    std::size_t at = 0;
    std::string_view mark;
};

std::optional<CosmeticMark> findCosmeticMark(std::string_view line) {
    static constexpr std::array marks{
        std::string_view("##"),   std::string_view("#@#"),  std::string_view("#?#"),
        std::string_view("#@?#"), std::string_view("#$#"),  std::string_view("#@$#"),
        std::string_view("#%#"),  std::string_view("#@%#"),
    };
    std::size_t at = line.find('#');
    while (at != std::string_view::npos) {
        for (std::string_view mark : marks) {
            if (line.substr(at).starts_with(mark)) {
                // The site part of element hiding holds domains only: anything else is an
                // address with a '#' in it.
                const std::string_view sites = line.substr(0, at);
                if (sites.find_first_of("/|$^@\"!") != std::string_view::npos) {
                    return std::nullopt;
                }
                return CosmeticMark{at, mark};
            }
        }
        at = line.find('#', at + 1);
    }
    return std::nullopt;
}

FilterLine parseHiding(std::string_view line, const CosmeticMark& found) {
    if (found.mark != "##" && found.mark != "#@#") {
        return skippedLine(SkippedFilter::Scriptlet);
    }
    const std::string_view selector = trimmed(line.substr(found.at + found.mark.size()));
    if (selector.starts_with("+js(") || selector.starts_with('^')) {
        return skippedLine(SkippedFilter::Scriptlet);
    }
    if (selector.empty()) {
        return skippedLine(SkippedFilter::Malformed);
    }
    if (!isPlainSelector(selector)) {
        return skippedLine(SkippedFilter::ExtendedSelector);
    }
    FilterLine parsed;
    parsed.kind = FilterLine::Kind::Hiding;
    parsed.hiding.isException = found.mark == "#@#";
    parsed.hiding.selector = std::string(selector);
    const std::string_view siteText = line.substr(0, found.at);
    if (!siteText.empty()) {
        auto sites = parseSites(siteText, ',');
        if (!sites || (parsed.hiding.isException && !sites->excluded.empty())) {
            return skippedLine(SkippedFilter::Domains);
        }
        parsed.hiding.domains = std::move(sites->included);
        parsed.hiding.exceptDomains = std::move(sites->excluded);
    }
    return parsed;
}

struct Options {
    std::uint32_t included = 0;
    std::uint32_t excluded = 0;
    std::optional<bool> thirdParty;
    Sites sites;
    bool matchCase = false;
    bool important = false;
    bool genericHide = false;
    bool elementHide = false;
    bool disables = false;
};

std::optional<Options> parseOptions(std::string_view text, SkippedFilter& reason) {
    Options options;
    for (std::string_view option : split(text, ',')) {
        option = trimmed(option);
        const bool negated = option.starts_with('~');
        const std::string_view name = negated ? option.substr(1) : option;
        const auto type = std::find_if(typeOptions.begin(), typeOptions.end(),
                                       [&](const TypeName& entry) { return entry.option == name; });
        if (type != typeOptions.end()) {
            (negated ? options.excluded : options.included) |= type->bit;
        } else if (name == "third-party" || name == "3p") {
            options.thirdParty = !negated;
        } else if (name == "first-party" || name == "1p") {
            options.thirdParty = negated;
        } else if (!negated && (name.starts_with("domain=") || name.starts_with("from="))) {
            auto sites = parseSites(name.substr(name.find('=') + 1), '|');
            if (!sites) {
                reason = SkippedFilter::Domains;
                return std::nullopt;
            }
            options.sites = std::move(*sites);
        } else if (!negated && name == "match-case") {
            options.matchCase = true;
        } else if (!negated && name == "important") {
            options.important = true;
        } else if (!negated && (name == "generichide" || name == "ghide")) {
            options.genericHide = true;
        } else if (!negated && (name == "elemhide" || name == "ehide")) {
            options.elementHide = true;
        } else if (!negated && name == "badfilter") {
            options.disables = true;
        } else if (!negated && name == "all") {
            options.included |= requestTypes | Document | Popup;
        } else {
            reason = option.empty() ? SkippedFilter::Malformed : SkippedFilter::UnsupportedOption;
            return std::nullopt;
        }
    }
    return options;
}

// The pattern's host when it names a whole site and nothing more: "||example.com^".
std::optional<std::string> siteOfPattern(std::string_view pattern) {
    if (!pattern.starts_with("||")) {
        return std::nullopt;
    }
    pattern.remove_prefix(2);
    if (pattern.ends_with('^')) {
        pattern.remove_suffix(1);
    }
    if (pattern.empty() || !std::all_of(pattern.begin(), pattern.end(), isHostCharacter)) {
        return std::nullopt;
    }
    return siteDomain(pattern);
}

void setTypes(EngineTrigger& trigger, std::uint32_t types) {
    for (const auto& [bit, name] : engineTypes) {
        if ((types & bit) != 0) {
            trigger.resourceTypes.emplace_back(name);
        }
    }
}

FilterLine parseNetwork(std::string_view line) {
    FilterLine parsed;
    parsed.kind = FilterLine::Kind::Network;
    NetworkFilter& filter = parsed.network;
    std::string_view body = line;
    filter.isException = body.starts_with("@@");
    if (filter.isException) {
        body.remove_prefix(2);
    }

    // The options follow the last '$'; a regular expression may hold '$' itself.
    std::string_view pattern = body;
    std::string_view optionText;
    bool isRegex = false;
    if (body.size() >= 2 && body.front() == '/') {
        if (body.back() == '/') {
            isRegex = true;
        } else if (const std::size_t end = body.rfind("/$");
                   end != std::string_view::npos && end > 0) {
            isRegex = true;
            pattern = body.substr(0, end + 1);
            optionText = body.substr(end + 2);
        }
    }
    if (!isRegex) {
        if (const std::size_t dollar = body.rfind('$'); dollar != std::string_view::npos) {
            pattern = body.substr(0, dollar);
            optionText = body.substr(dollar + 1);
            if (optionText.empty()) {
                return skippedLine(SkippedFilter::Malformed);
            }
        }
    }

    SkippedFilter reason = SkippedFilter::Malformed;
    Options options;
    if (!optionText.empty()) {
        auto parsedOptions = parseOptions(optionText, reason);
        if (!parsedOptions) {
            return skippedLine(reason);
        }
        options = std::move(*parsedOptions);
    }
    if (options.disables) {
        parsed.kind = FilterLine::Kind::Disabling;
        return parsed;
    }
    filter.important = options.important;

    // A whole site let off: $document, $elemhide, $generichide on "@@||site^", alone.
    if (options.genericHide || options.elementHide || (options.included & Document) != 0) {
        const auto site = siteOfPattern(pattern);
        const bool pageOnly = (options.included & ~Document) == 0 && options.excluded == 0 &&
                              !options.thirdParty && options.sites.included.empty() &&
                              options.sites.excluded.empty();
        if (filter.isException) {
            if (!site || !pageOnly) {
                return skippedLine(SkippedFilter::PageException);
            }
            filter.pageException = PageException{(options.included & Document) != 0,
                                                 options.elementHide, options.genericHide};
            filter.host = *site;
            return parsed;
        }
        if (options.genericHide || options.elementHide) {
            return skippedLine(SkippedFilter::UnsupportedOption);
        }
    }

    EngineTrigger trigger;
    if (isRegex) {
        const std::string_view expression = pattern.substr(1, pattern.size() - 2);
        if (!isEngineRegex(expression)) {
            return skippedLine(SkippedFilter::RegularExpression);
        }
        trigger.urlFilter = std::string(expression);
    } else {
        auto urlFilter = urlFilterFor(pattern, reason);
        if (!urlFilter) {
            return skippedLine(reason);
        }
        trigger.urlFilter = std::move(*urlFilter);
    }
    trigger.caseSensitive = options.matchCase;
    if (options.thirdParty) {
        trigger.loadType = {*options.thirdParty ? "third-party" : "first-party"};
    }
    trigger.ifDomain = engineSites(options.sites.included);
    trigger.unlessDomain = engineSites(options.sites.excluded);
    if (trigger.urlFilter == ".*" && trigger.ifDomain.empty()) {
        return skippedLine(SkippedFilter::MatchesEverything);
    }

    // A blocked site is blocked for everything, its pages too (as blockers do for a filter that
    // names a site and nothing else); other filters without types are for requests only.
    const bool wholeSite = !filter.isException && options.included == 0 && options.excluded == 0 &&
                           siteOfPattern(pattern).has_value();
    if (wholeSite) {
        filter.triggers.push_back(std::move(trigger));
        return parsed;
    }
    std::uint32_t types = options.included == 0 ? requestTypes : options.included;
    types &= ~options.excluded;
    // Plug-ins are never loaded: a filter only for them has nothing to do.
    types &= ~Object;
    if ((types & Document) != 0) {
        types &= ~Subdocument;
    }
    if (types == 0) {
        return skippedLine(SkippedFilter::UnsupportedOption);
    }
    if ((types & ~Subdocument) != 0) {
        EngineTrigger requests = trigger;
        setTypes(requests, types & ~Subdocument);
        filter.triggers.push_back(std::move(requests));
    }
    if ((types & Subdocument) != 0) {
        trigger.resourceTypes = {"document"};
        trigger.loadContext = {"child-frame"};
        filter.triggers.push_back(std::move(trigger));
    }
    return parsed;
}

} // namespace

std::optional<std::string> urlFilterFor(std::string_view pattern, SkippedFilter& reason) {
    std::string filter;
    const bool anchoredToHost = pattern.starts_with("||");
    if (anchoredToHost) {
        pattern.remove_prefix(2);
    } else if (pattern.starts_with('|')) {
        pattern.remove_prefix(1);
        filter = "^";
    }
    const bool anchoredToEnd = pattern.ends_with('|');
    if (anchoredToEnd) {
        pattern.remove_suffix(1);
    }
    // Wildcards at an open end add nothing.
    if (!anchoredToHost && filter.empty()) {
        while (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
        }
    }
    if (!anchoredToEnd) {
        while (pattern.ends_with('*')) {
            pattern.remove_suffix(1);
        }
    }
    if (pattern.empty() || pattern.find_first_not_of('*') == std::string_view::npos) {
        return ".*";
    }
    if (anchoredToHost) {
        filter = hostAnchor;
    }

    bool inHost = anchoredToHost;
    bool endWritten = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || byte < 0x20 || byte == 0x7F) {
            reason = SkippedFilter::NonAscii;
            return std::nullopt;
        }
        if (c == '*') {
            if (!filter.ends_with(".*")) {
                filter += ".*";
            }
            inHost = false;
        } else if (c == '^') {
            if (inHost) {
                // After a host comes its port or its path.
                filter += "[/:]";
                inHost = false;
            } else if (i + 1 == pattern.size()) {
                // A separator, or the end of the address.
                filter += anchoredToEnd ? std::string(separator) + "?$"
                                        : "(" + std::string(separator) + ".*)?$";
                endWritten = true;
            } else {
                filter += separator;
            }
        } else {
            inHost = inHost && isHostCharacter(c);
            if (std::string_view("\\.+?()[]{}$^|").find(c) != std::string_view::npos) {
                filter += '\\';
            }
            filter += c;
        }
    }
    if (anchoredToEnd && !endWritten) {
        filter += '$';
    }
    return filter;
}

bool isEngineRegex(std::string_view pattern) {
    if (pattern.empty()) {
        return false;
    }
    int depth = 0;
    // Whether the last thing read can take a quantifier, and whether it is one.
    bool atom = false;
    bool quantified = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || byte < 0x20 || byte == 0x7F) {
            return false;
        }
        switch (c) {
        case '\\':
            // Escaped punctuation only: \d, \w, \b and their like are refused.
            if (i + 1 == pattern.size() || isAsciiAlnum(pattern[i + 1]) ||
                static_cast<unsigned char>(pattern[i + 1]) >= 0x80 || pattern[i + 1] < 0x20) {
                return false;
            }
            ++i;
            atom = true;
            quantified = false;
            break;
        case '^':
            if (i != 0) {
                return false;
            }
            atom = false;
            break;
        case '$':
            if (i + 1 != pattern.size() || depth != 0) {
                return false;
            }
            atom = false;
            break;
        case '|':
        case '{':
        case '}':
            return false;
        case '*':
        case '+':
        case '?':
            if (quantified && c == '?') {
                // A lazy quantifier matches the same addresses.
                quantified = false;
                atom = false;
                break;
            }
            if (!atom) {
                return false;
            }
            atom = false;
            quantified = true;
            break;
        case '[': {
            std::size_t j = i + 1;
            if (j < pattern.size() && pattern[j] == '^') {
                ++j;
            }
            const std::size_t first = j;
            for (; j < pattern.size() && pattern[j] != ']'; ++j) {
                const char inner = pattern[j];
                if (static_cast<unsigned char>(inner) >= 0x80 || inner < 0x20) {
                    return false;
                }
                if (inner == '\\') {
                    if (j + 1 == pattern.size() || isAsciiAlnum(pattern[j + 1])) {
                        return false;
                    }
                    ++j;
                } else if (inner == '[') {
                    return false;
                }
            }
            if (j >= pattern.size() || j == first) {
                return false;
            }
            i = j;
            atom = true;
            quantified = false;
            break;
        }
        case '(':
            if (pattern.substr(i).starts_with("(?:")) {
                i += 2;
            } else if (i + 1 < pattern.size() && pattern[i + 1] == '?') {
                return false;
            }
            if (i + 1 < pattern.size() && pattern[i + 1] == ')') {
                return false;
            }
            ++depth;
            atom = false;
            quantified = false;
            break;
        case ')':
            if (--depth < 0) {
                return false;
            }
            atom = true;
            quantified = false;
            break;
        case ']':
            return false;
        default:
            atom = true;
            quantified = false;
            break;
        }
    }
    return depth == 0;
}

FilterLine parseFilterLine(std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.starts_with('!') || line.starts_with('[')) {
        return {};
    }
    if (!isValidUtf8(line)) {
        return skippedLine(SkippedFilter::Malformed);
    }
    if (const auto mark = findCosmeticMark(line)) {
        return parseHiding(line, *mark);
    }
    FilterLine parsed = parseNetwork(line);
    if (parsed.kind == FilterLine::Kind::Disabling) {
        // The line it turns off is the same without "badfilter".
        const std::size_t dollar = line.rfind('$');
        std::string options;
        for (std::string_view option : split(line.substr(dollar + 1), ',')) {
            if (option != "badfilter") {
                options += (options.empty() ? "" : ",") + std::string(option);
            }
        }
        parsed.disables = std::string(line.substr(0, dollar));
        if (!options.empty()) {
            parsed.disables += "$" + options;
        }
    }
    return parsed;
}

} // namespace ovel
