#include "webkit/FaviconDecoder.h"

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace ovel {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 8> pngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

std::uint16_t le16(Bytes b, std::size_t at) {
    return std::uint16_t(b[at] | b[at + 1] << 8);
}
std::uint32_t le32(Bytes b, std::size_t at) {
    return std::uint32_t(b[at]) | std::uint32_t(b[at + 1]) << 8 | std::uint32_t(b[at + 2]) << 16 |
           std::uint32_t(b[at + 3]) << 24;
}
std::uint32_t be32(Bytes b, std::size_t at) {
    return std::uint32_t(b[at]) << 24 | std::uint32_t(b[at + 1]) << 16 |
           std::uint32_t(b[at + 2]) << 8 | std::uint32_t(b[at + 3]);
}
std::uint16_t be16(Bytes b, std::size_t at) {
    return std::uint16_t(b[at] << 8 | b[at + 1]);
}

bool startsWith(Bytes data, std::initializer_list<std::uint8_t> prefix) {
    return data.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), data.begin());
}

bool isPng(Bytes data) {
    return data.size() >= pngSignature.size() &&
           std::equal(pngSignature.begin(), pngSignature.end(), data.begin());
}

bool isIco(Bytes data) {
    return startsWith(data, {0, 0, 1, 0}) && data.size() >= 6;
}

bool fits(std::uint64_t width, std::uint64_t height) {
    return width > 0 && height > 0 && width <= FaviconDecoder::maxSourceSide &&
           height <= FaviconDecoder::maxSourceSide;
}

// The stored size, read from the header before anything is decoded, so that a small file
// claiming a huge image is refused before memory is reserved for it.
bool storedSizeFits(const char* type, Bytes data) {
    const std::string_view format = type;
    if (format == "png") {
        return data.size() >= 24 && fits(be32(data, 16), be32(data, 20));
    }
    if (format == "gif") {
        return data.size() >= 10 && fits(le16(data, 6), le16(data, 8));
    }
    if (format == "bmp") {
        if (data.size() < 26) {
            return false;
        }
        const auto height = static_cast<std::int32_t>(le32(data, 22));
        return fits(le32(data, 18), static_cast<std::uint64_t>(std::abs(std::int64_t(height))));
    }
    if (format == "jpeg") {
        // The first start-of-frame marker holds the size.
        std::size_t at = 2;
        while (at + 4 <= data.size() && data[at] == 0xff) {
            const std::uint8_t marker = data[at + 1];
            const std::size_t length = be16(data, at + 2);
            const bool startOfFrame = marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 &&
                                      marker != 0xc8 && marker != 0xcc;
            if (startOfFrame) {
                return at + 9 <= data.size() && fits(be16(data, at + 7), be16(data, at + 5));
            }
            at += 2 + length;
        }
        return false;
    }
    // ICO images are at most 256 pixels a side by the format; the size check during decoding
    // still guards them.
    return true;
}

struct SizeGuard {
    bool refused = false;
};

void onSizePrepared(GdkPixbufLoader* loader, int width, int height, SizeGuard* guard) {
    if (!fits(width < 0 ? 0 : width, height < 0 ? 0 : height)) {
        guard->refused = true;
        gdk_pixbuf_loader_set_size(loader, 1, 1);
        return;
    }
    const int side = FaviconDecoder::maxIconSide;
    if (width > side || height > side) {
        const double scale = std::min(double(side) / width, double(side) / height);
        gdk_pixbuf_loader_set_size(loader, std::max(1, int(std::lround(width * scale))),
                                   std::max(1, int(std::lround(height * scale))));
    }
}

std::optional<FaviconImage> toImage(GdkPixbuf* pixbuf) {
    if (gdk_pixbuf_get_bits_per_sample(pixbuf) != 8 ||
        gdk_pixbuf_get_colorspace(pixbuf) != GDK_COLORSPACE_RGB) {
        return std::nullopt;
    }
    const int width = gdk_pixbuf_get_width(pixbuf);
    const int height = gdk_pixbuf_get_height(pixbuf);
    const int channels = gdk_pixbuf_get_n_channels(pixbuf);
    const bool alpha = gdk_pixbuf_get_has_alpha(pixbuf);
    if (width <= 0 || height <= 0 || channels != (alpha ? 4 : 3)) {
        return std::nullopt;
    }
    const int stride = gdk_pixbuf_get_rowstride(pixbuf);
    const guint8* pixels = gdk_pixbuf_read_pixels(pixbuf);
    FaviconImage image;
    image.width = width;
    image.height = height;
    image.rgba.resize(std::size_t(width) * std::size_t(height) * 4);
    auto* out = image.rgba.data();
    for (int y = 0; y < height; ++y) {
        const guint8* row = pixels + std::size_t(y) * std::size_t(stride);
        for (int x = 0; x < width; ++x) {
            const guint8* pixel = row + std::size_t(x) * std::size_t(channels);
            // GdkPixbuf keeps straight (non-premultiplied) alpha, as FaviconImage does.
            *out++ = pixel[0];
            *out++ = pixel[1];
            *out++ = pixel[2];
            *out++ = alpha ? pixel[3] : 0xff;
        }
    }
    return image;
}

std::optional<FaviconImage> decodeAs(const char* type, Bytes data) {
    if (data.empty() || !storedSizeFits(type, data)) {
        return std::nullopt;
    }
    auto loader =
        GObjectRef<GdkPixbufLoader>::adopt(gdk_pixbuf_loader_new_with_type(type, nullptr));
    if (!loader) {
        return std::nullopt;
    }
    SizeGuard guard;
    GSignalConnections signals;
    signals.connect(loader.get(), "size-prepared", G_CALLBACK(&onSizePrepared), &guard);
    const bool written = gdk_pixbuf_loader_write(loader.get(), data.data(), data.size(), nullptr);
    // Closed in every case: a loader left open complains when it is finalised.
    const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr);
    signals.disconnectAll();
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!written || !closed || guard.refused || pixbuf == nullptr) {
        return std::nullopt;
    }
    return toImage(pixbuf);
}

struct IcoEntry {
    int width;
    int height;
    int bitCount;
    Bytes image;
    Bytes directoryEntry;
};

// GdkPixbuf's ICO loader refuses PNG-compressed images and, given several images, may pick a
// small one: the directory is read here, the largest image first, a PNG one decoded as PNG and a
// BMP one handed to the ICO loader as a file of its own.
std::optional<FaviconImage> decodeIco(Bytes data) {
    const std::size_t count = le16(data, 4);
    if (count == 0 || data.size() < 6 + 16 * count) {
        return std::nullopt;
    }
    std::vector<IcoEntry> entries;
    for (std::size_t i = 0; i < count; ++i) {
        const auto entry = data.subspan(6 + 16 * i, 16);
        const std::uint64_t size = le32(entry, 8);
        const std::uint64_t offset = le32(entry, 12);
        if (size == 0 || offset + size > data.size()) {
            continue;
        }
        // A stored 0 means 256.
        entries.push_back({entry[0] == 0 ? 256 : entry[0], entry[1] == 0 ? 256 : entry[1],
                           le16(entry, 6), data.subspan(offset, size), entry});
    }
    std::stable_sort(entries.begin(), entries.end(), [](const IcoEntry& a, const IcoEntry& b) {
        const long areaA = long(a.width) * a.height;
        const long areaB = long(b.width) * b.height;
        return areaA != areaB ? areaA > areaB : a.bitCount > b.bitCount;
    });
    for (const auto& entry : entries) {
        std::optional<FaviconImage> image;
        if (isPng(entry.image)) {
            image = decodeAs("png", entry.image);
        } else {
            std::vector<std::uint8_t> single{0, 0, 1, 0, 1, 0};
            single.insert(single.end(), entry.directoryEntry.begin(),
                          entry.directoryEntry.begin() + 12);
            const std::uint32_t offset = 6 + 16;
            for (int shift = 0; shift < 32; shift += 8) {
                single.push_back(std::uint8_t(offset >> shift));
            }
            single.insert(single.end(), entry.image.begin(), entry.image.end());
            image = decodeAs("ico", single);
        }
        if (image) {
            return image;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<FaviconImage> FaviconDecoder::decode(std::span<const std::uint8_t> data) {
    if (data.empty() || data.size() > maxBytes) {
        return std::nullopt;
    }
    if (isIco(data)) {
        return decodeIco(data);
    }
    if (isPng(data)) {
        return decodeAs("png", data);
    }
    if (startsWith(data, {'G', 'I', 'F', '8'})) {
        return decodeAs("gif", data);
    }
    if (startsWith(data, {0xff, 0xd8, 0xff})) {
        return decodeAs("jpeg", data);
    }
    if (startsWith(data, {'B', 'M'})) {
        return decodeAs("bmp", data);
    }
    return std::nullopt;
}

} // namespace ovel
