#pragma once

#include <memory>
#include <string_view>
#include <vector>

namespace ovel {

class BrowserState;
class BrowserTab;

// A tab as the overview lists it, with its index in the full tab list: what every card action
// uses, whatever the filter hides.
struct TabOverviewEntry {
    int offset = 0;
    std::shared_ptr<BrowserTab> tab;
};

// The tabs whose title, or else whose host, contains the trimmed, lower-cased query, in tab
// order (every tab for a blank query). A tab without a host (the start page) is matched on its
// title only.
std::vector<TabOverviewEntry> filteredTabs(const BrowserState& state, std::string_view query);

} // namespace ovel
