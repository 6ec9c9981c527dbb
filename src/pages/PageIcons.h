#pragma once

#include <string_view>

namespace ovel {

// The Adwaita symbolic icon for one of the design's symbol names. Kept in this one place until the
// window's icon table replaces it.
inline const char* iconFor(std::string_view symbol) {
    struct Entry {
        std::string_view symbol;
        const char* icon;
    };
    static constexpr Entry table[] = {
        {"globe", "web-browser-symbolic"},
        {"pause.fill", "media-playback-pause-symbolic"},
        {"play.fill", "media-playback-start-symbolic"},
        {"xmark", "window-close-symbolic"},
        {"folder", "folder-symbolic"},
        {"arrow.clockwise", "view-refresh-symbolic"},
        {"arrow.clockwise.circle", "document-revert-symbolic"},
        {"trash", "user-trash-symbolic"},
        {"gearshape", "emblem-system-symbolic"},
        {"arrow.down.circle", "folder-download-symbolic"},
        {"clock.arrow.trianglehead.counterclockwise.rotate.90", "document-open-recent-symbolic"},
        {"square.stack.3d.up", "view-paged-symbolic"},
    };
    for (const Entry& entry : table) {
        if (entry.symbol == symbol) {
            return entry.icon;
        }
    }
    return "image-missing-symbolic";
}

} // namespace ovel
