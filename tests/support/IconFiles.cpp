#include "support/IconFiles.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace ovel::test {

namespace {

void put16le(Bytes& out, std::uint32_t v) {
    out.push_back(std::uint8_t(v));
    out.push_back(std::uint8_t(v >> 8));
}
void put32le(Bytes& out, std::uint32_t v) {
    put16le(out, v & 0xffff);
    put16le(out, v >> 16);
}
} // namespace

Bytes pngFile(int width, int height, Rgba colour) {
    GdkPixbuf* image = gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, width, height);
    gdk_pixbuf_fill(image, std::uint32_t(colour[0]) << 24 | std::uint32_t(colour[1]) << 16 |
                               std::uint32_t(colour[2]) << 8 | colour[3]);
    gchar* buffer = nullptr;
    gsize size = 0;
    Bytes out;
    if (gdk_pixbuf_save_to_buffer(image, &buffer, &size, "png", nullptr, nullptr)) {
        out.assign(buffer, buffer + size);
    }
    g_free(buffer);
    g_object_unref(image);
    return out;
}

Bytes icoBmpImage(int width, int height, Rgba colour) {
    Bytes out;
    put32le(out, 40);
    put32le(out, std::uint32_t(width));
    put32le(out, std::uint32_t(height * 2));
    put16le(out, 1);
    put16le(out, 32);
    for (int i = 0; i < 6; ++i) {
        put32le(out, 0);
    }
    for (int i = 0; i < width * height; ++i) {
        out.insert(out.end(), {colour[2], colour[1], colour[0], colour[3]});
    }
    const int maskRow = (width + 31) / 32 * 4;
    out.insert(out.end(), std::size_t(maskRow * height), 0);
    return out;
}

Bytes icoFile(const std::vector<IcoImage>& images) {
    Bytes out;
    put16le(out, 0);
    put16le(out, 1);
    put16le(out, std::uint32_t(images.size()));
    std::uint32_t offset = 6 + 16 * std::uint32_t(images.size());
    for (const auto& image : images) {
        out.push_back(std::uint8_t(image.width % 256));
        out.push_back(std::uint8_t(image.height % 256));
        out.push_back(0);
        out.push_back(0);
        put16le(out, 1);
        put16le(out, 32);
        put32le(out, std::uint32_t(image.data.size()));
        put32le(out, offset);
        offset += std::uint32_t(image.data.size());
    }
    for (const auto& image : images) {
        out.insert(out.end(), image.data.begin(), image.data.end());
    }
    return out;
}

} // namespace ovel::test
