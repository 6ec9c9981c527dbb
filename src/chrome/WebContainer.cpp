#include "chrome/WebContainer.h"

#include "state/BrowserState.h"
#include "web/BrowserTab.h"

#include <utility>

namespace ovel {

namespace {

// The fade between two tabs' pages: about as long as the spring it stands for (response 0.3 s).
constexpr guint crossFadeMilliseconds = 300;

} // namespace

WebContainer::WebContainer(BrowserState& state, WidgetResolver resolver)
    : state_(state), resolver_(std::move(resolver)),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_stack_new()))) {
    // Another tab's page fades in over the last one. The stack keeps a picture of the page it
    // leaves, so the page widget itself is taken out at once.
    gtk_stack_set_transition_type(GTK_STACK(root_), GTK_STACK_TRANSITION_TYPE_CROSSFADE);
    gtk_stack_set_transition_duration(GTK_STACK(root_), crossFadeMilliseconds);
    gtk_stack_set_interpolate_size(GTK_STACK(root_), FALSE);
    gtk_widget_add_css_class(root_, "web-container");
    gtk_widget_set_hexpand(root_, TRUE);
    gtk_widget_set_vexpand(root_, TRUE);
    gtk_widget_set_overflow(root_, GTK_OVERFLOW_HIDDEN);
    auto showSelected = [this](const auto&...) { showSelectedTab(); };
    connections_.push_back(state_.tabs.changed().connect(showSelected));
    connections_.push_back(state_.selectedIndex.changed().connect(showSelected));
    showSelectedTab();
}

WebContainer::~WebContainer() {
    for (sigc::connection& connection : connections_) {
        connection.disconnect();
    }
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
    GtkWidget* leaving = std::exchange(shown_, page);
    if (shown_ != nullptr) {
        g_object_ref(shown_);
        gtk_widget_set_hexpand(shown_, TRUE);
        gtk_widget_set_vexpand(shown_, TRUE);
        gtk_stack_add_child(GTK_STACK(root_), shown_);
        gtk_stack_set_visible_child(GTK_STACK(root_), shown_);
    }
    if (leaving != nullptr) {
        // Our own reference keeps a closed tab's view valid until it is taken out here.
        gtk_stack_remove(GTK_STACK(root_), leaving);
        g_object_unref(leaving);
    }
}

} // namespace ovel
