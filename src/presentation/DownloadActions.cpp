#include "presentation/DownloadActions.h"

#include <algorithm>

namespace ovel {

std::vector<DownloadAction> downloadActions(const DownloadRecord& record, DownloadPlace place) {
    using enum DownloadAction;
    std::vector<DownloadAction> actions;
    if (place == DownloadPlace::Shelf && record.destinationPath) {
        actions.push_back(Reveal);
    }
    switch (record.status) {
    case DownloadStatus::Started:
        actions.insert(actions.end(), {Pause, Cancel});
        break;
    case DownloadStatus::Paused:
        actions.insert(actions.end(), {Resume, Cancel});
        break;
    case DownloadStatus::Finished:
        if (place == DownloadPlace::DownloadsPage && record.destinationPath) {
            actions.push_back(Reveal);
        }
        break;
    case DownloadStatus::Failed:
    case DownloadStatus::Cancelled:
        actions.push_back(Retry);
        break;
    }
    return actions;
}

std::span<const DownloadRecord> shelfDownloads(const std::vector<DownloadRecord>& downloads) {
    return {downloads.data(), std::min(downloads.size(), downloadShelfCapacity)};
}

} // namespace ovel
