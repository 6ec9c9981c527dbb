#include "presentation/DownloadActions.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

TEST(DownloadActions, ByStatusAndPlace) {
    using enum DownloadAction;
    const struct {
        DownloadStatus status;
        std::optional<std::string> path;
        std::vector<DownloadAction> onShelf;
        std::vector<DownloadAction> onPage;
    } cases[] = {
        {DownloadStatus::Started, "/tmp/a", {Reveal, Pause, Cancel}, {Pause, Cancel}},
        {DownloadStatus::Paused, std::nullopt, {Resume, Cancel}, {Resume, Cancel}},
        {DownloadStatus::Finished, "/tmp/a", {Reveal}, {Reveal}},
        {DownloadStatus::Finished, std::nullopt, {}, {}},
        {DownloadStatus::Failed, std::nullopt, {Retry}, {Retry}},
        {DownloadStatus::Cancelled, "/tmp/a", {Reveal, Retry}, {Retry}},
    };
    for (const auto& c : cases) {
        DownloadRecord record;
        record.status = c.status;
        record.destinationPath = c.path;
        const std::string row = std::string(rawValue(c.status)) + (c.path ? " with a file" : "");
        EXPECT_EQ(downloadActions(record, DownloadPlace::Shelf), c.onShelf) << row;
        EXPECT_EQ(downloadActions(record, DownloadPlace::DownloadsPage), c.onPage) << row;
    }
}

TEST(DownloadActions, TheShelfShowsTheFirstEightInListOrder) {
    for (std::size_t count : {0u, 1u, 8u, 9u, 20u}) {
        std::vector<DownloadRecord> downloads(count);
        for (std::size_t i = 0; i < count; ++i) {
            downloads[i].fileName = "file" + std::to_string(i);
        }
        const auto shown = shelfDownloads(downloads);
        ASSERT_EQ(shown.size(), std::min<std::size_t>(count, 8)) << count;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            EXPECT_EQ(shown[i].fileName, "file" + std::to_string(i));
        }
    }
}

} // namespace
} // namespace ovel
