#include "chrome/BrowserWindow.h"

#include "state/BrowserState.h"

namespace ovel {

namespace {

constexpr int minimumWidth = 1200;
constexpr int minimumHeight = 780;

} // namespace

BrowserWindow::BrowserWindow(GtkApplication* application, BrowserState& state,
                             WebContainer::WidgetResolver resolver)
    : state_(state), window_(GTK_WINDOW(gtk_application_window_new(application))),
      addressEntry_(GTK_ENTRY(gtk_entry_new())),
      webContainer_(std::make_unique<WebContainer>(state, std::move(resolver))) {
    // Held so this object stays safe to destroy after GTK has destroyed the window.
    g_object_ref(window_);
    g_object_ref(addressEntry_);
    gtk_window_set_title(window_, "Ovel Web");
    gtk_window_set_default_size(window_, minimumWidth, minimumHeight);

    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_set_size_request(content, minimumWidth, minimumHeight);
    gtk_widget_add_css_class(GTK_WIDGET(addressEntry_), "address-entry");
    gtk_box_append(GTK_BOX(content), GTK_WIDGET(addressEntry_));
    gtk_box_append(GTK_BOX(content), webContainer_->widget());
    gtk_window_set_child(window_, content);

    g_signal_connect(addressEntry_, "activate", G_CALLBACK(+[](GtkEntry* entry, gpointer self) {
                         auto* window = static_cast<BrowserWindow*>(self);
                         window->state_.openURL(gtk_editable_get_text(GTK_EDITABLE(entry)));
                     }),
                     this);
    auto showAddress = [this](const std::string& text) {
        gtk_editable_set_text(GTK_EDITABLE(addressEntry_), text.c_str());
    };
    connections_.add(state_.addressText.changed().connect(showAddress));
    showAddress(state_.addressText.get());
}

BrowserWindow::~BrowserWindow() {
    connections_.disconnectAll();
    g_signal_handlers_disconnect_by_data(addressEntry_, this);
    webContainer_.reset();
    g_object_unref(addressEntry_);
    g_object_unref(window_);
}

} // namespace ovel
