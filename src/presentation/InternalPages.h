#pragma once

#include "records/Records.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

// The browser's own pages, drawn natively in the page area in place of the web view.
enum class InternalPage { Settings, Downloads, History, Workspaces, About };

// The native page a tab's display address names, or none for the web view (the start page at
// "ovel://newtab" included). Letter case does not matter; anything else must match exactly.
std::optional<InternalPage> pageForDisplayAddress(const std::optional<std::string>& address);

// "No saved workspaces yet." or "Latest: NAME (N tabs)" for the newest snapshot.
std::string workspaceStatusLine(const std::vector<WorkspaceSnapshot>& snapshots);

// "N entries", whatever the count.
std::string historyCountText(std::size_t count);

// The line under a saved workspace's name: "N tab(s) • DATE".
std::string workspaceDetailLine(const WorkspaceSnapshot& snapshot, std::string_view timeZone = {});

struct BrowserCounts {
    std::size_t profiles = 0;
    std::size_t tabs = 0;
    std::size_t historyEntries = 0;
    std::size_t downloads = 0;
};

// The about page's four lines, in order.
std::array<std::string, 4> aboutLines(const BrowserCounts& counts);

// An abbreviated date with a short time in the user's locale, e.g. "Nov 16, 2026, 8:45 PM" (or
// "20:45" where the locale has no AM/PM), in the named time zone (an IANA identifier such as
// "UTC"), or in the local one when none is named.
std::string abbreviatedDateTime(Date when, std::string_view timeZone = {});

} // namespace ovel
