#include "web/FilterListFiles.h"

#include "web/FilterListConverter.h"

#include <glib.h>
#include <glib/gstdio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace ovel {

namespace {

constexpr std::string_view listHeader = "[Adblock Plus";
constexpr std::string_view lastModifiedMark = "! Last modified:";

// "31 Oct 2025 13:00 UTC", as the lists write their date when it is filled in; none for a
// placeholder ("%timestamp%").
std::optional<Date> parseListDate(std::string_view text) {
    static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::string line(text.substr(0, 64));
    int day = 0;
    int year = 0;
    int hour = 0;
    int minute = 0;
    char month[4] = {};
    const int fields =
        std::sscanf(line.c_str(), "%d %3s %d %d:%d", &day, month, &year, &hour, &minute);
    if (fields < 3) {
        return std::nullopt;
    }
    const auto found = std::find_if(months.begin(), months.end(), [&](const char* name) {
        return std::strcmp(name, month) == 0;
    });
    if (found == months.end()) {
        return std::nullopt;
    }
    GDateTime* when = g_date_time_new_utc(year, static_cast<int>(found - months.begin()) + 1, day,
                                          hour, minute, 0);
    if (when == nullptr) {
        return std::nullopt;
    }
    const Date date = Date::fromUnixSeconds(static_cast<double>(g_date_time_to_unix(when)));
    g_date_time_unref(when);
    return date;
}

// The date in the list's header, among its first lines.
std::optional<Date> headerDate(std::string_view text) {
    const std::size_t at = text.substr(0, 4096).find(lastModifiedMark);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view rest = text.substr(at + lastModifiedMark.size());
    while (rest.starts_with(' ')) {
        rest.remove_prefix(1);
    }
    return parseListDate(rest.substr(0, rest.find('\n')));
}

// A list cut short ends inside a line; one that is not a list has no header.
bool looksWhole(std::string_view text) {
    return text.starts_with(listHeader) && text.ends_with('\n') &&
           g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr);
}

} // namespace

FilterListFiles readFilterLists(const std::vector<std::string>& folders) {
    FilterListFiles lists;
    GChecksum* digest = g_checksum_new(G_CHECKSUM_SHA256);
    const std::string version = std::to_string(filterListConverterVersion);
    g_checksum_update(digest, reinterpret_cast<const guchar*>(version.data()),
                      static_cast<gssize>(version.size()));
    bool unreadable = false;
    for (std::string_view name : filterListNames) {
        for (const std::string& folder : folders) {
            gchar* path = g_build_filename(folder.c_str(), std::string(name).c_str(), nullptr);
            GStatBuf info;
            const bool exists = g_stat(path, &info) == 0;
            gchar* contents = nullptr;
            gsize length = 0;
            const bool read = exists && g_file_get_contents(path, &contents, &length, nullptr);
            g_free(path);
            if (!exists) {
                continue;
            }
            std::string text = read ? std::string(contents, length) : std::string();
            g_free(contents);
            if (!read || !looksWhole(text)) {
                unreadable = true;
                break;
            }
            const Date date = headerDate(text).value_or(
                Date::fromUnixSeconds(static_cast<double>(info.st_mtime)));
            lists.date = lists.date ? std::min(*lists.date, date) : date;
            g_checksum_update(digest, reinterpret_cast<const guchar*>(name.data()),
                              static_cast<gssize>(name.size()));
            g_checksum_update(digest, reinterpret_cast<const guchar*>(text.data()),
                              static_cast<gssize>(text.size()));
            lists.texts.push_back(std::move(text));
            break;
        }
    }
    lists.contentHash = std::string(g_checksum_get_string(digest)).substr(0, 16);
    g_checksum_free(digest);
    if (unreadable) {
        return FilterListFiles{FilterListFiles::Status::Unreadable, {}, {}, std::nullopt};
    }
    lists.status =
        lists.texts.empty() ? FilterListFiles::Status::Missing : FilterListFiles::Status::Read;
    return lists;
}

} // namespace ovel
