#include "widgets/OrbImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <numbers>
#include <tuple>
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

// The rounded mean of a window of `width` values for every possible sum: a table lookup in place
// of a division for each pixel of each pass.
std::vector<std::uint8_t> meansOfSums(int width) {
    std::vector<std::uint8_t> means(static_cast<std::size_t>(255 * width + 1));
    for (std::size_t sum = 0; sum < means.size(); ++sum) {
        means[sum] = static_cast<std::uint8_t>((static_cast<int>(sum) + width / 2) / width);
    }
    return means;
}

void boxBlurLine(const std::uint8_t* in, std::uint8_t* out, int length, int step, int half,
                 const std::vector<std::uint8_t>& means) {
    // A running sum over [i - half, i + half]; outside the line reads as zero.
    int sum = 0;
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
        out[i * step] = means[static_cast<std::size_t>(sum)];
    }
}

void blurMask(std::vector<std::uint8_t>& mask, int side, double sigma) {
    const int half = boxWidth(sigma) / 2;
    const std::vector<std::uint8_t> means = meansOfSums(2 * half + 1);
    std::vector<std::uint8_t> scratch(mask.size());
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < side; ++y) {
            boxBlurLine(&mask[y * side], &scratch[y * side], side, 1, half, means);
        }
        for (int x = 0; x < side; ++x) {
            boxBlurLine(&scratch[x], &mask[x], side, side, half, means);
        }
    }
}

} // namespace

double OrbImage::margin(double blurRadius) {
    return std::ceil(blurRadius / 2 * 3);
}

OrbImage OrbImage::render(double diameter, double blurRadius, const LayerColor& color, int scale) {
    const double logicalSide = diameter + 2 * margin(blurRadius);
    const int side = static_cast<int>(std::ceil(logicalSide * scale));

    // The disc's coverage, anti-aliased, then blurred. Only pixels within half a pixel of the
    // rim are partly covered; the rest are wholly in or out, which saves a square root each.
    std::vector<std::uint8_t> mask(static_cast<std::size_t>(side) * side);
    const double centre = side / 2.0;
    const double radius = diameter * scale / 2.0;
    const double fullyInside = std::max(radius - 0.5, 0.0) * std::max(radius - 0.5, 0.0);
    const double fullyOutside = (radius + 0.5) * (radius + 0.5);
    for (int y = 0; y < side; ++y) {
        const double dy = y + 0.5 - centre;
        for (int x = 0; x < side; ++x) {
            const double dx = x + 0.5 - centre;
            const double squared = dx * dx + dy * dy;
            std::uint8_t value = 0;
            if (squared <= fullyInside) {
                value = 255;
            } else if (squared < fullyOutside) {
                const double coverage = std::clamp(radius - std::hypot(dx, dy) + 0.5, 0.0, 1.0);
                value = static_cast<std::uint8_t>(std::lround(coverage * 255));
            }
            mask[y * side + x] = value;
        }
    }
    blurMask(mask, side, blurRadius / 2 * scale);

    // Premultiplied ARGB, as cairo keeps it: one pixel value for each of the mask's 256 levels.
    std::array<std::uint32_t, 256> pixels{};
    for (int level = 0; level < 256; ++level) {
        const double alpha = level / 255.0 * color.alpha;
        auto channel = [alpha](double value) {
            return static_cast<std::uint32_t>(std::lround(value * alpha * 255));
        };
        pixels[level] = channel(1.0) << 24 | channel(color.red) << 16 | channel(color.green) << 8 |
                        channel(color.blue);
    }
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side);
    cairo_surface_flush(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < side; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(data + y * stride);
        for (int x = 0; x < side; ++x) {
            row[x] = pixels[mask[y * side + x]];
        }
    }
    cairo_surface_mark_dirty(surface);
    cairo_surface_set_device_scale(surface, scale, scale);

    OrbImage image;
    image.surface_ = surface;
    image.side_ = logicalSide;
    return image;
}

std::shared_ptr<const OrbImage> OrbImage::shared(double diameter, double blurRadius,
                                                 const LayerColor& color, int scale) {
    // The window, the sheets and every open internal page draw the same few images. An image
    // stays while someone holds it; the ones nobody holds go when a new one is made (a theme
    // or scale change), so a page opened again in the same theme finds its images ready.
    using Key = std::tuple<double, double, double, double, double, double, int>;
    static std::map<Key, std::shared_ptr<const OrbImage>> images;
    const Key key{diameter, blurRadius, color.red, color.green, color.blue, color.alpha, scale};
    if (const auto found = images.find(key); found != images.end()) {
        return found->second;
    }
    std::erase_if(images, [](const auto& entry) { return entry.second.use_count() == 1; });
    auto image = std::make_shared<const OrbImage>(render(diameter, blurRadius, color, scale));
    images.emplace(key, image);
    return image;
}

OrbImage::~OrbImage() {
    if (surface_ != nullptr) {
        cairo_surface_destroy(surface_);
    }
}

} // namespace ovel
