#include "web/FilterListConverter.h"
#include "web/FilterListFiles.h"

#include <glib.h>
#include <glib/gstdio.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace ovel {
namespace {

using nlohmann::json;

ConvertedFilterList convert(std::vector<std::string_view> lines, std::string_view leading = "[]") {
    std::string list;
    for (std::string_view line : lines) {
        list.append(line).append("\n");
    }
    const std::string_view lists[] = {list};
    return convertFilterLists(lists, leading);
}

// The url-filter of a rule that names a host, and the resource types of a filter without any.
const std::string host = R"(^[^:/]+://([^/]+\\.)?)";
const std::string requests =
    R"("resource-type":["script","image","style-sheet","fetch","media","font","websocket","ping","other"])";
const std::string frames = R"("resource-type":["document"],"load-context":["child-frame"])";

std::string rule(const std::string& trigger, const std::string& action = "block") {
    return R"({"trigger":{)" + trigger + R"(},"action":{"type":")" + action + R"("}})";
}
// A filter without types: one rule for a page's requests, one for its frames.
std::string requestsAndFrames(const std::string& trigger, const std::string& action = "block") {
    return rule(trigger + "," + requests, action) + "," + rule(trigger + "," + frames, action);
}

TEST(FilterListConverter, EachSyntaxOfTheListsAsWebKitRules) {
    struct Case {
        const char* line;
        std::string rules;
    };
    const Case cases[] = {
        {"||doubleclick.net^", rule(R"("url-filter":")" + host + R"(doubleclick\\.net[/:]")")},
        {"|https://a.pr-cy.ru^$third-party",
         requestsAndFrames(
             R"("url-filter":"^https://a\\.pr-cy\\.ru([^a-zA-Z0-9_.%-].*)?$","load-type":["third-party"])")},
        {".com/b.js|", requestsAndFrames(R"("url-filter":"\\.com/b\\.js$")")},
        {"||ebay.com^*/customer_image_service?",
         requestsAndFrames(R"("url-filter":")" + host +
                           R"(ebay\\.com[/:].*/customer_image_service\\?")")},
        {"||bit.ly^$script,domain=dailyuploads.net|freeshot.live",
         rule(
             R"("url-filter":")" + host +
             R"(bit\\.ly[/:]","resource-type":["script"],"if-domain":["*dailyuploads.net","*freeshot.live"])")},
        {"/earn.php?z=$popup,subdocument",
         rule(R"("url-filter":"/earn\\.php\\?z=","resource-type":["popup"])") + "," +
             rule(R"("url-filter":"/earn\\.php\\?z=",)" + frames)},
        {"/ajax/banners?page=$~third-party,xmlhttprequest",
         rule(
             R"("url-filter":"/ajax/banners\\?page=","resource-type":["fetch"],"load-type":["first-party"])")},
        {"||accecmtrk.com^$document",
         rule(R"("url-filter":")" + host + R"(accecmtrk\\.com[/:]","resource-type":["document"])")},
        {"$websocket,domain=pornhub.com|redtube.com",
         rule(
             R"("url-filter":".*","resource-type":["websocket"],"if-domain":["*pornhub.com","*redtube.com"])")},
        {"/ad_counter.aspx$ping",
         rule(R"("url-filter":"/ad_counter\\.aspx","resource-type":["ping"])")},
        {"/BannerAd.$image,match-case",
         rule(
             R"("url-filter":"/BannerAd\\.","url-filter-is-case-sensitive":true,"resource-type":["image"])")},
        {R"(/\/ads\/[0-9]+\.gif/$image)",
         rule(R"("url-filter":"\\/ads\\/[0-9]+\\.gif","resource-type":["image"])")},
        // Exceptions.
        {"@@||wpfc.ml/b.gif$image,domain=holybooks.com",
         rule(R"("url-filter":")" + host +
                  R"(wpfc\\.ml/b\\.gif","resource-type":["image"],"if-domain":["*holybooks.com"])",
              "ignore-previous-rules")},
        {"@@||aone-soft.com/style/images/ad2.jpg",
         requestsAndFrames(R"("url-filter":")" + host +
                               R"(aone-soft\\.com/style/images/ad2\\.jpg")",
                           "ignore-previous-rules")},
        {"@@||yibada.com^$generichide",
         rule(R"("url-filter":".*","if-domain":["*yibada.com"])", "ignore-previous-rules")},
        {"@@||optout.networkadvertising.org^$document",
         rule(R"("url-filter":".*","if-domain":["*optout.networkadvertising.org"])",
              "ignore-previous-rules")},
        // Element hiding.
        {"##.ad-banner", R"({"trigger":{"url-filter":".*"},"action":{"type":"css-display-none",
                            "selector":".ad-banner"}})"},
        {"example.org,Example.com##.sponsor",
         R"({"trigger":{"url-filter":".*","if-domain":["*example.com","*example.org"]},
             "action":{"type":"css-display-none","selector":".sponsor"}})"},
        {"~example.com##.promo", R"({"trigger":{"url-filter":".*","unless-domain":["*example.com"]},
                                    "action":{"type":"css-display-none","selector":".promo"}})"},
    };
    for (const Case& c : cases) {
        const ConvertedFilterList converted = convert({c.line});
        EXPECT_EQ(json::parse(converted.json), json::parse("[" + c.rules + "]")) << c.line;
        EXPECT_EQ(converted.ruleCount, json::parse(converted.json).size()) << c.line;
        EXPECT_EQ(converted.filterCount, 1u) << c.line;
    }
}

TEST(FilterListConverter, WhatWebKitCannotExpressIsSkippedWholeAndCounted) {
    struct Case {
        const char* line;
        SkippedFilter reason;
    };
    const Case cases[] = {
        {"$csp=script-src 'self' data: 'unsafe-inline',domain=thumbs.pro",
         SkippedFilter::UnsupportedOption},
        {"||pcoptimizedsettings.com/wp-content/plugins/koko-analytics/"
         "$script,redirect=noop.js,important",
         SkippedFilter::UnsupportedOption},
        {"example.com,x.com##+js(set, Navigator.prototype.globalPrivacyControl, false)",
         SkippedFilter::Scriptlet},
        {"kaufland.*#?#.recommender-wrapper:-abp-contains(Gesponsert)", SkippedFilter::Scriptlet},
        {"example.com##.ad:has-text(Sponsored)", SkippedFilter::ExtendedSelector},
        {"##p + div:has(.post:has([href^=\"https://www.semrush.com\"]))",
         SkippedFilter::ExtendedSelector},
        {R"(/(https?:\/\/)104\.154\..{100,}/)", SkippedFilter::RegularExpression},
        {R"(/^https?:\/\/[a-z]{8,15}\.(com|net)\//$script)", SkippedFilter::RegularExpression},
        {"||ads.example^$domain=example.com|~shop.example.com", SkippedFilter::Domains},
        {"||ads.example^$domain=~google.*", SkippedFilter::Domains},
        {"*$third-party", SkippedFilter::MatchesEverything},
        {"@@||example.com/page^$generichide", SkippedFilter::PageException},
        {"/реклама/баннер.", SkippedFilter::NonAscii},
        {"||ads.example^$object", SkippedFilter::UnsupportedOption},
    };
    for (const Case& c : cases) {
        const ConvertedFilterList converted = convert({c.line});
        EXPECT_EQ(converted.ruleCount, 0u) << c.line;
        EXPECT_EQ(converted.json, "[]") << c.line;
        EXPECT_EQ(converted.skippedCount(c.reason), 1u) << c.line << " " << label(c.reason);
    }
}

// One line per rule: the action, its url-filter and the sites it is or is not for.
std::string summary(const ConvertedFilterList& converted) {
    std::string text;
    for (const json& rule : json::parse(converted.json)) {
        const json& trigger = rule["trigger"];
        text += rule["action"]["type"].get<std::string>() + " " +
                trigger["url-filter"].get<std::string>().substr(0, 40);
        for (const char* sites : {"if-domain", "unless-domain"}) {
            if (trigger.contains(sites)) {
                text += std::string(" ") + sites + "=" + trigger[sites].dump();
            }
        }
        if (rule["action"].contains("selector")) {
            text += " " + rule["action"]["selector"].get<std::string>();
        }
        text += "\n";
    }
    return text;
}

// WebKit's ignore-previous-rules cancels whatever came before it for the same load: hiding
// comes first, so a site's generic-hiding exception spares its own hiding rules and its
// blocking, and blocking comes before the exceptions that let requests through.
TEST(FilterListConverter, ExceptionsFollowWhatTheyExcept) {
    const ConvertedFilterList converted =
        convert({"||bad.example^$important", "@@||ads.example/ok.js$script", "||ads.example^",
                 "@@||news.example^$generichide", "example.com##.local-ad", "##.ad",
                 "news.example#@#.ad", "@@||shop.example^$elemhide", "@@||safe.example^$document",
                 "||gone.example^", "||gone.example^$badfilter", "example.com#@#.gone",
                 "example.com,sub.example.org##.gone", "sub.example.com#@#.local-ad"},
                R"([{"trigger":{"url-filter":"builtin"},"action":{"type":"block"}}])");
    EXPECT_EQ(summary(converted),
              "css-display-none .* unless-domain=[\"*news.example\"] .ad\n"
              "ignore-previous-rules .* if-domain=[\"*news.example\"]\n"
              "css-display-none .* if-domain=[\"*sub.example.org\"] .gone\n"
              "ignore-previous-rules .* if-domain=[\"*shop.example\"]\n"
              "block builtin\n"
              "block ^[^:/]+://([^/]+\\.)?ads\\.example[/:]\n"
              "ignore-previous-rules ^[^:/]+://([^/]+\\.)?ads\\.example/ok\\.js\n"
              "block ^[^:/]+://([^/]+\\.)?bad\\.example[/:]\n"
              "ignore-previous-rules .* if-domain=[\"*safe.example\"]\n");
    EXPECT_EQ(converted.skippedCount(SkippedFilter::HidingException), 1u)
        << "hiding on example.com but not on one of its subdomains";
    EXPECT_EQ(converted.filterCount, 14u);
}

TEST(FilterListFiles, EachListFromTheFirstFolderThatHasItWholeOrNotAtAll) {
    gchar* root = g_dir_make_tmp("ovel-lists-XXXXXX", nullptr);
    const std::string firefox = std::string(root) + "/firefox";
    const std::string chromium = std::string(root) + "/chromium";
    g_mkdir(firefox.c_str(), 0700);
    g_mkdir(chromium.c_str(), 0700);
    auto write = [](const std::string& path, const std::string& text) {
        ASSERT_TRUE(g_file_set_contents(path.c_str(), text.data(), gssize(text.size()), nullptr));
    };
    EXPECT_EQ(readFilterLists({firefox, chromium}).status, FilterListFiles::Status::Missing);

    write(chromium + "/easylist.txt",
          "[Adblock Plus 2.0]\n! Last modified: 12 Nov 2024 10:00 UTC\n||ads.example^\n");
    write(firefox + "/easyprivacy.txt", "[Adblock Plus 1.1]\n! Last modified: %timestamp%\n");
    const FilterListFiles lists = readFilterLists({firefox, chromium});
    ASSERT_EQ(lists.status, FilterListFiles::Status::Read);
    ASSERT_EQ(lists.texts.size(), 2u);
    EXPECT_NE(lists.texts[0].find("||ads.example^"), std::string::npos);
    EXPECT_EQ(lists.date, Date::fromUnixSeconds(1731405600)) << "the older of the two";
    EXPECT_EQ(lists.contentHash.size(), 16u);
    EXPECT_EQ(readFilterLists({firefox, chromium}).contentHash, lists.contentHash);

    write(firefox + "/easylist.txt", "[Adblock Plus 2.0]\n||ads.example^\n||tracker.example");
    EXPECT_EQ(readFilterLists({firefox, chromium}).status, FilterListFiles::Status::Unreadable)
        << "cut short inside a line";
    write(firefox + "/easylist.txt", "[Adblock Plus 2.0]\n||other.example^\n");
    EXPECT_NE(readFilterLists({firefox, chromium}).contentHash, lists.contentHash);
    write(firefox + "/easylist.txt", "<html>Not Found</html>\n");
    EXPECT_EQ(readFilterLists({firefox, chromium}).status, FilterListFiles::Status::Unreadable);

    for (const std::string& folder : {firefox, chromium}) {
        for (const char* name : {"/easylist.txt", "/easyprivacy.txt"}) {
            g_remove((folder + name).c_str());
        }
        g_rmdir(folder.c_str());
    }
    g_rmdir(root);
    g_free(root);
}

} // namespace
} // namespace ovel
