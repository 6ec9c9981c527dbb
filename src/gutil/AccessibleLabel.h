#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ovel {

// Names a widget for screen readers (an icon-only button's only name) and keeps the name on the
// widget, where GTK offers no way to read it back; tests find controls by it.
void setAccessibleLabel(GtkWidget* widget, const std::string& label);
// The name given by setAccessibleLabel, or null.
const char* accessibleLabel(GtkWidget* widget);

} // namespace ovel
