#include "chrome/PageTroubleView.h"

#include "gutil/AccessibleLabel.h"
#include "presentation/FailedLoad.h"
#include "state/BrowserState.h"
#include "web/BrowserTab.h"

#include <string>

namespace ovel {

namespace {

// The site the tab was showing, as its host; a page without one is named by its whole address.
std::string siteOf(const BrowserTab& tab) {
    if (const std::optional<Url> url = tab.webViewUrl()) {
        if (auto host = url->host(); host && !host->empty()) {
            return *host;
        }
        return url->absoluteString();
    }
    return "this page";
}

} // namespace

PageTroubleView::PageTroubleView(BrowserState& state)
    : state_(state),
      root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_VERTICAL, 10))) {
    GtkWidget* root = widget();
    gtk_widget_add_css_class(root, "page-trouble");
    gtk_widget_set_halign(root, GTK_ALIGN_FILL);
    gtk_widget_set_valign(root, GTK_ALIGN_FILL);
    gtk_widget_set_hexpand(root, TRUE);
    gtk_widget_set_vexpand(root, TRUE);

    GtkWidget* card = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    gtk_widget_add_css_class(card, "page-trouble-card");
    gtk_widget_set_halign(card, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(card, GTK_ALIGN_CENTER);
    gtk_widget_set_vexpand(card, TRUE);

    GtkWidget* icon = gtk_image_new_from_icon_name("dialog-warning-symbolic");
    gtk_image_set_pixel_size(GTK_IMAGE(icon), 48);
    gtk_widget_add_css_class(icon, "page-trouble-icon");
    gtk_accessible_update_property(GTK_ACCESSIBLE(icon), GTK_ACCESSIBLE_PROPERTY_LABEL, "Warning",
                                   -1);

    // The site's name is the page's own text: labels show it as plain text, never markup.
    heading_ = gtk_label_new(nullptr);
    gtk_widget_add_css_class(heading_, "page-trouble-heading");
    gtk_widget_add_css_class(heading_, "ovel-design-font");
    gtk_label_set_wrap(GTK_LABEL(heading_), TRUE);
    gtk_label_set_justify(GTK_LABEL(heading_), GTK_JUSTIFY_CENTER);
    detail_ = gtk_label_new(nullptr);
    gtk_widget_add_css_class(detail_, "page-trouble-detail");
    gtk_label_set_wrap(GTK_LABEL(detail_), TRUE);
    gtk_label_set_max_width_chars(GTK_LABEL(detail_), 56);
    gtk_label_set_justify(GTK_LABEL(detail_), GTK_JUSTIFY_CENTER);

    // Loads the page again, and a failed address as it was asked for.
    button_ = gtk_button_new_with_label("Reload");
    GtkWidget* reload = button_;
    gtk_widget_add_css_class(reload, "page-trouble-reload");
    gtk_widget_add_css_class(reload, "suggested-action");
    gtk_widget_add_css_class(reload, "pill");
    gtk_widget_set_halign(reload, GTK_ALIGN_CENTER);
    gtk_widget_set_margin_top(reload, 8);
    setAccessibleLabel(reload, "Reload Page");
    signals_.connect(reload, "clicked", [this](GtkButton*) { state_.reload(); });

    gtk_box_append(GTK_BOX(card), icon);
    gtk_box_append(GTK_BOX(card), heading_);
    gtk_box_append(GTK_BOX(card), detail_);
    gtk_box_append(GTK_BOX(card), reload);
    gtk_box_append(GTK_BOX(root), card);
}

PageTroubleView::~PageTroubleView() {
    signals_.disconnectAll();
}

void PageTroubleView::showFor(const BrowserTab& tab) {
    const std::string site = siteOf(tab);
    const bool failed = tab.loadFailure.get().has_value() && !tab.hasCrashed.get();
    // A new text takes the button's accessible name with it: both change together.
    const char* action = failed ? "Try Again" : "Reload";
    if (g_strcmp0(gtk_button_get_label(GTK_BUTTON(button_)), action) != 0) {
        gtk_button_set_label(GTK_BUTTON(button_), action);
        // Told apart from the toolbar's own "Reload" by assistive technologies.
        setAccessibleLabel(button_, failed ? "Try Again" : "Reload Page");
    }
    if (failed) {
        const FailedLoadMessage message = failedLoadMessage(*tab.loadFailure.get());
        gtk_label_set_text(GTK_LABEL(heading_), message.heading.c_str());
        gtk_label_set_text(GTK_LABEL(detail_), message.detail.c_str());
    } else if (tab.hasCrashed.get()) {
        gtk_label_set_text(GTK_LABEL(heading_), "This page stopped working");
        gtk_label_set_text(
            GTK_LABEL(detail_),
            ("The page from " + site + " closed unexpectedly. Your other tabs are not affected.")
                .c_str());
    } else {
        gtk_label_set_text(GTK_LABEL(heading_), "This page is not responding");
        gtk_label_set_text(
            GTK_LABEL(detail_),
            ("The page from " + site + " has stopped answering. Wait for it, or reload it.")
                .c_str());
    }
}

} // namespace ovel
