#include "support/ViewFixture.h"

#include "gutil/AccessibleLabel.h"

#include <filesystem>

namespace ovel::test {

GtkWindow* ViewFixture::show(GtkWidget* child, int width, int height) {
    window_ = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(window_, width, height);
    gtk_window_set_child(window_, child);
    gtk_window_present(window_);
    waitUntil([this] { return gtk_widget_get_mapped(GTK_WIDGET(window_)); });
    runMainLoopFor(std::chrono::milliseconds(50));
    return window_;
}

std::string ViewFixture::saveScreenshot(GtkWidget* widget, const std::string& name) {
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
        GskRenderer* renderer = gtk_native_get_renderer(native);
        graphene_rect_t bounds = GRAPHENE_RECT_INIT(0, 0, float(width), float(height));
        GdkTexture* texture = gsk_renderer_render_texture(renderer, node, &bounds);
        const std::filesystem::path folder = std::filesystem::path(OVEL_BUILD_DIR) / "artifacts";
        std::filesystem::create_directories(folder);
        path = (folder / (name + ".png")).string();
        if (!gdk_texture_save_to_png(texture, path.c_str())) {
            path.clear();
        }
        g_object_unref(texture);
        gsk_render_node_unref(node);
    }
    g_object_unref(paintable);
    return path;
}

void ViewFixture::useTheme(const char* css, const std::string& extra) {
    GdkDisplay* display = gdk_display_get_default();
    if (themeCss_) {
        gtk_style_context_remove_provider_for_display(display, GTK_STYLE_PROVIDER(themeCss_.get()));
        themeCss_ = {};
    }
    if (css != nullptr) {
        themeCss_ = GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new());
        gtk_css_provider_load_from_data(themeCss_.get(), (css + extra).c_str(), -1);
        gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(themeCss_.get()),
                                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
    }
}

GtkWidget* ViewFixture::findControl(GtkWidget* root, const std::string& name) {
    if (!GTK_IS_LABEL(root) && findByName(root, name) == root) {
        return root;
    }
    for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GtkWidget* found = findControl(child, name)) {
            return found;
        }
    }
    return nullptr;
}

bool ViewFixture::click(GtkWidget* root, const std::string& name) {
    GtkWidget* button = findControl(root, name);
    if (!GTK_IS_BUTTON(button)) {
        return false;
    }
    g_signal_emit_by_name(button, "clicked");
    return true;
}

void ViewFixture::loadCss(const std::string& file) {
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_path(provider,
                                    (std::string(OVEL_SOURCE_DIR) + "/data/" + file).c_str());
    gtk_style_context_add_provider_for_display(gdk_display_get_default(),
                                               GTK_STYLE_PROVIDER(provider),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
}

GtkWidget* ViewFixture::findByName(GtkWidget* root, const std::string& name) {
    if (root == nullptr) {
        return nullptr;
    }
    bool matches = false;
    if (GTK_IS_BUTTON(root)) {
        const char* label = gtk_button_get_label(GTK_BUTTON(root));
        matches = label != nullptr && name == label;
    } else if (GTK_IS_LABEL(root)) {
        matches = name == gtk_label_get_text(GTK_LABEL(root));
    }
    if (!matches) {
        const char* label = accessibleLabel(root);
        matches = label != nullptr && name == label;
    }
    if (matches) {
        return root;
    }
    for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GtkWidget* found = findByName(child, name)) {
            return found;
        }
    }
    return nullptr;
}

std::vector<GtkWidget*> ViewFixture::widgetsWhere(GtkWidget* root,
                                                  const std::function<bool(GtkWidget*)>& matches) {
    std::vector<GtkWidget*> found;
    if (matches(root)) {
        found.push_back(root);
    }
    for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        const auto below = widgetsWhere(child, matches);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

} // namespace ovel::test
