#pragma once

namespace ovel {

class BrowserState;

// Which of the toolbar's buttons can be used now; the others are shown disabled.
struct ToolbarState {
    bool canGoBack = false;
    bool canGoForward = false;
    // The last tab cannot be closed from the toolbar.
    bool canCloseTab = false;
    bool operator==(const ToolbarState&) const = default;
};

ToolbarState toolbarStateOf(const BrowserState& state);

} // namespace ovel
