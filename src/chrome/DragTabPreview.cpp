#include "chrome/DragTabPreview.h"

namespace ovel {

DragTabPreview::DragTabPreview(const BrowserTab& tab)
    : root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8))),
      parts_(GTK_BOX(root_.get())) {
    gtk_widget_add_css_class(widget(), "drag-tab-preview");
    parts_.showAll(tab);
}

} // namespace ovel
