#pragma once

#include "records/Records.h"

#include <cstddef>
#include <span>
#include <vector>

namespace ovel {

// What the download shelf offers for one download.
enum class DownloadControl { Pause, Resume, Cancel, Retry };

// The controls for a download in `status`, left to right: a running one pauses or cancels, a
// paused one resumes or cancels, a failed or cancelled one retries, a finished one has none.
std::vector<DownloadControl> downloadControls(DownloadStatus status);

// The shelf shows at most this many downloads: the first ones of the list, in list order.
inline constexpr std::size_t downloadShelfCapacity = 8;
std::span<const DownloadRecord> shelfDownloads(const std::vector<DownloadRecord>& downloads);

} // namespace ovel
