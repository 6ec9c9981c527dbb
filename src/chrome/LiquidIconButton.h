#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// The chrome's round glass icon button: a 24-point circle that grows a little and glows in the
// theme's accent under the pointer.
class LiquidIconButton {
public:
    struct Options {
        // Said by screen readers and found by tests: what the button does.
        std::string accessibleName;
        std::optional<std::string> helpText = std::nullopt;
    };

    LiquidIconButton(std::string_view symbol, Options options, std::function<void()> action);

    LiquidIconButton(const LiquidIconButton&) = delete;
    LiquidIconButton& operator=(const LiquidIconButton&) = delete;

    GtkWidget* widget() const { return button_.get(); }
    void setDisabled(bool disabled);

private:
    GObjectRef<GtkWidget> button_;
    std::function<void()> action_;
    GSignalConnections signals_;
};

} // namespace ovel
