#include "pages/OvelSettingCard.h"

namespace ovel {

OvelSettingCard::OvelSettingCard(const std::string& title, GtkWidget* content)
    : root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_VERTICAL, 10))),
      title_(gtk_label_new(nullptr)) {
    gtk_widget_add_css_class(root_.get(), "ovel-setting-card");
    gtk_widget_set_halign(root_.get(), GTK_ALIGN_START);
    gtk_widget_add_css_class(title_, "ovel-setting-card-title");
    gtk_widget_set_halign(title_, GTK_ALIGN_START);
    setTitle(title);
    gtk_box_append(GTK_BOX(root_.get()), title_);
    gtk_widget_set_halign(content, GTK_ALIGN_FILL);
    gtk_box_append(GTK_BOX(root_.get()), content);
}

void OvelSettingCard::setTitle(const std::string& title) {
    // Plain text: a host or a name never reads as markup.
    gtk_label_set_text(GTK_LABEL(title_), title.c_str());
}

} // namespace ovel
