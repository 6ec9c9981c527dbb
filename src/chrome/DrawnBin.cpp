#include "chrome/DrawnBin.h"

namespace {

struct OvelDrawnBin {
    GtkWidget parent;
    GtkWidget* child;
    ovel::DrawFunction* draw;
};

struct OvelDrawnBinClass {
    GtkWidgetClass parent;
};

G_DEFINE_TYPE(OvelDrawnBin, ovel_drawn_bin, GTK_TYPE_WIDGET)

OvelDrawnBin* asBin(gpointer object) {
    return G_TYPE_CHECK_INSTANCE_CAST(object, ovel_drawn_bin_get_type(), OvelDrawnBin);
}

void ovel_drawn_bin_init(OvelDrawnBin*) {}

void drawnBinDispose(GObject* object) {
    OvelDrawnBin* bin = asBin(object);
    // The child, and any popover its owner parented here.
    while (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(object))) {
        gtk_widget_unparent(child);
    }
    bin->child = nullptr;
    G_OBJECT_CLASS(ovel_drawn_bin_parent_class)->dispose(object);
}

void drawnBinFinalize(GObject* object) {
    delete asBin(object)->draw;
    G_OBJECT_CLASS(ovel_drawn_bin_parent_class)->finalize(object);
}

void drawnBinSnapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
    OvelDrawnBin* bin = asBin(widget);
    if (bin->child == nullptr) {
        return;
    }
    if (bin->draw != nullptr && *bin->draw) {
        (*bin->draw)(widget, bin->child, snapshot);
    } else {
        gtk_widget_snapshot_child(widget, bin->child, snapshot);
    }
}

void ovel_drawn_bin_class_init(OvelDrawnBinClass* klass) {
    G_OBJECT_CLASS(klass)->dispose = drawnBinDispose;
    G_OBJECT_CLASS(klass)->finalize = drawnBinFinalize;
    GTK_WIDGET_CLASS(klass)->snapshot = drawnBinSnapshot;
    gtk_widget_class_set_layout_manager_type(GTK_WIDGET_CLASS(klass), GTK_TYPE_BIN_LAYOUT);
}

} // namespace

namespace ovel {

GtkWidget* drawnBinNew(GtkWidget* child, DrawFunction draw) {
    auto* bin = asBin(g_object_new(ovel_drawn_bin_get_type(), nullptr));
    bin->child = child;
    bin->draw = new DrawFunction(std::move(draw));
    gtk_widget_set_parent(child, GTK_WIDGET(bin));
    return GTK_WIDGET(bin);
}

} // namespace ovel
