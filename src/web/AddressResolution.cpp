#include "web/AddressResolution.h"

#include <array>

namespace ovel {

namespace {

struct RouteAlias {
    std::string_view key;
    InternalRoute route;
};

constexpr InternalRoute startRoute{"ovel://newtab", "New Tab", true};
constexpr InternalRoute settingsRoute{"ovel://settings", "Settings", false};
constexpr InternalRoute downloadsRoute{"ovel://downloads", "Downloads", false};
constexpr InternalRoute historyRoute{"ovel://history", "History", false};
constexpr InternalRoute workspacesRoute{"ovel://workspaces", "Workspaces", false};
constexpr InternalRoute aboutRoute{"ovel://about", "About Ovel Web", false};

constexpr std::array routeAliases{
    RouteAlias{"ovel://newtab", startRoute},
    RouteAlias{"ovel://start", startRoute},
    RouteAlias{"ovel://home", startRoute},
    RouteAlias{"ovel://settings", settingsRoute},
    RouteAlias{"ovel://downloads", downloadsRoute},
    RouteAlias{"ovel://history", historyRoute},
    RouteAlias{"ovel://workspaces", workspacesRoute},
    RouteAlias{"ovel://sessions", workspacesRoute},
    RouteAlias{"ovel://about", aboutRoute},
    RouteAlias{"ovel://version", aboutRoute},
};

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string_view searchPrefix(SearchEngine engine) {
    switch (engine) {
    case SearchEngine::Google:
        return "https://www.google.com/search?q=";
    case SearchEngine::DuckDuckGo:
        return "https://duckduckgo.com/?q=";
    case SearchEngine::Bing:
        return "https://www.bing.com/search?q=";
    }
    return "https://www.google.com/search?q=";
}

bool isQueryAllowed(unsigned char c) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
        return true;
    }
    static constexpr std::string_view punctuation = "-._~!$&'()*+,;=:@/?";
    return punctuation.find(static_cast<char>(c)) != std::string_view::npos;
}

} // namespace

std::optional<InternalRoute> internalRouteFor(std::string_view text) {
    const std::string key = replaceAll(toLowerAscii(text), "chrome://", "ovel://");
    for (const RouteAlias& alias : routeAliases) {
        if (alias.key == key) {
            return alias.route;
        }
    }
    return std::nullopt;
}

std::optional<Url> webURLForTypedText(std::string_view text) {
    const std::string typed = trimmed(text);
    if (typed.starts_with("http://") || typed.starts_with("https://")) {
        return Url::parse(typed);
    }
    if (typed.find('.') == std::string::npos && typed != "localhost") {
        return std::nullopt;
    }
    if (typed.find(' ') != std::string::npos) {
        return std::nullopt;
    }
    return Url::parse("https://" + typed);
}

std::string percentEncodedQuery(std::string_view query) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(query.size());
    for (char ch : query) {
        const auto c = static_cast<unsigned char>(ch);
        if (isQueryAllowed(c)) {
            encoded.push_back(ch);
        } else {
            encoded.push_back('%');
            encoded.push_back(hex[c >> 4]);
            encoded.push_back(hex[c & 0x0F]);
        }
    }
    return encoded;
}

std::optional<Url> queryURL(SearchEngine engine, std::string_view query) {
    return Url::parse(std::string(searchPrefix(engine)) + percentEncodedQuery(query));
}

} // namespace ovel
