#include "chrome/WebContainer.h"

#include "state/BrowserState.h"
#include "web/BrowserTab.h"

namespace ovel {

WebContainer::WebContainer(BrowserState& state, WidgetResolver resolver)
    : state_(state), resolver_(std::move(resolver)),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)))) {
    gtk_widget_add_css_class(root_, "web-container");
    gtk_widget_set_hexpand(root_, TRUE);
    gtk_widget_set_vexpand(root_, TRUE);
    gtk_widget_set_overflow(root_, GTK_OVERFLOW_HIDDEN);
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
    g_object_unref(root_);
}

void WebContainer::showSelectedTab() {
    const auto tab = state_.selectedTab();
    show(tab ? resolver_(*tab) : nullptr);
}

void WebContainer::show(GtkWidget* page) {
    if (page == shown_) {
        return;
    }
    if (shown_ != nullptr) {
        // Our own reference keeps a closed tab's view valid until it is taken out here.
        gtk_box_remove(GTK_BOX(root_), shown_);
        g_object_unref(shown_);
    }
    shown_ = page;
    if (shown_ != nullptr) {
        g_object_ref(shown_);
        gtk_widget_set_hexpand(shown_, TRUE);
        gtk_widget_set_vexpand(shown_, TRUE);
        gtk_box_append(GTK_BOX(root_), shown_);
    }
}

} // namespace ovel
