#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

// Canonical upper-case 8-4-4-4-12 text of a UUID.
using Uuid = std::string;

bool isUuidText(std::string_view text);

// A point in time as seconds (with fraction) since 2001-01-01 00:00:00 UTC, the form every
// stored record uses.
struct Date {
    double secondsSince2001 = 0;

    static constexpr double unixOffset = 978307200.0;
    static Date fromUnixSeconds(double unixSeconds) { return Date{unixSeconds - unixOffset}; }
    double unixSeconds() const { return secondsSince2001 + unixOffset; }
    auto operator<=>(const Date&) const = default;
};

struct TabStore {
    std::optional<std::string> url;
    bool isPinned = false;
    // The tab's back/forward list as the engine serialised it (bytes); none when unknown.
    std::optional<std::string> sessionState = std::nullopt;
    // Where a closed tab stood in the strip, so that it comes back there.
    std::optional<int> index = std::nullopt;
    // Records of the same tab: its address and pin, whatever the engine kept of its history.
    bool operator==(const TabStore& other) const {
        return url == other.url && isPinned == other.isPinned;
    }
    bool sameHistoryAndPlace(const TabStore& other) const {
        return sessionState == other.sessionState && index == other.index;
    }

    // A state larger than this is not kept: the tab comes back without its history.
    static constexpr std::size_t maxSessionStateBytes = 256 * 1024;
};

struct SessionStore {
    int selectedIndex = 0;
    std::vector<TabStore> tabs;
    bool operator==(const SessionStore&) const = default;
};

struct BookmarkStore {
    std::string title;
    std::string url;
    bool operator==(const BookmarkStore&) const = default;
};

struct Bookmark {
    Uuid id;
    std::string title;
    std::string url;
    bool operator==(const Bookmark&) const = default;
};

struct HistoryEntry {
    Uuid id;
    std::string title;
    std::string url;
    Date visitedAt;
    bool operator==(const HistoryEntry&) const = default;
};

struct BrowserProfile {
    std::string id;
    std::string name;
    bool operator==(const BrowserProfile&) const = default;
};

struct WorkspaceSnapshot {
    std::string id;
    std::string name;
    Date createdAt;
    int selectedIndex = 0;
    std::vector<TabStore> tabs;
    bool operator==(const WorkspaceSnapshot&) const = default;
};

enum class PermissionSetting { Ask, Allow, Block };

struct SitePermissionRule {
    PermissionSetting camera = PermissionSetting::Ask;
    PermissionSetting microphone = PermissionSetting::Ask;
    PermissionSetting location = PermissionSetting::Ask;
    PermissionSetting notifications = PermissionSetting::Ask;
    // The ad blocker leaves the site's pages alone. Stored only when set.
    bool allowAds = false;
    bool operator==(const SitePermissionRule&) const = default;
};

using SitePermissionRules = std::map<std::string, SitePermissionRule>;

enum class DownloadStatus { Started, Paused, Finished, Failed, Cancelled };

struct DownloadRecord {
    Uuid id;
    std::string fileName;
    std::optional<std::string> sourceURL;
    std::optional<std::string> destinationPath;
    DownloadStatus status = DownloadStatus::Started;
    double progress = 0;
    Date createdAt;

    std::string_view statusLabel() const;
    bool operator==(const DownloadRecord&) const = default;
};

struct DownloadEvent {
    Uuid id;
    std::string fileName;
    std::optional<std::string> sourceURL;
    std::optional<std::string> destinationPath;
    DownloadStatus status = DownloadStatus::Started;
    double progress = 0;
    bool operator==(const DownloadEvent&) const = default;
};

enum class BrowserTheme { Midnight, Ocean, Sunrise, Aurora, Graphite, Citrus };

enum class SearchEngine { Google, DuckDuckGo, Bing };

// Raw values (what is stored) and labels (what is shown), in case order.
inline constexpr std::array allThemes{BrowserTheme::Midnight, BrowserTheme::Ocean,
                                      BrowserTheme::Sunrise,  BrowserTheme::Aurora,
                                      BrowserTheme::Graphite, BrowserTheme::Citrus};
inline constexpr std::array allSearchEngines{SearchEngine::Google, SearchEngine::DuckDuckGo,
                                             SearchEngine::Bing};
inline constexpr std::array allPermissionSettings{PermissionSetting::Ask, PermissionSetting::Allow,
                                                  PermissionSetting::Block};
inline constexpr std::array allDownloadStatuses{DownloadStatus::Started, DownloadStatus::Paused,
                                                DownloadStatus::Finished, DownloadStatus::Failed,
                                                DownloadStatus::Cancelled};

std::string_view rawValue(BrowserTheme theme);
std::string_view label(BrowserTheme theme);
std::optional<BrowserTheme> browserThemeFromRaw(std::string_view raw);

std::string_view rawValue(SearchEngine engine);
std::string_view label(SearchEngine engine);
std::optional<SearchEngine> searchEngineFromRaw(std::string_view raw);

std::string_view rawValue(PermissionSetting setting);
std::optional<PermissionSetting> permissionSettingFromRaw(std::string_view raw);

std::string_view rawValue(DownloadStatus status);
std::string_view statusLabel(DownloadStatus status);
std::optional<DownloadStatus> downloadStatusFromRaw(std::string_view raw);

} // namespace ovel
