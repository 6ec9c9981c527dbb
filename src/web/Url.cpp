#include "web/Url.h"

#include <glib.h>

#include <algorithm>
#include <memory>

namespace ovel {

namespace {

struct UriUnref {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};
using UriPtr = std::unique_ptr<GUri, UriUnref>;

// GLib's parser, strict first. A stray percent sign (`?q=100%`) needs the relaxed mode, which
// keeps it as it is (and drops blanks at the ends). Parts stay percent-encoded as written;
// only the host is decoded, and an internationalised one is turned into ASCII.
UriPtr parseUri(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) {
        return nullptr;
    }
    const std::string copy(text);
    GUri* uri = g_uri_parse(copy.c_str(), G_URI_FLAGS_ENCODED, nullptr);
    if (uri == nullptr) {
        uri = g_uri_parse(copy.c_str(), GUriFlags(G_URI_FLAGS_ENCODED | G_URI_FLAGS_PARSE_RELAXED),
                          nullptr);
    }
    return UriPtr(uri);
}

// The schemes whose hosts are DNS names or IP addresses, compared without case.
bool isWebScheme(std::string_view scheme) {
    return scheme == "http" || scheme == "https" || scheme == "ws" || scheme == "wss" ||
           scheme == "ftp" || scheme == "file";
}

bool isSchemeText(std::string_view scheme) {
    if (scheme.empty() || !g_ascii_isalpha(scheme.front())) {
        return false;
    }
    return std::all_of(scheme.begin(), scheme.end(), [](char c) {
        return g_ascii_isalnum(c) || c == '+' || c == '-' || c == '.';
    });
}

void appendEscaped(std::string& out, unsigned char c) {
    static constexpr char hex[] = "0123456789ABCDEF";
    out.push_back('%');
    out.push_back(hex[c >> 4]);
    out.push_back(hex[c & 0x0F]);
}

// Blanks, control characters and non-ASCII bytes are escaped everywhere; `extra` are the
// characters a web address escapes in this part as well.
std::string escaped(std::string_view part, std::string_view extra) {
    std::string out;
    out.reserve(part.size());
    for (const char ch : part) {
        const auto c = static_cast<unsigned char>(ch);
        if (c <= 0x20 || c >= 0x7F || extra.find(ch) != std::string_view::npos) {
            appendEscaped(out, c);
        } else {
            out.push_back(ch);
        }
    }
    return out;
}

// The host as the URL writes it, from GLib's decoded form; none when it cannot be a host.
std::optional<std::string> hostText(std::string host, bool webScheme) {
    if (host.find(':') != std::string::npos) {
        // An IPv6 literal. A zone ("%eth0") means nothing outside this machine and browsers
        // refuse it; GLib lets anything through after the percent sign.
        if (host.find('%') != std::string::npos || !g_hostname_is_ip_address(host.c_str())) {
            return std::nullopt;
        }
        return "[" + toLowerAscii(host) + "]";
    }
    if (!webScheme) {
        // Anything but the characters a registered name may hold stays escaped, and so does a
        // semicolon, which GLib's relaxed mode would take for the end of the host.
        std::string out;
        for (const char ch : host) {
            const auto c = static_cast<unsigned char>(ch);
            static constexpr std::string_view allowed = "-._~!$&'()*+,=";
            if (g_ascii_isalnum(ch) || allowed.find(ch) != std::string_view::npos) {
                out.push_back(ch);
            } else {
                appendEscaped(out, c);
            }
        }
        return out;
    }
    if (!g_str_is_ascii(host.c_str())) {
        char* ascii = g_hostname_to_ascii(host.c_str());
        if (ascii == nullptr) {
            return std::nullopt;
        }
        host = ascii;
        g_free(ascii);
    }
    // What a web host may not hold, and a semicolon (see above).
    static constexpr std::string_view forbidden = " #%/:;<>?@[\\]^|";
    for (const char ch : host) {
        const auto c = static_cast<unsigned char>(ch);
        if (c < 0x21 || c >= 0x7F || forbidden.find(ch) != std::string_view::npos) {
            return std::nullopt;
        }
    }
    return toLowerAscii(host);
}

} // namespace

std::optional<Url> Url::parse(std::string_view text) {
    // As an address bar does: blanks and control characters at the ends go, tabs and line
    // breaks inside are dropped.
    std::string cleaned;
    for (const char c : text) {
        if (c != '\t' && c != '\n' && c != '\r') {
            cleaned.push_back(c);
        }
    }
    const auto isEdge = [](char c) { return static_cast<unsigned char>(c) <= 0x20; };
    while (!cleaned.empty() && isEdge(cleaned.back())) {
        cleaned.pop_back();
    }
    const auto first = std::find_if_not(cleaned.begin(), cleaned.end(), isEdge);
    cleaned.erase(cleaned.begin(), first);

    // GLib checks the address and reads its scheme, host and port. The rest is taken from the
    // text as written, escaped where it must be: GLib would also tidy it (decode escapes of
    // unreserved characters, remove dot segments), and an address the engine reported must
    // come out byte for byte as it went in.
    const UriPtr uri = parseUri(cleaned);
    const auto colon = cleaned.find(':');
    // GLib's relaxed mode drops blanks it finds in the scheme too: the text must hold the
    // scheme GLib read.
    if (!uri || colon == std::string::npos ||
        !isSchemeText(std::string_view(cleaned).substr(0, colon))) {
        return std::nullopt;
    }
    Url url;
    url.scheme_ = toLowerAscii(std::string_view(cleaned).substr(0, colon));
    const bool webScheme = isWebScheme(url.scheme_);
    std::string_view rest = std::string_view(cleaned).substr(colon + 1);
    const char* host = g_uri_get_host(uri.get());
    url.text_ = url.scheme_ + ":";
    if (rest.starts_with("//") != (host != nullptr)) {
        return std::nullopt; // GLib read it otherwise (its relaxed mode drops blanks)
    }
    if (host != nullptr) {
        const std::string_view authority = rest.substr(2, rest.find_first_of("/?#", 2) - 2);
        rest.remove_prefix(2 + authority.size());
        const auto at = authority.find('@');
        if (at != authority.rfind('@')) {
            return std::nullopt; // GLib's two modes split "a@b@c" differently
        }
        std::optional<std::string> written = hostText(host, webScheme);
        if (!written || (written->empty() && webScheme && url.scheme_ != "file")) {
            return std::nullopt;
        }
        url.host_ = *written;
        url.text_ += "//";
        if (at != std::string_view::npos) {
            url.text_ += escaped(authority.substr(0, at), webScheme ? "\"<>`" : "") + "@";
        }
        url.text_ += url.host_;
        if (const int port = g_uri_get_port(uri.get()); port >= 0) {
            url.port_ = port;
            url.text_ += ":" + std::to_string(port);
        }
    } else if (webScheme && url.scheme_ != "file") {
        return std::nullopt;
    }
    const auto hash = rest.find('#');
    const std::string_view beforeFragment = rest.substr(0, hash);
    const auto question = beforeFragment.find('?');
    url.text_ += escaped(beforeFragment.substr(0, question), webScheme ? "\"<>`{}" : "");
    if (question != std::string_view::npos) {
        url.text_ += "?" + escaped(beforeFragment.substr(question + 1), webScheme ? "\"<>'" : "");
    }
    if (hash != std::string_view::npos) {
        url.text_ += "#" + escaped(rest.substr(hash + 1), webScheme ? "\"<>`" : "");
    }
    return url;
}

std::optional<Url> Url::fromEngine(std::string_view text) {
    Url url;
    url.text_ = std::string(text);
    if (const UriPtr uri = parseUri(text)) {
        url.scheme_ = toLowerAscii(g_uri_get_scheme(uri.get()));
        if (const char* host = g_uri_get_host(uri.get())) {
            url.host_ = hostText(host, isWebScheme(url.scheme_)).value_or(std::string());
        }
        if (const int port = g_uri_get_port(uri.get()); port >= 0) {
            url.port_ = port;
        }
        return url;
    }
    const std::string_view scheme = text.substr(0, text.find(':'));
    if (scheme.size() == text.size() || !isSchemeText(scheme)) {
        return std::nullopt;
    }
    url.scheme_ = toLowerAscii(scheme);
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
