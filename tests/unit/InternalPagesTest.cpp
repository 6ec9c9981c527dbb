#include "presentation/InternalPages.h"
#include "presentation/AdBlockStatusLine.h"
#include "web/AddressResolution.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

// Typed text opens an internal page by any letter case and through its aliases; a tab's own
// address names its page. Both match the whole text, and chrome:// is only ever typed.
TEST(InternalPages, AddressesLeadToPagesInAnyLetterCaseAndOnlyWhole) {
    const struct {
        std::optional<std::string> text;
        const char* route; // what typing it opens; empty: no internal page
        std::optional<InternalPage> page;
    } cases[] = {
        {"ovel://Sessions", "ovel://workspaces", InternalPage::Workspaces},
        {"OVEL://Home", "ovel://newtab", std::nullopt},
        {"Chrome://History", "ovel://history", std::nullopt},
        {"ovel://settings/", "", std::nullopt},
        {"ovel://history?q=1", "", std::nullopt},
        {" ovel://about", "", std::nullopt},
        {std::nullopt, "", std::nullopt},
    };
    for (const auto& c : cases) {
        const auto route = c.text ? internalRouteFor(*c.text) : std::nullopt;
        EXPECT_EQ(route ? route->canonicalAddress : "", c.route) << c.text.value_or("(none)");
        EXPECT_EQ(pageForDisplayAddress(c.text), c.page) << c.text.value_or("(none)");
    }
}

WorkspaceSnapshot snapshot(std::size_t tabs, double unixSeconds) {
    return {"id", "Work", Date::fromUnixSeconds(unixSeconds), 0, std::vector<TabStore>(tabs)};
}

TEST(InternalPages, DatesAreWrittenInTheGivenTimeZone) {
    // 2026-11-16 20:45 UTC.
    EXPECT_EQ(workspaceDetailLine(snapshot(3, 1794861900), "UTC"),
              "3 tab(s) \u2022 Nov 16, 2026, 8:45 PM");
    EXPECT_EQ(workspaceDetailLine(snapshot(1, 1794861900), "Europe/Paris"),
              "1 tab(s) \u2022 Nov 16, 2026, 9:45 PM");
    EXPECT_EQ(abbreviatedDateTime(Date::fromUnixSeconds(1767225600), "UTC"),
              "Jan 1, 2026, 12:00 AM");
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
