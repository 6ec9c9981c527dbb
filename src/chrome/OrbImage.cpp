#include "chrome/OrbImage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace ovel {

namespace {

// Blur radii follow GTK's blur node: the Gaussian's standard deviation is half the radius.
// Three box blurs of the width below come within a few per cent of that Gaussian.
int boxWidth(double sigma) {
    const int width =
        static_cast<int>(std::floor(sigma * 3 * std::sqrt(2 * std::numbers::pi) / 4 + 0.5));
    return width | 1;
}

void boxBlurLine(const std::uint8_t* in, std::uint8_t* out, int length, int step, int half) {
    // A running sum over [i - half, i + half]; outside the line reads as zero.
    int sum = 0;
    const int width = 2 * half + 1;
    for (int i = 0; i < std::min(half, length); ++i) {
        sum += in[i * step];
    }
    for (int i = 0; i < length; ++i) {
        if (i + half < length) {
            sum += in[(i + half) * step];
        }
        if (i - half - 1 >= 0) {
            sum -= in[(i - half - 1) * step];
        }
        out[i * step] = static_cast<std::uint8_t>((sum + width / 2) / width);
    }
}

void blurMask(std::vector<std::uint8_t>& mask, int side, double sigma) {
    const int half = boxWidth(sigma) / 2;
    std::vector<std::uint8_t> scratch(mask.size());
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < side; ++y) {
            boxBlurLine(&mask[y * side], &scratch[y * side], side, 1, half);
        }
        for (int x = 0; x < side; ++x) {
            boxBlurLine(&scratch[x], &mask[x], side, side, half);
        }
    }
}

} // namespace

double OrbImage::margin(double blurRadius) {
    return std::ceil(blurRadius / 2 * 3);
}

OrbImage OrbImage::render(double diameter, double blurRadius, const Rgba& color, int scale) {
    const double logicalSide = diameter + 2 * margin(blurRadius);
    const int side = static_cast<int>(std::ceil(logicalSide * scale));

    // The disc's coverage, anti-aliased, then blurred.
    std::vector<std::uint8_t> mask(static_cast<std::size_t>(side) * side);
    const double centre = side / 2.0;
    const double radius = diameter * scale / 2.0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x + 0.5 - centre, y + 0.5 - centre);
            const double coverage = std::clamp(radius - distance + 0.5, 0.0, 1.0);
            mask[y * side + x] = static_cast<std::uint8_t>(std::lround(coverage * 255));
        }
    }
    blurMask(mask, side, blurRadius / 2 * scale);

    // Premultiplied ARGB, as cairo keeps it.
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side);
    cairo_surface_flush(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < side; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(data + y * stride);
        for (int x = 0; x < side; ++x) {
            const double alpha = mask[y * side + x] / 255.0 * color.alpha;
            auto channel = [alpha](double value) {
                return static_cast<std::uint32_t>(std::lround(value * alpha * 255));
            };
            row[x] = channel(1.0) << 24 | channel(color.red) << 16 | channel(color.green) << 8 |
                     channel(color.blue);
        }
    }
    cairo_surface_mark_dirty(surface);
    cairo_surface_set_device_scale(surface, scale, scale);

    OrbImage image;
    image.surface_ = surface;
    image.side_ = logicalSide;
    return image;
}

OrbImage::~OrbImage() {
    if (surface_ != nullptr) {
        cairo_surface_destroy(surface_);
    }
}

} // namespace ovel
