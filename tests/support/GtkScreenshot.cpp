#include "support/GtkScreenshot.h"

#include <filesystem>

namespace ovel::test {

std::string saveScreenshot(GtkWidget* widget, const std::string& name) {
    const int width = gtk_widget_get_width(widget);
    const int height = gtk_widget_get_height(widget);
    GtkNative* native = gtk_widget_get_native(widget);
    if (width <= 0 || height <= 0 || native == nullptr) {
        return {};
    }
    GdkPaintable* paintable = gtk_widget_paintable_new(widget);
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(paintable, snapshot, width, height);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    std::string path;
    if (node != nullptr) {
        const graphene_rect_t area = GRAPHENE_RECT_INIT(0, 0, float(width), float(height));
        GdkTexture* texture =
            gsk_renderer_render_texture(gtk_native_get_renderer(native), node, &area);
        std::filesystem::create_directories(OVEL_ARTIFACTS_DIR);
        path = std::string(OVEL_ARTIFACTS_DIR) + "/" + name + ".png";
        if (!gdk_texture_save_to_png(texture, path.c_str())) {
            path.clear();
        }
        g_object_unref(texture);
        gsk_render_node_unref(node);
    }
    g_object_unref(paintable);
    return path;
}

} // namespace ovel::test
