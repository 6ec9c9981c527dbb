#include "gutil/AccessibleLabel.h"

namespace ovel {

namespace {

constexpr const char* labelKey = "ovel-accessible-label";

} // namespace

void setAccessibleLabel(GtkWidget* widget, const std::string& label) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   label.c_str(), -1);
    g_object_set_data_full(G_OBJECT(widget), labelKey, g_strdup(label.c_str()), g_free);
}

const char* accessibleLabel(GtkWidget* widget) {
    return static_cast<const char*>(g_object_get_data(G_OBJECT(widget), labelKey));
}

} // namespace ovel
