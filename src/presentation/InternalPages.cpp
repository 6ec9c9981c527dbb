#include "presentation/InternalPages.h"

#include <glib.h>

#include <algorithm>
#include <memory>

namespace ovel {

namespace {

struct PageRoute {
    std::string_view address;
    InternalPage page;
};

// Display addresses are canonical already; the aliases are kept for addresses set elsewhere.
constexpr std::array pageRoutes{
    PageRoute{"ovel://settings", InternalPage::Settings},
    PageRoute{"ovel://downloads", InternalPage::Downloads},
    PageRoute{"ovel://history", InternalPage::History},
    PageRoute{"ovel://workspaces", InternalPage::Workspaces},
    PageRoute{"ovel://sessions", InternalPage::Workspaces},
    PageRoute{"ovel://about", InternalPage::About},
    PageRoute{"ovel://version", InternalPage::About},
};

std::string lowerAscii(std::string_view text) {
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                   [](unsigned char c) { return static_cast<char>(g_ascii_tolower(c)); });
    return lowered;
}

struct DateTimeDeleter {
    void operator()(GDateTime* value) const { g_date_time_unref(value); }
};
struct TimeZoneDeleter {
    void operator()(GTimeZone* value) const { g_time_zone_unref(value); }
};

std::string formatted(GDateTime* when, const char* format) {
    gchar* text = g_date_time_format(when, format);
    std::string result = text != nullptr ? text : "";
    g_free(text);
    return result;
}

// The local time zone, read once. GLib's own g_time_zone_new_local() reads /etc/localtime again
// on every call when TZ is unset, which a list of hundreds of dates cannot afford.
GTimeZone* localTimeZone() {
    static GTimeZone* const local = g_time_zone_new_local();
    return local;
}

} // namespace

std::optional<InternalPage> pageForDisplayAddress(const std::optional<std::string>& address) {
    if (!address) {
        return std::nullopt;
    }
    const std::string key = lowerAscii(*address);
    for (const PageRoute& route : pageRoutes) {
        if (key == route.address) {
            return route.page;
        }
    }
    return std::nullopt;
}

std::string workspaceStatusLine(const std::vector<WorkspaceSnapshot>& snapshots) {
    if (snapshots.empty()) {
        return "No saved workspaces yet.";
    }
    const WorkspaceSnapshot& latest = snapshots.front();
    return "Latest: " + latest.name + " (" + std::to_string(latest.tabs.size()) + " tabs)";
}

std::string historyCountText(std::size_t count) {
    return std::to_string(count) + " entries";
}

std::string workspaceDetailLine(const WorkspaceSnapshot& snapshot, std::string_view timeZone) {
    return std::to_string(snapshot.tabs.size()) + " tab(s) \u2022 " +
           abbreviatedDateTime(snapshot.createdAt, timeZone);
}

std::array<std::string, 4> aboutLines(const BrowserCounts& counts) {
    return {"Profiles: " + std::to_string(counts.profiles), "Tabs: " + std::to_string(counts.tabs),
            "History Entries: " + std::to_string(counts.historyEntries),
            "Downloads: " + std::to_string(counts.downloads)};
}

std::string abbreviatedDateTime(Date when, std::string_view timeZone) {
    std::unique_ptr<GTimeZone, TimeZoneDeleter> zone(
        timeZone.empty() ? g_time_zone_ref(localTimeZone())
                         : g_time_zone_new_identifier(std::string(timeZone).c_str()));
    if (!zone) {
        zone.reset(g_time_zone_new_utc());
    }
    const double unix = when.unixSeconds();
    std::unique_ptr<GDateTime, DateTimeDeleter> utc(
        g_date_time_new_from_unix_utc(static_cast<gint64>(unix)));
    if (!utc) {
        return {};
    }
    std::unique_ptr<GDateTime, DateTimeDeleter> local(
        g_date_time_to_timezone(utc.get(), zone.get()));
    // The month is the locale's abbreviated name; the clock is 12-hour with the locale's AM/PM
    // where it has one, 24-hour where it has none.
    const bool hasMeridiem = !formatted(local.get(), "%p").empty();
    return formatted(local.get(), hasMeridiem ? "%b %-e, %Y, %-l:%M %p" : "%b %-e, %Y, %H:%M");
}

} // namespace ovel
