#include "presentation/InternalPages.h"
#include "presentation/AdBlockStatusLine.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

TEST(InternalPages, DisplayAddressesRouteToPagesByLetterCaseAndAliasOnly) {
    using P = InternalPage;
    const struct {
        std::optional<std::string> address;
        std::optional<InternalPage> page;
    } cases[] = {
        {"ovel://settings", P::Settings},
        {"OVEL://Settings", P::Settings},
        {"ovel://downloads", P::Downloads},
        {"ovel://history", P::History},
        {"ovel://workspaces", P::Workspaces},
        {"ovel://Sessions", P::Workspaces},
        {"ovel://about", P::About},
        {"ovel://VERSION", P::About},
        {"ovel://newtab", std::nullopt},
        {"ovel://settings/", std::nullopt},
        {"ovel://history?q=1", std::nullopt},
        {" ovel://about", std::nullopt},
        {"chrome://settings", std::nullopt},
        {"https://example.com/", std::nullopt},
        {"", std::nullopt},
        {std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(pageForDisplayAddress(c.address), c.page) << c.address.value_or("(none)");
    }
}

WorkspaceSnapshot snapshot(std::string name, std::size_t tabs, double unixSeconds = 0) {
    return {"id-" + name, std::move(name), Date::fromUnixSeconds(unixSeconds), 0,
            std::vector<TabStore>(tabs)};
}

TEST(InternalPages, CountedTextsKeepTheirWordsWhateverTheCount) {
    const struct {
        std::string actual;
        std::string expected;
    } cases[] = {
        {workspaceStatusLine({}), "No saved workspaces yet."},
        {workspaceStatusLine({snapshot("Research", 4), snapshot("Older", 9)}),
         "Latest: Research (4 tabs)"},
        {workspaceStatusLine({snapshot("<b>Work</b>", 1)}), "Latest: <b>Work</b> (1 tabs)"},
        {historyCountText(0), "0 entries"},
        {historyCountText(1), "1 entries"},
        {historyCountText(57), "57 entries"},
        // 2026-11-16 20:45 UTC.
        {workspaceDetailLine(snapshot("Work", 3, 1794861900), "UTC"),
         "3 tab(s) \u2022 Nov 16, 2026, 8:45 PM"},
        {workspaceDetailLine(snapshot("Work", 1, 1794861900), "Europe/Paris"),
         "1 tab(s) \u2022 Nov 16, 2026, 9:45 PM"},
        {abbreviatedDateTime(Date::fromUnixSeconds(1767225600), "UTC"), "Jan 1, 2026, 12:00 AM"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.actual, c.expected);
    }
    EXPECT_EQ(aboutLines({1, 2, 0, 12345}),
              (std::array<std::string, 4>{"Profiles: 1", "Tabs: 2", "History Entries: 0",
                                          "Downloads: 12345"}));
}

TEST(InternalPages, TheAdBlockerSaysWhatItBlocksWith) {
    using L = AdBlockStatus::Lists;
    const Date nov12 = Date::fromUnixSeconds(1794477600); // 12 Nov 2026 10:00 UTC
    const struct {
        AdBlockStatus status;
        bool enabled;
        const char* line;
    } cases[] = {
        {{L::Ready, 98412, true, nov12}, true, "Blocking with 98,412 rules · lists of 12 Nov 2026"},
        {{L::Ready, 1234567, true, nov12},
         false,
         "Off · 1,234,567 rules ready · lists of 12 Nov 2026"},
        {{L::Compiling, 2, false, nov12},
         true,
         "Blocking with 2 built-in rules · compiling the lists of 12 Nov 2026"},
        {{L::Missing, 2, false, std::nullopt},
         true,
         "Blocking with 2 built-in rules · the ad and tracker lists are not installed"},
        {{L::Unreadable, 0, false, std::nullopt},
         true,
         "Not blocking yet · the ad and tracker lists cannot be read"},
        {{L::Failed, 2, false, nov12},
         false,
         "Off · 2 built-in rules ready · the lists of 12 Nov 2026 could not be compiled"},
        {{L::Reading, 0, false, std::nullopt}, false, "Off · reading the ad and tracker lists"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(adBlockStatusLine(c.status, c.enabled), c.line);
    }
}

} // namespace
} // namespace ovel
