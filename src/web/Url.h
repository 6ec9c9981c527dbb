#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// An absolute URL as RFC 3986 writes it: a scheme, then only characters a URI may hold
// (non-ASCII text, blanks and stray percent signs make it unparsable). The text is kept as
// given; the parts are views of it.
class Url {
public:
    static std::optional<Url> parse(std::string_view text);

    const std::string& absoluteString() const { return text_; }
    // Lower-cased.
    const std::string& scheme() const { return scheme_; }
    // As written; none when the URL has no authority or an empty host.
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
