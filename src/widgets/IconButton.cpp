#include "widgets/IconButton.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"

namespace ovel {

IconButton::IconButton(std::string_view symbol, Options options, std::function<void()> action)
    : button_(GObjectRef<GtkWidget>::retain(gtk_button_new())), action_(std::move(action)) {
    GtkWidget* button = widget();
    switch (options.look) {
    case Look::Glass: {
        GtkWidget* icon = gtk_image_new_from_icon_name(iconNameForGtk(symbol));
        gtk_image_set_pixel_size(GTK_IMAGE(icon), 12);
        gtk_button_set_child(GTK_BUTTON(button), icon);
        gtk_button_set_has_frame(GTK_BUTTON(button), FALSE);
        gtk_widget_add_css_class(button, "liquid-icon-button");
        gtk_widget_set_halign(button, GTK_ALIGN_CENTER);
        gtk_widget_set_size_request(button, 24, 24);
        gtk_widget_set_focus_on_click(button, FALSE);
        break;
    }
    case Look::Square:
        // An icon button as GTK makes one (with its image-button style class).
        gtk_button_set_icon_name(GTK_BUTTON(button), iconNameForGtk(symbol));
        gtk_widget_add_css_class(button, "ovel-icon-action-button");
        gtk_widget_set_halign(button, GTK_ALIGN_START);
        gtk_widget_set_size_request(button, 28, 28);
        break;
    }
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    // Only a button with help text has a tooltip.
    gtk_widget_set_tooltip_text(button, options.helpText ? options.helpText->c_str() : nullptr);
    setAccessibleLabel(button, options.accessibleName);
    signals_.connect(button, "clicked", [this](GtkButton*) {
        // The action may end this button's view (an internal page that opens another): run a
        // copy, and touch nothing of this object after it.
        const std::function<void()> action = action_;
        action();
    });
}

void IconButton::setDisabled(bool disabled) {
    gtk_widget_set_sensitive(widget(), !disabled);
}

} // namespace ovel
