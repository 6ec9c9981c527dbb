#include "widgets/SheetFrame.h"

#include "gutil/AccessibleLabel.h"

namespace ovel {

SheetFrame::SheetFrame(const std::string& name, const char* cssClass, int width, int height)
    : orbs_(windowOrbLayout),
      root_(GObjectRef<GtkWidget>::retain(GTK_WIDGET(g_object_new(
          GTK_TYPE_OVERLAY, "accessible-role", GTK_ACCESSIBLE_ROLE_DIALOG, nullptr)))) {
    GtkWidget* root = root_.get();
    setAccessibleLabel(root, name);
    gtk_widget_add_css_class(root, "ovel-sheet");
    gtk_widget_add_css_class(root, cssClass);
    gtk_widget_set_size_request(root, width, height);
    gtk_widget_set_overflow(root, GTK_OVERFLOW_HIDDEN);
    gtk_overlay_set_child(GTK_OVERLAY(root), orbs_.widget());
}

void SheetFrame::setContent(GtkWidget* content) {
    gtk_overlay_add_overlay(GTK_OVERLAY(root_.get()), content);
}

} // namespace ovel
