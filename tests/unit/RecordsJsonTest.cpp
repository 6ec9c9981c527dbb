#include "records/RecordsJson.h"

#include <gtest/gtest.h>

#include <climits>
#include <nlohmann/json.hpp>

namespace ovel {
namespace {

using namespace std::string_literals;

using nlohmann::json;

TEST(RecordsJson, WritesTheStoredMemberNamesAndOmitsAbsentOptionals) {
    const json session = json::parse(encodeSession(
        SessionStore{1, {TabStore{"https://a.test/", true}, TabStore{std::nullopt, false}}}));
    EXPECT_EQ(session, json::parse(R"({"selectedIndex":1,"tabs":[{"url":"https://a.test/",
              "isPinned":true},{"isPinned":false}]})"));

    const json history = json::parse(encodeHistory({HistoryEntry{
        "0A1B2C3D-0000-4000-8000-00000000000F", "T", "https://a.test/", Date{790000000.25}}}));
    EXPECT_EQ(history[0]["visitedAt"], 790000000.25) << "dates are seconds since 2001";
    EXPECT_EQ(history[0]["id"], "0A1B2C3D-0000-4000-8000-00000000000F");

    const json rules = json::parse(encodeSitePermissions(
        {{"maps.test", SitePermissionRule{PermissionSetting::Allow, PermissionSetting::Ask,
                                          PermissionSetting::Block, PermissionSetting::Ask}},
         {"ads.test", SitePermissionRule{.allowAds = true}}}));
    EXPECT_EQ(rules, json::parse(R"({"maps.test":{"camera":"allow","microphone":"ask",
              "location":"block","notifications":"ask"},"ads.test":{"camera":"ask",
              "microphone":"ask","location":"ask","notifications":"ask","allowAds":true}})"));

    const json snapshots = json::parse(encodeWorkspaceSnapshots(
        {WorkspaceSnapshot{"ID", "Work", Date{5}, 9, {TabStore{std::nullopt, true}}}}));
    EXPECT_EQ(snapshots, json::parse(R"([{"id":"ID","name":"Work","createdAt":5,
              "selectedIndex":9,"tabs":[{"isPinned":true}]}])"));
}

// A tab's history is bytes of any value, at any length around the base64 padding.
TEST(RecordsJson, ClosedTabsKeepTheirHistoryBytes) {
    const std::vector<TabStore> closed{{"https://x.test/a?b=c#d", false, "\0\xff\x80 h"s, 3},
                                       {std::nullopt, true, "ab"s},
                                       {std::nullopt, true, "a"s},
                                       {std::nullopt, true, ""s}};
    const auto decoded = decodeClosedTabs(encodeClosedTabs(closed)).value();
    ASSERT_EQ(decoded, closed);
    for (std::size_t i = 0; i < closed.size(); ++i) {
        EXPECT_TRUE(decoded[i].sameHistoryAndPlace(closed[i])) << i;
    }
    EXPECT_EQ(json::parse(encodeClosedTabs(closed))[0]["sessionState"], "AP+AIGg=");
}

TEST(RecordsJson, ReadsMembersInAnyOrderAndIgnoresUnknownOnes) {
    auto session = decodeSession(
        R"({"extra":[1,2],"tabs":[{"isPinned":false,"zoom":2,"url":"https://a.test/"}],"selectedIndex":0})");
    ASSERT_TRUE(session);
    EXPECT_EQ(session->tabs.at(0).url, "https://a.test/");

    // The history is read as it is parsed: unknown members of any shape are passed over, even
    // ones holding members of an entry's names, and of two equally named members the last counts.
    auto history = decodeHistory(
        R"([{"visitedAt":1,"url":"u","title":"t","id":"0a1b2c3d-0000-4000-8000-00000000000f"},
            {"more":{"id":7,"title":[null]},"id":"0A1B2C3D-0000-4000-8000-00000000000E",
             "title":null,"title":"second","url":"v","tags":[[1],{"a":{}}],"visitedAt":2.5}])");
    ASSERT_TRUE(history);
    EXPECT_EQ(*history, (std::vector<HistoryEntry>{
                            {"0A1B2C3D-0000-4000-8000-00000000000F", "t", "u", Date{1}},
                            {"0A1B2C3D-0000-4000-8000-00000000000E", "second", "v", Date{2.5}}}))
        << "ids read upper-case";
}

TEST(RecordsJson, AnyMisshapenRecordMakesTheWholeBlobUnreadable) {
    struct Case {
        const char* what;
        bool readable;
    };
    const Case sessions[] = {
        {R"({"selectedIndex":0,"tabs":[]})", true},
        {R"({"selectedIndex":0,"tabs":[{"url":"https://a.test/"}]})", false}, // no isPinned
        {R"({"tabs":[]})", false},
        {R"({"selectedIndex":"0","tabs":[]})", false},
        {R"({"selectedIndex":0,"tabs":{}})", false},
        {R"({"selectedIndex":0,"tabs":[{"url":7,"isPinned":true}]})", false},
        {R"([])", false},
        {"not json", false},
        {"", false},
        {"{\"selectedIndex\":0,\"tabs\":[]", false},
    };
    for (const Case& c : sessions) {
        EXPECT_EQ(decodeSession(c.what).has_value(), c.readable) << c.what;
    }

    EXPECT_FALSE(decodeSitePermissions(R"({"a.test":{"camera":"sometimes","microphone":"ask",
        "location":"ask","notifications":"ask"}})"))
        << "an unknown enumeration string";
    EXPECT_FALSE(decodeSitePermissions(R"({"a.test":{"camera":"ask"}})"));
    const std::string rule = R"({"a.test":{"camera":"ask","microphone":"ask","location":"ask",
        "notifications":"ask","allowAds":)";
    EXPECT_TRUE(decodeSitePermissions(rule + "true}}")->at("a.test").allowAds);
    EXPECT_FALSE(decodeSitePermissions(rule + "\"yes\"}}")) << "allowAds is a boolean";
    const std::string entry =
        R"("id":"0A1B2C3D-0000-4000-8000-00000000000F","title":"t","url":"u","visitedAt":1)";
    for (const std::string& history : {
             R"([{"id":"not-a-uuid","title":"t","url":"u","visitedAt":1}])"s,
             "[{" + entry + R"(,"visitedAt":"yesterday"}])",
             "[{" + entry + R"(,"title":{"text":"t"}}])",
             "[{" + entry + R"(,"url":["u"]}])",
             "[{" + entry + R"(,"id":null}])",
             R"([{"title":"t","url":"u","visitedAt":1}])"s,
             "[{" + entry + "},7]",
             "[{" + entry + "},[]]",
             "[{" + entry + "}",
             "{" + entry + "}",
             R"("[]")"s,
         }) {
        EXPECT_FALSE(decodeHistory(history)) << history;
    }
    EXPECT_FALSE(decodeProfiles(R"([{"id":"P1","name":"A"},{"id":"P2"}])"));
    EXPECT_FALSE(decodeWorkspaceSnapshots(R"([{"id":"W","name":"n","createdAt":1,"tabs":[]}])"));
    EXPECT_FALSE(decodeBookmarks(R"({"title":"t","url":"u"})")) << "an object, not an array";
}

// A tab's history that cannot be read costs that history alone: never the tab, nor the session.
TEST(RecordsJson, AnUnreadableTabHistoryIsDroppedAndTheTabKept) {
    const std::string oversized(TabStore::maxSessionStateBytes / 3 * 4 + 8, 'A');
    for (const std::string& state : {R"("AP+AIGg")"s, R"("A=B=")"s, R"("****")"s, "7"s,
                                     R"({"a":1})"s, "\"" + oversized + "\""}) {
        const auto session = decodeSession(R"({"selectedIndex":0,"tabs":[{"url":"https://a.test/",
            "isPinned":true,"sessionState":)" +
                                           state + R"(,"index":"x"}]})");
        ASSERT_TRUE(session) << state;
        EXPECT_EQ(session->tabs.at(0), (TabStore{"https://a.test/", true})) << state;
        EXPECT_TRUE(session->tabs.at(0).sameHistoryAndPlace(TabStore{})) << state;
    }
}

// One odd number must not cost the user's tabs: the index is read as any number and whoever
// uses it clamps it to the tabs.
TEST(RecordsJson, AnOddSelectedIndexIsReadNotRefused) {
    struct Case {
        const char* stored;
        int read;
    };
    const Case cases[] = {
        {"1.0", 1},
        {"1.5", 1},
        {"-0.5", -1},
        {"99999999999", INT_MAX},
        {"-99999999999", INT_MIN},
        {"1e300", INT_MAX},
        {"18446744073709551615", INT_MAX},
    };
    for (const Case& c : cases) {
        const std::string tabs = R"("tabs":[{"url":"https://a.test/","isPinned":false}])";
        const auto session =
            decodeSession(std::string(R"({"selectedIndex":)") + c.stored + "," + tabs + "}");
        ASSERT_TRUE(session) << c.stored;
        EXPECT_EQ(session->selectedIndex, c.read) << c.stored;
        EXPECT_EQ(session->tabs.size(), 1u);
        const auto snapshots = decodeWorkspaceSnapshots(
            std::string(R"([{"id":"W","name":"n","createdAt":1,"selectedIndex":)") + c.stored +
            "," + tabs + "}]");
        ASSERT_TRUE(snapshots) << c.stored;
        EXPECT_EQ(snapshots->at(0).selectedIndex, c.read) << c.stored;
    }
}

} // namespace
} // namespace ovel
