#include "web/Url.h"
#include "web/ContentPolicies.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

// What the engine reports is kept byte for byte, and parsing it again (a stored session or
// bookmark) gives the same text: the two must agree or a restart loses the page.
TEST(Url, ReportedAddressesAreKeptAsTheyAre) {
    struct Case {
        const char* text;
        const char* ruleKey; // null: no host
        std::optional<int> port;
    };
    const Case cases[] = {
        {"http://a.test/b?family=Roboto|Open+Sans", "a.test", std::nullopt},
        {"http://a.test/b?q=100%", "a.test", std::nullopt},
        {"http://a.test/b?q={x}", "a.test", std::nullopt},
        {"http://a.test/b?q=a\\b", "a.test", std::nullopt},
        {"http://a.test/%7e/./%41?q=%7e#%41", "a.test", std::nullopt},
        {"http://a.test/app#/route#anchor", "a.test", std::nullopt},
        {"http://[::1]:8080/", "[::1]", 8080},
        {"https://xn--bcher-kva.de/", "xn--bcher-kva.de", std::nullopt},
        {"about:blank", nullptr, std::nullopt},
        {"data:text/html,<b>hi</b>", nullptr, std::nullopt},
        {"file:///tmp/a%20b.html", nullptr, std::nullopt},
    };
    for (const Case& c : cases) {
        const auto reported = Url::fromEngine(c.text);
        ASSERT_TRUE(reported) << c.text;
        EXPECT_EQ(reported->absoluteString(), c.text);
        EXPECT_EQ(siteRuleKey(*reported),
                  c.ruleKey ? std::optional<std::string>(c.ruleKey) : std::nullopt)
            << c.text;
        EXPECT_EQ(reported->port(), c.port) << c.text;
        const auto stored = Url::parse(c.text);
        ASSERT_TRUE(stored) << c.text;
        EXPECT_EQ(stored->absoluteString(), c.text);
        EXPECT_EQ(stored->host(), reported->host()) << c.text;
    }
    EXPECT_FALSE(Url::fromEngine("no scheme"));
}

// Typed or stored text becomes what a browser's address bar makes of it.
TEST(Url, TypedTextIsEncodedNotRefused) {
    struct Case {
        const char* text;
        const char* address; // null: not an address
        std::optional<int> port;
    };
    const Case cases[] = {
        {"http://a.test/a b", "http://a.test/a%20b", std::nullopt},
        {"http://Bücher.de/ü", "http://xn--bcher-kva.de/%C3%BC", std::nullopt},
        {"https://例え.jp/", "https://xn--r8jz45g.jp/", std::nullopt},
        {"HTTP://A.TEST/X", "http://a.test/X", std::nullopt},
        {"http://a.test/{x}?q=<y>#\"z\"", "http://a.test/%7Bx%7D?q=%3Cy%3E#%22z%22", std::nullopt},
        {"data:text/html,a b", "data:text/html,a%20b", std::nullopt},
        {"http://a.test:8080/x", "http://a.test:8080/x", 8080},
        {"http://a.test:/x", "http://a.test/x", std::nullopt},
        {"http://[::1]:65535/", "http://[::1]:65535/", 65535},
        {"http://a.test:65536/", nullptr, std::nullopt},
        {"https://m+20.11:-8", nullptr, std::nullopt},
        {"http://[::1]:-1/", nullptr, std::nullopt},
        {"http://a.test:+8/", nullptr, std::nullopt},
        {"http://a.test:8x/", nullptr, std::nullopt},
        {"http://[::1/", nullptr, std::nullopt},
        {"http://bad host.test/", nullptr, std::nullopt},
        {"foo://a%3Bb/100%", "foo://a%3Bb/100%", std::nullopt},
        {"http://a%3Bb/", nullptr, std::nullopt},
        {"ovbl:/..//set{/", "ovbl:/..//set{/", std::nullopt},
        {"http://[::09 o\x87z.]:88/", nullptr, std::nullopt},
        {"http://[fe80::1%25eth0]/", nullptr, std::nullopt},
        {"https://a@b@c.test/", nullptr, std::nullopt},
        {"x:y//%%615", "x:y//%%615", std::nullopt},
        {"ht\ftp://a.test/100%", nullptr, std::nullopt},
        {"http://", nullptr, std::nullopt},
        {"a.test/x", nullptr, std::nullopt},
    };
    for (const Case& c : cases) {
        const auto url = Url::parse(c.text);
        ASSERT_EQ(url.has_value(), c.address != nullptr) << c.text;
        if (url) {
            EXPECT_EQ(url->absoluteString(), c.address);
            EXPECT_EQ(url->port(), c.port) << c.text;
            EXPECT_EQ(Url::parse(url->absoluteString()), url) << c.text;
        }
    }
}

} // namespace
} // namespace ovel
