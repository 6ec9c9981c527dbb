#pragma once

#include <string_view>

namespace ovel {

// The Adwaita symbolic icon for a design symbol the sheets show. One place, to be replaced by
// the chrome's icon table.
inline const char* iconFor(std::string_view symbol) {
    struct Pair {
        std::string_view symbol;
        const char* icon;
    };
    static constexpr Pair icons[] = {
        {"plus", "list-add-symbolic"},
        {"arrow.uturn.backward", "edit-undo-symbolic"},
        {"square.grid.2x2", "view-grid-symbolic"},
        {"gearshape", "emblem-system-symbolic"},
        {"arrow.down.circle", "folder-download-symbolic"},
        {"clock.arrow.trianglehead.counterclockwise.rotate.90", "document-open-recent-symbolic"},
        {"square.stack.3d.up", "view-paged-symbolic"},
        {"square.stack.3d.up.fill", "view-paged-symbolic"},
        {"rectangle.stack.badge.minus", "list-remove-symbolic"},
        {"xmark.bin", "user-trash-symbolic"},
        {"xmark.circle.fill", "window-close-symbolic"},
        {"safari", "web-browser-symbolic"},
        {"command", "preferences-desktop-keyboard-shortcuts-symbolic"},
    };
    for (const Pair& pair : icons) {
        if (pair.symbol == symbol) {
            return pair.icon;
        }
    }
    return "image-missing-symbolic";
}

} // namespace ovel
