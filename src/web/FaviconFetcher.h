#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ovel {

// A decoded site icon: straight (non-premultiplied) RGBA, row by row.
struct FaviconImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;
    bool operator==(const FaviconImage&) const = default;
};

class FaviconFetcher {
public:
    virtual ~FaviconFetcher() = default;
    // Fetches and decodes the icon at `url`. The completion may run on any thread and gets
    // none for any failure.
    virtual void fetch(const std::string& url,
                       std::function<void(std::optional<FaviconImage>)> completion) = 0;
};

} // namespace ovel
