#include "webkit/SoupFaviconFetcher.h"
#include "support/IconFiles.h"
#include "support/LoopbackServer.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

struct Fetched {
    bool done = false;
    std::optional<FaviconImage> image;
};

std::shared_ptr<Fetched> startFetch(SoupFaviconFetcher& fetcher, const std::string& url) {
    auto fetched = std::make_shared<Fetched>();
    fetcher.fetch(url, [fetched](std::optional<FaviconImage> image) {
        fetched->image = std::move(image);
        fetched->done = true;
    });
    return fetched;
}

LoopbackServer::Response iconResponse(const Bytes& file, const char* type) {
    LoopbackServer::Response response;
    response.contentType = type;
    response.body.assign(file.begin(), file.end());
    return response;
}

class SoupFaviconFetcherTest : public ::testing::Test {
protected:
    void SetUp() override { fetcher->setTestOrigin("http", server.port()); }

    LoopbackServer server;
    std::unique_ptr<SoupFaviconFetcher> fetcher = std::make_unique<SoupFaviconFetcher>();
};

TEST_F(SoupFaviconFetcherTest, DecodesAnIcoHoldingAPng) {
    server.serve("/favicon.ico",
                 iconResponse(icoFile({{16, 16, icoBmpImage(16, 16, {0, 255, 0, 255})},
                                       {32, 32, pngFile(32, 32, {10, 20, 30, 200})}}),
                              "image/vnd.microsoft.icon"));
    // The address as the tab builds it: https, no port. The test origin sends it to the
    // loopback server.
    auto fetched = startFetch(*fetcher, "https://127.0.0.1/favicon.ico");
    ASSERT_TRUE(waitUntil([&] { return fetched->done; }));
    ASSERT_TRUE(fetched->image.has_value());
    EXPECT_EQ(fetched->image->width, 32);
    EXPECT_EQ(fetched->image->height, 32);
    EXPECT_EQ(
        std::vector<std::uint8_t>(fetched->image->rgba.begin(), fetched->image->rgba.begin() + 4),
        (std::vector<std::uint8_t>{10, 20, 30, 200}));
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].method, "GET");
    EXPECT_EQ(server.requests()[0].path, "/favicon.ico");
}

// What the decoder refuses is the decoder's tests' to list; here, what the fetcher itself must
// refuse: an error status even with an icon, a body too large, a cut transfer, and addresses it
// cannot fetch.
TEST_F(SoupFaviconFetcherTest, AnyFailureGivesNone) {
    server.serve("/huge.ico", iconResponse(Bytes(2 * 1024 * 1024, 0), "image/x-icon"));
    LoopbackServer::Response errorWithIcon = iconResponse(pngFile(8, 8, {1, 2, 3, 4}), "image/png");
    errorWithIcon.status = 500;
    server.serve("/error.png", errorWithIcon);
    const auto icon = icoFile({{32, 32, pngFile(32, 32, {1, 2, 3, 4})}});
    server.serveBrokenBody("/cut.ico", "image/x-icon",
                           std::string(icon.begin(), icon.begin() + long(icon.size() / 2)),
                           icon.size());

    SoupFaviconFetcher direct;
    const std::pair<SoupFaviconFetcher*, std::string> cases[] = {
        {fetcher.get(), "https://127.0.0.1/huge.ico"},
        {fetcher.get(), "https://127.0.0.1/error.png"},
        {fetcher.get(), "https://127.0.0.1/cut.ico"},
        {&direct, "http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()) + "/x.ico"},
        {&direct, "not a url"},
        {&direct, "ftp://127.0.0.1/favicon.ico"},
        {&direct, ""},
    };
    for (const auto& [fetcherUsed, url] : cases) {
        auto fetched = startFetch(*fetcherUsed, url);
        ASSERT_TRUE(waitUntil([&] { return fetched->done; })) << url;
        EXPECT_FALSE(fetched->image.has_value()) << url;
    }
}

TEST_F(SoupFaviconFetcherTest, FetchInFlightEndsWithNoneWhenTheFetcherGoes) {
    server.serveNothing("/favicon.ico");
    auto fetched = startFetch(*fetcher, "https://127.0.0.1/favicon.ico");
    ASSERT_TRUE(waitUntil([&] { return server.requestCount("/favicon.ico") == 1; }));
    fetcher.reset();
    ASSERT_TRUE(waitUntil([&] { return fetched->done; }));
    EXPECT_FALSE(fetched->image.has_value());
}

} // namespace
} // namespace ovel::test
