// The engine floor for the start-up benchmark: the least a WebKitGTK browser can do to show
// the start page. One window, one web view, the same HTML; prints the same line as the
// browser's start-up probe at the first frame after the page finished loading, then exits.

#include "web/StartPage.h"

#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <cstdio>

namespace {

struct Floor {
    GtkWindow* window = nullptr;
    GMainLoop* loop = nullptr;
};

void onAfterPaint(GdkFrameClock* clock, Floor* floor) {
    std::printf("ovel-web: first page frame\n");
    std::fflush(stdout);
    g_signal_handlers_disconnect_by_func(clock, reinterpret_cast<gpointer>(onAfterPaint), floor);
    g_main_loop_quit(floor->loop);
}

void onLoadChanged(WebKitWebView*, WebKitLoadEvent event, Floor* floor) {
    if (event != WEBKIT_LOAD_FINISHED) {
        return;
    }
    GdkFrameClock* clock = gtk_widget_get_frame_clock(GTK_WIDGET(floor->window));
    g_signal_connect(clock, "after-paint", G_CALLBACK(onAfterPaint), floor);
    gtk_widget_queue_draw(GTK_WIDGET(floor->window));
}

} // namespace

int main() {
    gtk_init();
    Floor floor;
    floor.loop = g_main_loop_new(nullptr, FALSE);
    floor.window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(floor.window, 1200, 780);
    GtkWidget* view = webkit_web_view_new();
    g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), &floor);
    gtk_window_set_child(floor.window, view);
    webkit_web_view_load_html(WEBKIT_WEB_VIEW(view),
                              ovel::startPageHTML(ovel::BrowserTheme::Midnight).c_str(), nullptr);
    gtk_window_present(floor.window);
    g_main_loop_run(floor.loop);
    gtk_window_destroy(floor.window);
    g_main_loop_unref(floor.loop);
    return 0;
}
