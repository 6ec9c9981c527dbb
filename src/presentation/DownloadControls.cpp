#include "presentation/DownloadControls.h"

#include <algorithm>

namespace ovel {

std::vector<DownloadControl> downloadControls(DownloadStatus status) {
    switch (status) {
    case DownloadStatus::Started:
        return {DownloadControl::Pause, DownloadControl::Cancel};
    case DownloadStatus::Paused:
        return {DownloadControl::Resume, DownloadControl::Cancel};
    case DownloadStatus::Failed:
    case DownloadStatus::Cancelled:
        return {DownloadControl::Retry};
    case DownloadStatus::Finished:
        return {};
    }
    return {};
}

std::span<const DownloadRecord> shelfDownloads(const std::vector<DownloadRecord>& downloads) {
    return {downloads.data(), std::min(downloads.size(), downloadShelfCapacity)};
}

} // namespace ovel
