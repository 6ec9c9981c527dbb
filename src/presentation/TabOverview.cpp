#include "presentation/TabOverview.h"

#include "presentation/TabSearch.h"
#include "state/BrowserState.h"

namespace ovel {

std::vector<TabOverviewEntry> filteredTabs(const BrowserState& state, std::string_view query) {
    const std::string key = searchKey(query);
    const auto& tabs = state.tabs.get();
    std::vector<TabOverviewEntry> entries;
    for (int index = 0; index < static_cast<int>(tabs.size()); ++index) {
        const auto& tab = tabs[static_cast<std::size_t>(index)];
        const auto matches = [&] {
            if (key.empty() || containsSearchKey(tab->title.get(), key)) {
                return true;
            }
            const auto host = tabHost(*tab);
            return host && containsSearchKey(*host, key);
        };
        if (matches()) {
            entries.push_back({index, tab});
        }
    }
    return entries;
}

} // namespace ovel
