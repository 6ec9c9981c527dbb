#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ovel {

// GNOME's keyboard-shortcuts window for the browser: every menu command that has a shortcut
// and every key outside the menu, grouped by the menu's sections, read from the command
// tables so it always shows the keys that work.
class KeyboardShortcutsWindow {
public:
    // Shows the window over `parent`, making it once and bringing the open one forward after.
    static void present(GtkApplication* application, GtkWindow* parent);

    // A new window, not yet shown; the caller owns it (gtk_window_destroy).
    static GtkWindow* create();

    // The window's description in GtkBuilder's language.
    static std::string builderDefinition();
};

} // namespace ovel
