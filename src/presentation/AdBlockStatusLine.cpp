#include "presentation/AdBlockStatusLine.h"

#include <glib.h>

#include <array>

namespace ovel {

std::string withThousandsSeparators(std::size_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3; at -= 3) {
        digits.insert(at - 3, ",");
    }
    return digits;
}

std::string dayMonthYear(Date when) {
    static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    GDateTime* day = g_date_time_new_from_unix_utc(static_cast<gint64>(when.unixSeconds()));
    if (day == nullptr) {
        return {};
    }
    std::string text = std::to_string(g_date_time_get_day_of_month(day)) + " " +
                       months[static_cast<std::size_t>(g_date_time_get_month(day) - 1)] + " " +
                       std::to_string(g_date_time_get_year(day));
    g_date_time_unref(day);
    return text;
}

std::string adBlockStatusLine(const AdBlockStatus& status, bool enabled) {
    const std::string rules = status.publishedRules
                                  ? withThousandsSeparators(status.ruleCount) + " rules"
                                  : withThousandsSeparators(status.ruleCount) + " built-in rules";
    std::string line;
    if (enabled) {
        line = status.ruleCount > 0 ? "Blocking with " + rules : "Not blocking yet";
    } else {
        line = status.ruleCount > 0 ? "Off · " + rules + " ready" : "Off";
    }
    const std::string of = status.listsDate ? " of " + dayMonthYear(*status.listsDate) : "";
    switch (status.lists) {
    case AdBlockStatus::Lists::Reading:
        return line + " · reading the ad and tracker lists";
    case AdBlockStatus::Lists::Compiling:
        return line + " · compiling the lists" + of;
    case AdBlockStatus::Lists::Ready:
        return line + " · lists" + of;
    case AdBlockStatus::Lists::Missing:
        return line + " · the ad and tracker lists are not installed";
    case AdBlockStatus::Lists::Unreadable:
        return line + " · the ad and tracker lists cannot be read";
    case AdBlockStatus::Lists::Failed:
        return line + " · the lists" + of + " could not be compiled";
    }
    return line;
}

} // namespace ovel
