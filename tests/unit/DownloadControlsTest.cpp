#include "presentation/DownloadControls.h"

#include <gtest/gtest.h>

namespace ovel {
namespace {

TEST(DownloadControls, ByStatus) {
    using enum DownloadControl;
    struct Case {
        DownloadStatus status;
        std::vector<DownloadControl> controls;
    };
    const Case cases[] = {
        {DownloadStatus::Started, {Pause, Cancel}},
        {DownloadStatus::Paused, {Resume, Cancel}},
        {DownloadStatus::Failed, {Retry}},
        {DownloadStatus::Cancelled, {Retry}},
        {DownloadStatus::Finished, {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(downloadControls(c.status), c.controls) << rawValue(c.status);
    }
}

TEST(DownloadControls, TheShelfShowsTheFirstEightInListOrder) {
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
