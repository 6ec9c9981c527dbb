#include "chrome/BrowserWindow.h"

namespace ovel {

namespace {

constexpr int minimumWidth = 1200;
constexpr int minimumHeight = 780;

} // namespace

BrowserWindow::BrowserWindow(GtkApplication* application, BrowserState& state,
                             WebContainer::WidgetResolver resolver, WebContainer::PageMaker pages,
                             GMenuModel* primaryMenu)
    : window_(GObjectRef<GtkWindow>::retain(GTK_WINDOW(gtk_application_window_new(application)))),
      rootView_(std::make_unique<BrowserRootView>(state, std::move(resolver), std::move(pages))) {
    gtk_window_set_title(window(), "Ovel Web");
    gtk_widget_add_css_class(GTK_WIDGET(window()), "ovel-window");
    gtk_window_set_default_size(window(), minimumWidth, minimumHeight);
    // An empty title bar: the window keeps its client-side frame but shows no bar of its own.
    GtkWidget* titlebar = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_set_visible(titlebar, FALSE);
    gtk_window_set_titlebar(window(), titlebar);

    rootView_->setPrimaryMenu(primaryMenu);
    gtk_widget_set_size_request(rootView_->widget(), minimumWidth, minimumHeight);
    gtk_window_set_child(window(), rootView_->widget());
}

BrowserWindow::~BrowserWindow() {
    rootView_.reset();
}

} // namespace ovel
