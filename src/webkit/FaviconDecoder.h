#pragma once

#include "web/FaviconFetcher.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace ovel {

// Decodes a site icon: an ICO file (its largest image, stored as BMP or PNG), or a PNG, GIF,
// JPEG or BMP image. Images larger than maxIconSide are scaled down to fit; any image whose
// stored size exceeds maxSourceSide, and any unreadable data, gives none.
class FaviconDecoder {
public:
    static constexpr std::size_t maxBytes = 1 << 20;
    static constexpr int maxSourceSide = 2048;
    static constexpr int maxIconSide = 256;

    static std::optional<FaviconImage> decode(std::span<const std::uint8_t> data);
};

} // namespace ovel
