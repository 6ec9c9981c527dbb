#include "presentation/ToolbarState.h"

#include "state/BrowserState.h"

namespace ovel {

ToolbarState toolbarStateOf(const BrowserState& state) {
    ToolbarState result;
    if (const auto tab = state.selectedTab()) {
        result.canGoBack = tab->canGoBack.get();
        result.canGoForward = tab->canGoForward.get();
    }
    result.canCloseTab = state.tabs->size() >= 2;
    return result;
}

} // namespace ovel
