#include "web/AddressResolution.h"

#include <glib.h>

#include <algorithm>
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

bool isPort(std::string_view text) {
    return text.size() >= 2 && text.size() <= 6 && text[0] == ':' &&
           std::all_of(text.begin() + 1, text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// One label of a host name: what a machine on the local network is called.
bool isHostLabel(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '-' || c == '_';
    });
}

bool isIPAddress(const std::string& host) {
    return g_hostname_is_ip_address(host.c_str());
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

std::optional<TypedAddress> typedAddressFor(std::string_view text) {
    std::string typed = trimmed(text);
    if (typed.starts_with("http://") || typed.starts_with("https://")) {
        auto url = Url::parse(typed);
        return url ? std::optional<TypedAddress>(TypedAddress{*url, std::nullopt}) : std::nullopt;
    }
    if (typed.empty() || typed.find(' ') != std::string::npos) {
        return std::nullopt;
    }
    const std::size_t end = std::min(typed.find_first_of("/?#"), typed.size());
    const std::string authority = typed.substr(0, end);
    std::string host = authority;
    bool hasPort = false;
    if (isIPAddress(authority) && authority.find(':') != std::string::npos) {
        // An IPv6 literal without its brackets.
        typed = "[" + authority + "]" + typed.substr(end);
    } else if (authority.starts_with('[')) {
        const std::size_t close = authority.find(']');
        host = authority.substr(1, close == std::string::npos ? 0 : close - 1);
        hasPort = close != std::string::npos && isPort(authority.substr(close + 1));
    } else if (const std::size_t colon = authority.rfind(':');
               colon != std::string::npos && isPort(authority.substr(colon))) {
        host = authority.substr(0, colon);
        hasPort = true;
    }
    const bool ownMachine = toLowerAscii(host) == "localhost" || isIPAddress(host) ||
                            (isHostLabel(host) && (hasPort || end < typed.size()));
    if (ownMachine) {
        auto url = Url::parse("http://" + typed);
        return url ? std::optional<TypedAddress>(TypedAddress{*url, std::nullopt}) : std::nullopt;
    }
    if (typed.find('.') == std::string::npos) {
        return std::nullopt;
    }
    auto url = Url::parse("https://" + typed);
    if (!url) {
        return std::nullopt;
    }
    return TypedAddress{*url, Url::parse("http://" + typed)};
}

std::optional<Url> webURLForTypedText(std::string_view text) {
    auto address = typedAddressFor(text);
    return address ? std::optional<Url>(address->url) : std::nullopt;
}

std::string hostAndPort(const Url& url) {
    std::string key = url.host().value_or(std::string());
    if (const auto port = url.port()) {
        key += ":" + std::to_string(*port);
    }
    return key;
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
