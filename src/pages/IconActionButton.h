#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <string_view>

namespace ovel {

// A small square icon button: 28 × 28, the help text as its tooltip and its accessible name.
class IconActionButton {
public:
    IconActionButton(std::string_view symbol, const std::string& helpText,
                     std::function<void()> action);

    GtkWidget* widget() const { return button_.get(); }

private:
    GObjectRef<GtkWidget> button_;
    std::function<void()> action_;
    GSignalConnections signals_;
};

} // namespace ovel
