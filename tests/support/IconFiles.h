#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace ovel::test {

using Bytes = std::vector<std::uint8_t>;
using Rgba = std::array<std::uint8_t, 4>;

// Image files for icon tests, every pixel of one colour.

// A PNG (RGBA, 8 bits per channel).
Bytes pngFile(int width, int height, Rgba colour);
// The image of an ICO entry in BMP form: a 32-bit DIB of twice the height, then the mask.
Bytes icoBmpImage(int width, int height, Rgba colour);

struct IcoImage {
    int width;
    int height;
    Bytes data;
};
// An ICO file holding the images in this order.
Bytes icoFile(const std::vector<IcoImage>& images);

} // namespace ovel::test
