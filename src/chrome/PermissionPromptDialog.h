#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string_view>

namespace ovel {

// A small modal question over the window: may HOST do WHAT? The answer callback runs exactly
// once: true for "Allow", false for "Deny" or for closing the question any other way.
class PermissionPromptDialog {
public:
    // `request` completes "HOST wants to …", e.g. "use your camera".
    static GtkWindow* present(GtkWindow* parent, std::string_view host, std::string_view request,
                              std::function<void(bool allow)> answer);
};

} // namespace ovel
