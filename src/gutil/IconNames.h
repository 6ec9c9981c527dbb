#pragma once

#include <array>
#include <string_view>
#include <utility>

namespace ovel {

// The design names its icons by symbol; the window draws them from the Adwaita icon theme.
// Every name below exists in adwaita-icon-theme 43, except web-browser-symbolic, which it keeps
// only among its legacy icons and which the chrome's resources therefore carry themselves.
inline constexpr std::array<std::pair<std::string_view, std::string_view>, 31> iconNames{{
    {"sidebar.left", "sidebar-show-symbolic"},
    {"chevron.left", "go-previous-symbolic"},
    {"chevron.right", "go-next-symbolic"},
    {"house", "go-home-symbolic"},
    {"plus", "list-add-symbolic"},
    {"xmark", "window-close-symbolic"},
    {"square.grid.2x2", "view-grid-symbolic"},
    {"command", "input-keyboard-symbolic"},
    {"magnifyingglass", "system-search-symbolic"},
    {"bookmark", "user-bookmarks-symbolic"},
    {"arrow.clockwise", "view-refresh-symbolic"},
    {"pin.fill", "view-pin-symbolic"},
    {"folder", "folder-symbolic"},
    {"pause.fill", "media-playback-pause-symbolic"},
    {"play.fill", "media-playback-start-symbolic"},
    {"xmark.circle", "process-stop-symbolic"},
    {"exclamationmark.triangle.fill", "dialog-warning-symbolic"},
    {"arrow.down.circle.fill", "document-save-symbolic"},
    {"gearshape", "emblem-system-symbolic"},
    {"arrow.down.circle", "folder-download-symbolic"},
    {"clock.arrow.trianglehead.counterclockwise.rotate.90", "document-open-recent-symbolic"},
    {"square.stack.3d.up", "view-paged-symbolic"},
    {"square.stack.3d.up.fill", "view-continuous-symbolic"},
    {"rectangle.stack.badge.minus", "edit-clear-all-symbolic"},
    {"xmark.bin", "user-trash-full-symbolic"},
    {"arrow.uturn.backward", "edit-undo-symbolic"},
    {"safari", "web-browser-symbolic"},
    {"globe", "network-workgroup-symbolic"},
    {"trash", "user-trash-symbolic"},
    {"arrow.clockwise.circle", "emblem-synchronizing-symbolic"},
    {"xmark.circle.fill", "edit-clear-symbolic"},
}};

// The icon for a design symbol, or "image-missing" for a symbol the table lacks, so a missing
// entry shows as the theme's broken-image icon instead of nothing.
constexpr std::string_view iconName(std::string_view symbol) {
    for (const auto& [name, icon] : iconNames) {
        if (name == symbol) {
            return icon;
        }
    }
    return "image-missing";
}

// The same, for GTK calls: every name is a literal, so it ends in a null character.
inline const char* iconNameForGtk(std::string_view symbol) {
    return iconName(symbol).data();
}

} // namespace ovel
