#include "chrome/SidebarView.h"

#include "gutil/AccessibleLabel.h"

namespace ovel {

SidebarView::SidebarView(BrowserState& state)
    : bookmarks_(state),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_box_new(GTK_ORIENTATION_VERTICAL, 14)))) {
    gtk_widget_add_css_class(root_, "sidebar");
    gtk_widget_set_size_request(root_, width, -1);
    setAccessibleLabel(root_, "Sidebar");
    // The panel sits at the top; the rest of the height stays empty.
    gtk_widget_set_valign(bookmarks_.widget(), GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(root_), bookmarks_.widget());
}

SidebarView::~SidebarView() {
    g_object_unref(root_);
}

} // namespace ovel
