// The engine floor the browser is measured against: the least a WebKitGTK browser can do. One
// window holding one web view per address given (the first shown, the rest loading behind it,
// as a browser's background tabs do), or the start page when none is given. Prints the same
// line as the browser's start-up probe at the first frame after the shown page finished
// loading; then exits, or with --stay keeps running until killed.
// With --related every view after the first is related to it, so they share its web process.
//   engine_floor [--stay] [--related] [URL...]

#include "web/StartPage.h"

#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <cstdio>
#include <cstring>

namespace {

struct Floor {
    GtkWindow* window = nullptr;
    GMainLoop* loop = nullptr;
    bool stay = false;
    bool related = false;
};

void onAfterPaint(GdkFrameClock* clock, Floor* floor) {
    std::printf("ovel-web: first page frame\n");
    std::fflush(stdout);
    g_signal_handlers_disconnect_by_func(clock, reinterpret_cast<gpointer>(onAfterPaint), floor);
    if (!floor->stay) {
        g_main_loop_quit(floor->loop);
    }
}

void onLoadChanged(WebKitWebView* view, WebKitLoadEvent event, Floor* floor) {
    if (event != WEBKIT_LOAD_FINISHED) {
        return;
    }
    g_signal_handlers_disconnect_by_func(view, reinterpret_cast<gpointer>(onLoadChanged), floor);
    GdkFrameClock* clock = gtk_widget_get_frame_clock(GTK_WIDGET(floor->window));
    g_signal_connect(clock, "after-paint", G_CALLBACK(onAfterPaint), floor);
    gtk_widget_queue_draw(GTK_WIDGET(floor->window));
}

} // namespace

int main(int argc, char** argv) {
    gtk_init();
    Floor floor;
    int first = 1;
    for (; first < argc && std::strncmp(argv[first], "--", 2) == 0; ++first) {
        floor.stay = floor.stay || std::strcmp(argv[first], "--stay") == 0;
        floor.related = floor.related || std::strcmp(argv[first], "--related") == 0;
    }
    floor.loop = g_main_loop_new(nullptr, FALSE);
    floor.window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(floor.window, 1200, 780);
    GtkWidget* stack = gtk_stack_new();
    gtk_window_set_child(floor.window, stack);
    for (int i = first; i < argc || i == first; ++i) {
        GtkWidget* firstView = gtk_widget_get_first_child(stack);
        GtkWidget* view =
            floor.related && firstView != nullptr
                ? GTK_WIDGET(g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", firstView, nullptr))
                : webkit_web_view_new();
        gtk_stack_add_child(GTK_STACK(stack), view);
        if (i == first) {
            g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), &floor);
        }
        if (i < argc) {
            webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), argv[i]);
        } else {
            webkit_web_view_load_html(WEBKIT_WEB_VIEW(view),
                                      ovel::startPageHTML(ovel::BrowserTheme::Midnight).c_str(),
                                      nullptr);
        }
    }
    gtk_window_present(floor.window);
    g_main_loop_run(floor.loop);
    gtk_window_destroy(floor.window);
    g_main_loop_unref(floor.loop);
    return 0;
}
