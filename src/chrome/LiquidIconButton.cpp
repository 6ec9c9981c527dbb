#include "chrome/LiquidIconButton.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"

namespace ovel {

LiquidIconButton::LiquidIconButton(std::string_view symbol, Options options,
                                   std::function<void()> action)
    : button_(GObjectRef<GtkWidget>::retain(gtk_button_new())), action_(std::move(action)) {
    GtkWidget* icon = gtk_image_new_from_icon_name(iconNameForGtk(symbol));
    gtk_image_set_pixel_size(GTK_IMAGE(icon), 12);
    gtk_button_set_child(GTK_BUTTON(widget()), icon);
    gtk_button_set_has_frame(GTK_BUTTON(widget()), FALSE);
    gtk_widget_add_css_class(widget(), "liquid-icon-button");
    gtk_widget_set_valign(widget(), GTK_ALIGN_CENTER);
    gtk_widget_set_halign(widget(), GTK_ALIGN_CENTER);
    gtk_widget_set_size_request(widget(), 24, 24);
    gtk_widget_set_focus_on_click(widget(), FALSE);
    // Only a button with help text has a tooltip; the others show none.
    gtk_widget_set_tooltip_text(widget(), options.helpText ? options.helpText->c_str() : nullptr);
    setAccessibleLabel(widget(), options.accessibleName);
    signals_.connect(widget(), "clicked", [this](GtkButton*) { action_(); });
}

void LiquidIconButton::setDisabled(bool disabled) {
    gtk_widget_set_sensitive(widget(), !disabled);
}

} // namespace ovel
