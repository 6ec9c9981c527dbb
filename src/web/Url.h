#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// An absolute URL: a scheme and what follows it. Its parts are found with GLib's URI parser;
// the text is what the browser loads, stores and compares.
class Url {
public:
    // Typed text, stored records and made-up addresses, taken as a browser's address bar takes
    // them: blanks, control characters and non-ASCII text are percent-encoded (and the few
    // characters a web address never holds raw), an internationalised host name becomes its
    // ASCII (punycode) form and a web host is lower-cased. An address the engine reported
    // comes out unchanged. None without a scheme, for a bad port or IPv6 literal, or a web
    // address without a valid host.
    static std::optional<Url> parse(std::string_view text);
    // An address the engine reports, kept byte for byte as reported: parsed only to learn its
    // scheme, host and port. None only when it has no scheme.
    static std::optional<Url> fromEngine(std::string_view text);

    const std::string& absoluteString() const { return text_; }
    // Lower-cased.
    const std::string& scheme() const { return scheme_; }
    // None when the URL has no authority or an empty host. An IPv6 literal keeps its brackets.
    std::optional<std::string> host() const;
    std::optional<int> port() const { return port_; }

    bool operator==(const Url& other) const { return text_ == other.text_; }

private:
    Url() = default;

    std::string text_;
    std::string scheme_;
    std::string host_;
    std::optional<int> port_;
};

std::string toLowerAscii(std::string_view text);
// Removes white space and line breaks from both ends.
std::string trimmed(std::string_view text);

} // namespace ovel
