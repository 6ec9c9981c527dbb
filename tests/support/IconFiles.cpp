#include "support/IconFiles.h"

#include <string_view>

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
void put32be(Bytes& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(std::uint8_t(v >> shift));
    }
}

std::uint32_t crc32(const std::uint8_t* data, std::size_t size) {
    std::uint32_t crc = 0xffffffffu;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
        }
    }
    return ~crc;
}

void pngChunk(Bytes& out, std::string_view type, const Bytes& data) {
    put32be(out, std::uint32_t(data.size()));
    Bytes typed(type.begin(), type.end());
    typed.insert(typed.end(), data.begin(), data.end());
    out.insert(out.end(), typed.begin(), typed.end());
    put32be(out, crc32(typed.data(), typed.size()));
}

// A zlib stream of stored (uncompressed) deflate blocks.
Bytes zlibStored(const Bytes& raw) {
    Bytes out{0x78, 0x01};
    std::size_t at = 0;
    do {
        const std::size_t length = std::min<std::size_t>(raw.size() - at, 65535);
        out.push_back(at + length == raw.size() ? 1 : 0);
        put16le(out, std::uint32_t(length));
        put16le(out, std::uint32_t(~length & 0xffff));
        out.insert(out.end(), raw.begin() + long(at), raw.begin() + long(at + length));
        at += length;
    } while (at < raw.size());
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (std::uint8_t byte : raw) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    put32be(out, b << 16 | a);
    return out;
}

} // namespace

Bytes pngFile(int width, int height, Rgba colour) {
    Bytes out{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    Bytes header;
    put32be(header, std::uint32_t(width));
    put32be(header, std::uint32_t(height));
    header.insert(header.end(), {8, 6, 0, 0, 0});
    pngChunk(out, "IHDR", header);
    Bytes raw;
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);
        for (int x = 0; x < width; ++x) {
            raw.insert(raw.end(), colour.begin(), colour.end());
        }
    }
    pngChunk(out, "IDAT", zlibStored(raw));
    pngChunk(out, "IEND", {});
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
