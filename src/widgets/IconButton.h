#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ovel {

// An icon-only button, in one of two looks:
// - Glass, the chrome's: a 24-point circle that grows a little and glows in the theme's accent
//   under the pointer;
// - Square, the internal pages': 28 × 28, its help text as its tooltip.
class IconButton {
public:
    enum class Look { Glass, Square };

    struct Options {
        // Said by screen readers and found by tests: what the button does.
        std::string accessibleName;
        std::optional<std::string> helpText = std::nullopt;
        Look look = Look::Glass;
    };
    // A square button whose help text is also its accessible name.
    static Options square(const std::string& helpText) {
        return {helpText, helpText, Look::Square};
    }

    IconButton(std::string_view symbol, Options options, std::function<void()> action);

    IconButton(const IconButton&) = delete;
    IconButton& operator=(const IconButton&) = delete;

    GtkWidget* widget() const { return button_.get(); }
    void setDisabled(bool disabled);

private:
    GObjectRef<GtkWidget> button_;
    std::function<void()> action_;
    GSignalConnections signals_;
};

} // namespace ovel
