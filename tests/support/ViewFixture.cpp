#include "support/ViewFixture.h"

#include "gutil/AccessibleLabel.h"

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
