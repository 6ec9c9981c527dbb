// The downloads list: events from the tabs folded into it, and what the user does to an entry.

#include "state/BrowserState.h"

#include "web/Clock.h"
#include "web/Desktop.h"

#include <algorithm>

namespace ovel {

namespace {

DownloadRecord* findDownload(std::vector<DownloadRecord>& list, const Uuid& id) {
    auto it = std::find_if(list.begin(), list.end(),
                           [&](const DownloadRecord& record) { return record.id == id; });
    return it == list.end() ? nullptr : &*it;
}

} // namespace

void BrowserState::recordDownload(const DownloadEvent& event) {
    auto group = operation();
    downloads.modify([&](auto& list) {
        if (DownloadRecord* record = findDownload(list, event.id)) {
            record->status = event.status;
            if (event.destinationPath) {
                record->destinationPath = event.destinationPath;
            }
            record->progress = event.progress;
            if (event.sourceURL) {
                record->sourceURL = event.sourceURL;
            }
            record->fileName = event.fileName;
            return;
        }
        list.insert(list.begin(),
                    DownloadRecord{event.id, event.fileName, event.sourceURL, event.destinationPath,
                                   event.status, event.progress, services_.clock.now()});
        if (list.size() > maxDownloads) {
            list.pop_back();
        }
    });
}

void BrowserState::openDownload(const DownloadRecord& record) {
    if (record.destinationPath) {
        services_.desktop.revealFile(*record.destinationPath);
    }
}

void BrowserState::retryDownload(const DownloadRecord& record) {
    auto group = operation();
    const std::optional<Url> url = record.sourceURL ? Url::parse(*record.sourceURL) : std::nullopt;
    const auto tab = selectedTab();
    if (url && tab) {
        tab->load(*url);
    }
}

void BrowserState::pauseDownload(const DownloadRecord& record) {
    auto group = operation();
    downloads.modify([&](auto& list) {
        if (DownloadRecord* entry = findDownload(list, record.id)) {
            entry->status = DownloadStatus::Paused;
            entry->progress = std::min(entry->progress, 0.5);
        }
    });
}

void BrowserState::resumeDownload(const DownloadRecord& record) {
    auto group = operation();
    downloads.modify([&](auto& list) {
        if (DownloadRecord* entry = findDownload(list, record.id)) {
            entry->status = DownloadStatus::Started;
        }
    });
}

void BrowserState::cancelDownload(const DownloadRecord& record) {
    auto group = operation();
    // The transfer stops too, in whichever tab started it.
    for (const auto& tab : tabs.get()) {
        if (tab->cancelDownload(record.id)) {
            break;
        }
    }
    downloads.modify([&](auto& list) {
        if (DownloadRecord* entry = findDownload(list, record.id)) {
            entry->status = DownloadStatus::Cancelled;
            entry->progress = 0.0;
        }
    });
}

void BrowserState::clearDownloads() {
    auto group = operation();
    downloads.set({});
}

} // namespace ovel
