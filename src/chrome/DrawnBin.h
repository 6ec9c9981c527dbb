#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace ovel {

// Draws `self` and its one child; the function must snapshot the child itself
// (gtk_widget_snapshot_child) inside whatever transform or effect it applies.
using DrawFunction = std::function<void(GtkWidget* self, GtkWidget* child, GtkSnapshot*)>;

// A widget with one child that its owner draws: for effects CSS cannot animate (a scale and a
// shadow driven by a spring). It takes the child's size and gives the child all of its own.
GtkWidget* drawnBinNew(GtkWidget* child, DrawFunction draw);

} // namespace ovel
