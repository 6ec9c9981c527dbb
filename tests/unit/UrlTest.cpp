#include "web/Url.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

TEST(Url, APortIsDigitsOnly) {
    struct Case {
        const char* text;
        bool parses;
        std::optional<int> port;
    };
    const Case cases[] = {
        {"http://a.test:8080/x", true, 8080},        {"http://a.test:/x", true, std::nullopt},
        {"http://[::1]:65535/", true, 65535},        {"http://a.test:65536/", false, std::nullopt},
        {"https://m+20.11:-8", false, std::nullopt}, {"http://a.test:-0/", false, std::nullopt},
        {"http://[::1]:-1/", false, std::nullopt},   {"http://a.test:+8/", false, std::nullopt},
        {"http://a.test:8x/", false, std::nullopt},
    };
    for (const Case& c : cases) {
        const auto url = Url::parse(c.text);
        ASSERT_EQ(url.has_value(), c.parses) << c.text;
        if (url) {
            EXPECT_EQ(url->port(), c.port) << c.text;
        }
    }
}

} // namespace
} // namespace ovel
