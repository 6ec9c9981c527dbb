#include "webkit/FaviconDecoder.h"
#include "support/IconFiles.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

using test::Bytes;
using test::Rgba;

// "WxH r,g,b,a" of the top-left pixel, or "none".
std::string describe(const Bytes& file) {
    const auto image = FaviconDecoder::decode(file);
    if (!image) {
        return "none";
    }
    if (image->rgba.size() != std::size_t(image->width) * std::size_t(image->height) * 4) {
        return "bad pixel buffer";
    }
    const auto& p = image->rgba;
    return std::to_string(image->width) + "x" + std::to_string(image->height) + " " +
           std::to_string(p[0]) + "," + std::to_string(p[1]) + "," + std::to_string(p[2]) + "," +
           std::to_string(p[3]);
}

constexpr Rgba halfRed{255, 0, 0, 128};
constexpr Rgba green{0, 255, 0, 255};
constexpr Rgba blue{0, 0, 255, 255};

TEST(FaviconDecoder, ReadsIcoFilesAndPlainImagesTakingTheLargest) {
    using test::icoBmpImage;
    using test::icoFile;
    using test::pngFile;
    const std::pair<Bytes, const char*> cases[] = {
        // Alpha stays straight: half-transparent red is not darkened.
        {icoFile({{32, 32, pngFile(32, 32, halfRed)}}), "32x32 255,0,0,128"},
        {icoFile({{16, 16, icoBmpImage(16, 16, green)}}), "16x16 0,255,0,255"},
        {icoFile({{256, 256, pngFile(256, 256, blue)}}), "256x256 0,0,255,255"},
        {icoFile({{16, 16, icoBmpImage(16, 16, green)}, {48, 48, pngFile(48, 48, blue)}}),
         "48x48 0,0,255,255"},
        {icoFile({{48, 48, pngFile(48, 48, blue)},
                  {64, 64, icoBmpImage(64, 64, green)},
                  {16, 16, pngFile(16, 16, halfRed)}}),
         "64x64 0,255,0,255"},
        // A broken largest image gives way to the next one.
        {icoFile({{64, 64, Bytes(100, 0x42)}, {32, 32, pngFile(32, 32, blue)}}),
         "32x32 0,0,255,255"},
        {pngFile(8, 8, halfRed), "8x8 255,0,0,128"},
        // Large images are scaled down.
        {pngFile(512, 256, green), "256x128 0,255,0,255"},
    };
    for (const auto& [file, expected] : cases) {
        EXPECT_EQ(describe(file), expected);
    }
}

TEST(FaviconDecoder, RefusesWhatIsNotAnIcon) {
    auto hugePng = test::pngFile(4, 4, green);
    // IHDR width and height (the CRC no longer matches, which must not matter either).
    hugePng[16] = hugePng[20] = 0x00;
    hugePng[17] = hugePng[21] = 0x01;
    auto outOfBounds = test::icoFile({{16, 16, test::pngFile(16, 16, green)}});
    outOfBounds[6 + 12] = 0xff; // the image's offset points past the end
    auto truncated = test::icoFile({{16, 16, test::pngFile(16, 16, green)}});
    truncated.resize(truncated.size() / 2);
    const std::pair<const char*, Bytes> cases[] = {
        {"empty", {}},
        {"text", Bytes{'<', 'h', 't', 'm', 'l', '>'}},
        {"ico header only", Bytes{0, 0, 1, 0}},
        {"ico with no images", Bytes{0, 0, 1, 0, 0, 0}},
        {"ico directory longer than the file", Bytes{0, 0, 1, 0, 9, 0, 16, 16}},
        {"ico image out of bounds", outOfBounds},
        {"truncated ico", truncated},
        {"png of 65536 pixels a side", hugePng},
        {"png signature only", Bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'}},
        {"more than a megabyte", Bytes(FaviconDecoder::maxBytes + 1, 0)},
    };
    for (const auto& [name, file] : cases) {
        EXPECT_EQ(describe(file), "none") << name;
    }
}

} // namespace
} // namespace ovel
