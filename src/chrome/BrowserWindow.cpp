#include "chrome/BrowserWindow.h"

namespace ovel {

namespace {

constexpr int minimumWidth = 1200;
constexpr int minimumHeight = 780;

} // namespace

BrowserWindow::BrowserWindow(GtkApplication* application, BrowserState& state,
                             WebContainer::WidgetResolver resolver, GMenuModel* primaryMenu)
    : window_(GTK_WINDOW(gtk_application_window_new(application))),
      rootView_(std::make_unique<BrowserRootView>(state, std::move(resolver))) {
    // Held so this object stays safe to destroy after GTK has destroyed the window.
    g_object_ref(window_);
    gtk_window_set_title(window_, "Ovel Web");
    gtk_widget_add_css_class(GTK_WIDGET(window_), "ovel-window");
    gtk_window_set_default_size(window_, minimumWidth, minimumHeight);
    // An empty title bar: the window keeps its client-side frame but shows no bar of its own.
    GtkWidget* titlebar = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_set_visible(titlebar, FALSE);
    gtk_window_set_titlebar(window_, titlebar);

    rootView_->setPrimaryMenu(primaryMenu);
    gtk_widget_set_size_request(rootView_->widget(), minimumWidth, minimumHeight);
    gtk_window_set_child(window_, rootView_->widget());
}

BrowserWindow::~BrowserWindow() {
    rootView_.reset();
    g_object_unref(window_);
}

} // namespace ovel
