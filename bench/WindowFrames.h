#pragma once

#include <gtk/gtk.h>

namespace ovel::bench {

// Runs the main loop until `window` has painted one more frame.
inline void waitForFrame(GtkWindow* window) {
    GdkFrameClock* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window));
    bool painted = false;
    const gulong handler = g_signal_connect_swapped(
        clock, "after-paint", G_CALLBACK(+[](bool* flag) { *flag = true; }), &painted);
    gtk_widget_queue_draw(GTK_WIDGET(window));
    while (!painted) {
        g_main_context_iteration(nullptr, TRUE);
    }
    g_signal_handler_disconnect(clock, handler);
}

} // namespace ovel::bench
