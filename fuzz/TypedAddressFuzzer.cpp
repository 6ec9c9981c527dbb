#include "FuzzCheck.h"
#include "web/AddressResolution.h"
#include "web/Url.h"

#include <cstddef>
#include <cstdint>

using ovel::fuzz::check;

namespace {

// An address we hand to the engine or store in a session.
void checkAddress(const ovel::Url& url) {
    const std::string& text = url.absoluteString();
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        check(c > 0x20 && c < 0x7F, "an address is printable ASCII without blanks", text);
    }
    const auto again = ovel::Url::parse(text);
    check(again.has_value(), "an address parses again", text);
    check(*again == url && again->scheme() == url.scheme() && again->host() == url.host() &&
              again->port() == url.port(),
          "an address parses again into the same parts", text);
    if (const auto port = url.port()) {
        check(*port >= 0 && *port <= 65535, "a port is a 16-bit number", text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view typed(reinterpret_cast<const char*>(data), size);

    if (const auto url = ovel::webURLForTypedText(typed)) {
        checkAddress(*url);
        check(url->scheme() == "http" || url->scheme() == "https",
              "typed text opens only web addresses", url->absoluteString());
    }
    // Stored sessions and bookmarks go through the same parser.
    if (const auto url = ovel::Url::parse(typed)) {
        checkAddress(*url);
    }
    // What the engine reports is kept as it is.
    if (const auto url = ovel::Url::fromEngine(typed)) {
        check(url->absoluteString() == typed, "a reported URL keeps its text", typed);
    }
    if (const auto route = ovel::internalRouteFor(typed)) {
        check(route->canonicalAddress.starts_with("ovel://"), "internal pages live under ovel://",
              route->canonicalAddress);
        const auto canonical = ovel::internalRouteFor(route->canonicalAddress);
        check(canonical && canonical->canonicalAddress == route->canonicalAddress &&
                  canonical->title == route->title,
              "an internal page's own address leads to it", route->canonicalAddress);
    }
    return 0;
}
