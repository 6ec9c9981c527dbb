#include "web/Url.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace ovel {

namespace {

bool isAsciiAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c) {
    return isAsciiDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Characters a URI may hold besides the percent sign: unreserved, gen-delims and sub-delims.
bool isUriCharacter(char c) {
    if (isAsciiAlpha(c) || isAsciiDigit(c)) {
        return true;
    }
    static constexpr std::string_view allowed = "-._~:/?#[]@!$&'()*+,;=";
    return allowed.find(c) != std::string_view::npos;
}

bool hasOnlyUriCharacters(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) {
                return false;
            }
            i += 2;
        } else if (!isUriCharacter(c)) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<Url> Url::parse(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAsciiAlpha(text[0])) {
        return std::nullopt;
    }
    const std::string_view scheme = text.substr(0, colon);
    if (!std::all_of(scheme.begin(), scheme.end(), [](char c) {
            return isAsciiAlpha(c) || isAsciiDigit(c) || c == '+' || c == '-' || c == '.';
        })) {
        return std::nullopt;
    }
    if (!hasOnlyUriCharacters(text) || std::count(text.begin(), text.end(), '#') > 1) {
        return std::nullopt;
    }

    Url url;
    url.text_ = std::string(text);
    url.scheme_ = toLowerAscii(scheme);

    std::string_view rest = text.substr(colon + 1);
    if (rest.substr(0, 2) == "//") {
        std::string_view authority = rest.substr(2);
        authority = authority.substr(0, authority.find_first_of("/?#"));
        if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
            authority.remove_prefix(at + 1);
        }
        std::string_view host = authority;
        std::string_view port;
        if (!authority.empty() && authority.front() == '[') {
            const auto close = authority.find(']');
            if (close == std::string_view::npos) {
                return std::nullopt;
            }
            host = authority.substr(0, close + 1);
            const std::string_view after = authority.substr(close + 1);
            if (!after.empty()) {
                if (after.front() != ':') {
                    return std::nullopt;
                }
                port = after.substr(1);
            }
        } else if (const auto portColon = authority.rfind(':');
                   portColon != std::string_view::npos) {
            host = authority.substr(0, portColon);
            port = authority.substr(portColon + 1);
        }
        if (host.find_first_of("[]") != std::string_view::npos && host.front() != '[') {
            return std::nullopt;
        }
        if (!port.empty()) {
            // Digits only: from_chars would also take a minus sign.
            if (!std::all_of(port.begin(), port.end(), isAsciiDigit)) {
                return std::nullopt;
            }
            int number = 0;
            const auto [end, error] =
                std::from_chars(port.data(), port.data() + port.size(), number);
            if (error != std::errc{} || end != port.data() + port.size() || number > 65535) {
                return std::nullopt;
            }
            url.port_ = number;
        }
        url.host_ = std::string(host);
    }
    return url;
}

std::optional<std::string> Url::host() const {
    if (host_.empty()) {
        return std::nullopt;
    }
    return host_;
}

std::string toLowerAscii(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    });
    return lower;
}

std::string trimmed(std::string_view text) {
    // White space and line breaks, as ASCII and as the common Unicode forms in UTF-8.
    static constexpr std::string_view asciiSpace = " \t\n\r\v\f";
    static constexpr std::string_view unicodeSpaces[] = {
        "\xC2\x85",     "\xC2\xA0",     "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE3\x80\x80",
        "\xE2\x80\x80", "\xE2\x80\x81", "\xE2\x80\x82", "\xE2\x80\x83", "\xE2\x80\x84",
        "\xE2\x80\x85", "\xE2\x80\x86", "\xE2\x80\x87", "\xE2\x80\x88", "\xE2\x80\x89",
        "\xE2\x80\x8A", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE1\x9A\x80"};
    auto stripFront = [&](std::string_view& s) {
        if (!s.empty() && asciiSpace.find(s.front()) != std::string_view::npos) {
            s.remove_prefix(1);
            return true;
        }
        for (std::string_view space : unicodeSpaces) {
            if (s.substr(0, space.size()) == space) {
                s.remove_prefix(space.size());
                return true;
            }
        }
        return false;
    };
    auto stripBack = [&](std::string_view& s) {
        if (!s.empty() && asciiSpace.find(s.back()) != std::string_view::npos) {
            s.remove_suffix(1);
            return true;
        }
        for (std::string_view space : unicodeSpaces) {
            if (s.size() >= space.size() && s.substr(s.size() - space.size()) == space) {
                s.remove_suffix(space.size());
                return true;
            }
        }
        return false;
    };
    while (stripFront(text)) {
    }
    while (stripBack(text)) {
    }
    return std::string(text);
}

} // namespace ovel
