#include "chrome/BrowserWindow.h"

#include "state/BrowserState.h"

namespace ovel {

namespace {

constexpr int minimumWidth = 1200;
constexpr int minimumHeight = 780;

} // namespace

BrowserWindow::BrowserWindow(GtkApplication* application, BrowserState& state,
                             WebContainer::WidgetResolver resolver)
    : state_(state),
      // Held so this object stays safe to destroy after GTK has destroyed the window.
      window_(GObjectRef<GtkWindow>::retain(GTK_WINDOW(gtk_application_window_new(application)))),
      addressEntry_(GObjectRef<GtkEntry>::retain(GTK_ENTRY(gtk_entry_new()))),
      webContainer_(std::make_unique<WebContainer>(state, std::move(resolver))) {
    gtk_window_set_title(window(), "Ovel Web");
    gtk_window_set_default_size(window(), minimumWidth, minimumHeight);

    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_set_size_request(content, minimumWidth, minimumHeight);
    gtk_widget_add_css_class(GTK_WIDGET(addressEntry()), "address-entry");
    gtk_box_append(GTK_BOX(content), GTK_WIDGET(addressEntry()));
    gtk_box_append(GTK_BOX(content), webContainer_->widget());
    gtk_window_set_child(window(), content);

    signals_.connect(addressEntry(), "activate", [this](GtkEntry* entry) {
        state_.openURL(gtk_editable_get_text(GTK_EDITABLE(entry)));
    });
    auto showAddress = [this](const std::string& text) {
        gtk_editable_set_text(GTK_EDITABLE(addressEntry()), text.c_str());
    };
    connections_.add(state_.addressText.changed().connect(showAddress));
    showAddress(state_.addressText.get());
}

BrowserWindow::~BrowserWindow() {
    connections_.disconnectAll();
    signals_.disconnectAll();
    webContainer_.reset();
}

} // namespace ovel
