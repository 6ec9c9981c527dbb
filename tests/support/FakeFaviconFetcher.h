#pragma once

#include "web/FaviconFetcher.h"

#include <string>
#include <utility>
#include <vector>

namespace ovel::test {

// Records requests; the test answers them.
class FakeFaviconFetcher : public FaviconFetcher {
public:
    void fetch(const std::string& url,
               std::function<void(std::optional<FaviconImage>)> completion) override {
        requests.emplace_back(url, std::move(completion));
    }

    void answer(std::size_t index, std::optional<FaviconImage> image) {
        requests.at(index).second(std::move(image));
    }

    std::vector<std::pair<std::string, std::function<void(std::optional<FaviconImage>)>>> requests;
};

} // namespace ovel::test
