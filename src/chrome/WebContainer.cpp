#include "chrome/WebContainer.h"

#include "state/BrowserState.h"
#include "web/BrowserTab.h"

namespace ovel {

WebContainer::WebContainer(BrowserState& state, WidgetResolver resolver)
    : state_(state), resolver_(std::move(resolver)),
      root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))) {
    gtk_widget_add_css_class(widget(), "web-container");
    gtk_widget_set_hexpand(widget(), TRUE);
    gtk_widget_set_vexpand(widget(), TRUE);
    gtk_widget_set_overflow(widget(), GTK_OVERFLOW_HIDDEN);
    // Only a change of the selected tab swaps the page: a tab closed or moved elsewhere in the
    // strip leaves the page on show alone.
    connections_.add(state_.selectionChanged.connect([this](const SelectionChange& change) {
        if (change.newTab != change.oldTab) {
            showSelectedTab();
        }
    }));
    showSelectedTab();
}

WebContainer::~WebContainer() {
    connections_.disconnectAll();
    show(nullptr);
}

void WebContainer::showSelectedTab() {
    const auto tab = state_.selectedTab();
    show(tab ? resolver_(*tab) : nullptr);
}

void WebContainer::show(GtkWidget* page) {
    if (page == shown_.get()) {
        return;
    }
    if (shown_) {
        // Our own reference keeps a closed tab's view valid until it is taken out here.
        gtk_box_remove(GTK_BOX(widget()), shown_.get());
    }
    shown_ = GObjectRef<GtkWidget>::retain(page);
    if (shown_) {
        gtk_widget_set_hexpand(page, TRUE);
        gtk_widget_set_vexpand(page, TRUE);
        gtk_box_append(GTK_BOX(widget()), page);
    }
}

} // namespace ovel
