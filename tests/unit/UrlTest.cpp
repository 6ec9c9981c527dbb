#include "web/Url.h"
#include "web/ContentPolicies.h"
#include "web/ListSplices.h"

#include <gtest/gtest.h>
#include <string>

namespace ovel::test {
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

struct Item {
    std::string id;
    int value = 0;
    bool operator==(const Item&) const = default;
};

std::vector<Item> items(const std::string& ids) {
    std::vector<Item> list;
    for (char id : ids) {
        list.push_back({std::string(1, id), 0});
    }
    return list;
}

// Applies the splices to `before` as a list model would and returns the result.
std::vector<Item> applied(std::vector<Item> list, const std::vector<Item>& after,
                          const std::vector<ListSplice>& splices) {
    for (const ListSplice& s : splices) {
        list.erase(list.begin() + long(s.position), list.begin() + long(s.position + s.removed));
        list.insert(list.begin() + long(s.position), after.begin() + long(s.addedFrom),
                    after.begin() + long(s.addedFrom + s.addedCount));
    }
    return list;
}

TEST(ListSplices, TurnTheOldListIntoTheNewWithFewSplices) {
    std::vector<Item> retitled = items("abc");
    retitled[1].value = 1;
    const struct {
        std::vector<Item> before;
        std::vector<Item> after;
        std::vector<ListSplice> splices;
    } cases[] = {
        {items("abc"), items("abc"), {}},
        {items("abc"), items("xabc"), {{0, 0, 0, 1}}},
        // A visit at the front pushes the oldest out at the back.
        {items("abcd"), items("xabc"), {{0, 0, 0, 1}, {4, 1, 4, 0}}},
        {items("abcd"), items(""), {{0, 4, 0, 0}}},
        {items(""), items("ab"), {{0, 0, 0, 2}}},
        {items("abcd"), items("ad"), {{1, 2, 1, 0}}},
        {items("abc"), retitled, {{1, 1, 1, 1}}},
        {items("abc"), items("cab"), {{0, 2, 0, 0}, {1, 0, 1, 2}}},
        {items("abc"), items("bca"), {{0, 1, 0, 0}, {2, 0, 2, 1}}},
        {items("abc"), items("xyz"), {{0, 3, 0, 3}}},
    };
    for (const auto& c : cases) {
        const auto splices = listSplices(c.before, c.after);
        EXPECT_EQ(splices, c.splices);
        EXPECT_EQ(applied(c.before, c.after, splices), c.after);
    }
}

} // namespace
} // namespace ovel::test
