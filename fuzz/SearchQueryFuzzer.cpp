#include "FuzzCheck.h"
#include "records/Records.h"
#include "web/AddressResolution.h"

#include <cstddef>
#include <cstdint>
#include <optional>

using ovel::fuzz::check;

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

// What a server reads from the query: %XX becomes the byte; everything else is itself ('+' too,
// since we never write a blank as '+'). None when a percent sign is not followed by two digits.
std::optional<std::string> percentDecoded(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        if (i + 2 >= text.size()) {
            return std::nullopt;
        }
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view query(reinterpret_cast<const char*>(data), size);

    for (const ovel::SearchEngine engine : ovel::allSearchEngines) {
        const std::string_view name = ovel::rawValue(engine);
        const auto url = ovel::queryURL(engine, query);
        check(url.has_value(), "every query makes a results page address", name);
        const std::string& address = url->absoluteString();

        const auto home = ovel::queryURL(engine, "");
        check(home && url->host() == home->host() && url->scheme() == "https",
              "the query never changes which server is asked", address);
        check(address.find('#') == std::string::npos, "the query is never cut by a fragment",
              address);

        const auto mark = address.find('?');
        check(mark != std::string::npos && address.compare(mark + 1, 2, "q=") == 0,
              "the query is the value of q", address);
        const auto sent = percentDecoded(std::string_view(address).substr(mark + 3));
        check(sent.has_value(), "the query is well-formed percent-encoding", address);
        check(*sent == query, "the engine receives exactly the bytes typed", address);
    }
    return 0;
}
