#pragma once

#include "records/Records.h"

#include <cstddef>
#include <span>
#include <vector>

namespace ovel {

// What the user can do to a download.
enum class DownloadAction { Pause, Resume, Cancel, Reveal, Retry };

// Where a download is shown: on the shelf at the foot of the window, or on the downloads page.
enum class DownloadPlace { Shelf, DownloadsPage };

// The actions a download offers in `place`, in button order. A running download pauses or
// cancels, a paused one resumes or cancels, a failed or cancelled one retries. The shelf reveals
// the file of any download that has one, before the rest; the page only that of a finished one.
std::vector<DownloadAction> downloadActions(const DownloadRecord& record, DownloadPlace place);

// The shelf shows at most this many downloads: the first ones of the list, in list order.
inline constexpr std::size_t downloadShelfCapacity = 8;
std::span<const DownloadRecord> shelfDownloads(const std::vector<DownloadRecord>& downloads);

} // namespace ovel
