#pragma once

#include <string_view>

namespace ovel {

// The Adwaita symbolic icon for one of the design's symbol names, for the tab strip and the
// toolbar; empty for a name not listed.
constexpr std::string_view iconFor(std::string_view symbol) {
    struct Entry {
        std::string_view symbol;
        std::string_view icon;
    };
    constexpr Entry table[] = {
        {"sidebar.left", "sidebar-show-symbolic"},
        {"chevron.left", "go-previous-symbolic"},
        {"chevron.right", "go-next-symbolic"},
        {"house", "go-home-symbolic"},
        {"plus", "list-add-symbolic"},
        {"xmark", "window-close-symbolic"},
        {"square.grid.2x2", "view-grid-symbolic"},
        {"command", "input-keyboard-symbolic"},
        {"magnifyingglass", "edit-find-symbolic"},
        {"bookmark", "bookmark-new-symbolic"},
        {"arrow.clockwise", "view-refresh-symbolic"},
        {"pin.fill", "view-pin-symbolic"},
    };
    for (const Entry& entry : table) {
        if (entry.symbol == symbol) {
            return entry.icon;
        }
    }
    return {};
}

} // namespace ovel
