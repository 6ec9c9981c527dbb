#pragma once

#include "FuzzCheck.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ovel::fuzz {

// Any blob may be handed to a decoder (a damaged or foreign settings file). What it accepts must
// survive being saved and read back unchanged, and saving it again must write the same bytes.
template <typename Records>
void checkRoundTrip(const std::uint8_t* data, std::size_t size,
                    std::optional<Records> (*decode)(std::string_view),
                    std::string (*encode)(const Records&)) {
    const std::string_view blob(reinterpret_cast<const char*>(data), size);
    const std::optional<Records> decoded = decode(blob);
    if (!decoded) {
        return;
    }
    const std::string encoded = encode(*decoded);
    const std::optional<Records> again = decode(encoded);
    check(again.has_value(), "what was decoded encodes to a readable blob", encoded);
    check(*again == *decoded, "decoding the encoded records gives the same records", encoded);
    check(encode(*again) == encoded, "encoding the same records writes the same bytes", encoded);
}

} // namespace ovel::fuzz
