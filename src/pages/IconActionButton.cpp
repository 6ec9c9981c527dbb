#include "pages/IconActionButton.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"

namespace ovel {

IconActionButton::IconActionButton(std::string_view symbol, const std::string& helpText,
                                   std::function<void()> action)
    : button_(GObjectRef<GtkWidget>::retain(gtk_button_new_from_icon_name(iconNameForGtk(symbol)))),
      action_(std::move(action)) {
    GtkWidget* button = button_.get();
    gtk_widget_add_css_class(button, "ovel-icon-action-button");
    gtk_widget_set_size_request(button, 28, 28);
    gtk_widget_set_halign(button, GTK_ALIGN_START);
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    gtk_widget_set_tooltip_text(button, helpText.c_str());
    setAccessibleLabel(button, helpText);
    signals_.connect(button, "clicked", [this](GtkButton*) {
        // The action may end this button's page (an internal page that opens another): run a
        // copy, and touch nothing of this object after it.
        const std::function<void()> action = action_;
        action();
    });
}

} // namespace ovel
