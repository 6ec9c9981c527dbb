#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ovel::test {

// Saves what `widget` shows now as a PNG under the build's artifacts folder; returns the path,
// or an empty string when the widget has nothing to show.
std::string saveScreenshot(GtkWidget* widget, const std::string& name);

} // namespace ovel::test
