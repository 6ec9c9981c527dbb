#include "pages/OvelInfoRow.h"

namespace ovel {

OvelInfoRow::OvelInfoRow(const std::string& text)
    : root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0))),
      label_(gtk_label_new(nullptr)) {
    gtk_widget_add_css_class(root_.get(), "ovel-info-row");
    gtk_widget_set_hexpand(root_.get(), true);
    gtk_widget_set_halign(label_, GTK_ALIGN_START);
    gtk_label_set_xalign(GTK_LABEL(label_), 0);
    gtk_label_set_wrap(GTK_LABEL(label_), true);
    gtk_box_append(GTK_BOX(root_.get()), label_);
    setText(text);
}

void OvelInfoRow::setText(const std::string& text) {
    gtk_label_set_text(GTK_LABEL(label_), text.c_str());
}

} // namespace ovel
