#include "records/Records.h"

#include <cctype>

namespace ovel {

namespace {

template <typename Enum, std::size_t N>
std::optional<Enum> fromRaw(const std::array<Enum, N>& cases, std::string_view raw) {
    for (Enum value : cases) {
        if (rawValue(value) == raw) {
            return value;
        }
    }
    return std::nullopt;
}

} // namespace

bool isUuidText(std::string_view text) {
    if (text.size() != 36) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool dashPlace = i == 8 || i == 13 || i == 18 || i == 23;
        if (dashPlace ? text[i] != '-' : !std::isxdigit(static_cast<unsigned char>(text[i]))) {
            return false;
        }
    }
    return true;
}

std::string_view DownloadRecord::statusLabel() const {
    return ovel::statusLabel(status);
}

std::string_view rawValue(BrowserTheme theme) {
    switch (theme) {
    case BrowserTheme::Midnight:
        return "midnight";
    case BrowserTheme::Ocean:
        return "ocean";
    case BrowserTheme::Sunrise:
        return "sunrise";
    case BrowserTheme::Aurora:
        return "aurora";
    case BrowserTheme::Graphite:
        return "graphite";
    case BrowserTheme::Citrus:
        return "citrus";
    }
    return "midnight";
}

std::string_view label(BrowserTheme theme) {
    switch (theme) {
    case BrowserTheme::Midnight:
        return "Midnight";
    case BrowserTheme::Ocean:
        return "Ocean";
    case BrowserTheme::Sunrise:
        return "Sunrise";
    case BrowserTheme::Aurora:
        return "Aurora";
    case BrowserTheme::Graphite:
        return "Graphite";
    case BrowserTheme::Citrus:
        return "Citrus";
    }
    return "Midnight";
}

std::optional<BrowserTheme> browserThemeFromRaw(std::string_view raw) {
    return fromRaw(allThemes, raw);
}

std::string_view rawValue(SearchEngine engine) {
    switch (engine) {
    case SearchEngine::Google:
        return "google";
    case SearchEngine::DuckDuckGo:
        return "duckDuckGo";
    case SearchEngine::Bing:
        return "bing";
    }
    return "google";
}

std::string_view label(SearchEngine engine) {
    switch (engine) {
    case SearchEngine::Google:
        return "Google";
    case SearchEngine::DuckDuckGo:
        return "DuckDuckGo";
    case SearchEngine::Bing:
        return "Bing";
    }
    return "Google";
}

std::optional<SearchEngine> searchEngineFromRaw(std::string_view raw) {
    return fromRaw(allSearchEngines, raw);
}

std::string_view rawValue(PermissionSetting setting) {
    switch (setting) {
    case PermissionSetting::Ask:
        return "ask";
    case PermissionSetting::Allow:
        return "allow";
    case PermissionSetting::Block:
        return "block";
    }
    return "ask";
}

std::optional<PermissionSetting> permissionSettingFromRaw(std::string_view raw) {
    return fromRaw(allPermissionSettings, raw);
}

std::string_view rawValue(DownloadStatus status) {
    switch (status) {
    case DownloadStatus::Started:
        return "started";
    case DownloadStatus::Paused:
        return "paused";
    case DownloadStatus::Finished:
        return "finished";
    case DownloadStatus::Failed:
        return "failed";
    case DownloadStatus::Cancelled:
        return "cancelled";
    }
    return "started";
}

std::string_view statusLabel(DownloadStatus status) {
    switch (status) {
    case DownloadStatus::Started:
        return "Downloading";
    case DownloadStatus::Paused:
        return "Paused";
    case DownloadStatus::Finished:
        return "Finished";
    case DownloadStatus::Failed:
        return "Failed";
    case DownloadStatus::Cancelled:
        return "Cancelled";
    }
    return "Downloading";
}

std::optional<DownloadStatus> downloadStatusFromRaw(std::string_view raw) {
    return fromRaw(allDownloadStatuses, raw);
}

} // namespace ovel
