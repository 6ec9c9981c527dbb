#include "pages/SitePermissionEditor.h"

#include "gutil/AccessibleLabel.h"

#include <string>

namespace ovel {

namespace {

std::string segmentLabel(PermissionSetting setting) {
    std::string label(rawValue(setting));
    label[0] = static_cast<char>(label[0] - 'a' + 'A');
    return label;
}

} // namespace

SitePermissionEditor::SitePermissionEditor(const SitePermissionRule& rule,
                                           std::function<void(const SitePermissionRule&)> onChange,
                                           std::function<void()> onReset)
    : rule_(rule), onChange_(std::move(onChange)), onReset_(std::move(onReset)),
      root_(GObjectRef<GtkWidget>::retain(gtk_box_new(GTK_ORIENTATION_VERTICAL, 6))) {
    GtkWidget* root = root_.get();
    gtk_widget_add_css_class(root, "ovel-site-permission-editor");
    gtk_box_append(GTK_BOX(root), row("Camera", &SitePermissionRule::camera));
    gtk_box_append(GTK_BOX(root), row("Microphone", &SitePermissionRule::microphone));
    gtk_box_append(GTK_BOX(root), row("Location", &SitePermissionRule::location));
    gtk_box_append(GTK_BOX(root), row("Notifications", &SitePermissionRule::notifications));
    GtkWidget* allowAds = gtk_check_button_new_with_label("Allow ads on this site");
    setAccessibleLabel(allowAds, "Allow ads on this site");
    gtk_check_button_set_active(GTK_CHECK_BUTTON(allowAds), rule_.allowAds);
    gtk_box_append(GTK_BOX(root), allowAds);
    signals_.connect(allowAds, "toggled", [this](GtkCheckButton* check) {
        rule_.allowAds = gtk_check_button_get_active(check);
    });

    GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    GtkWidget* apply = gtk_button_new_with_label("Apply");
    gtk_widget_add_css_class(apply, "suggested-action");
    setAccessibleLabel(apply, "Apply");
    GtkWidget* reset = gtk_button_new_with_label("Reset");
    setAccessibleLabel(reset, "Reset");
    gtk_box_append(GTK_BOX(buttons), apply);
    gtk_box_append(GTK_BOX(buttons), reset);
    gtk_box_append(GTK_BOX(root), buttons);
    // Copies: the page may make a new editor (and drop this one) while handling them.
    signals_.connect(apply, "clicked", [this](GtkButton*) {
        const auto onChange = onChange_;
        onChange(SitePermissionRule(rule_));
    });
    signals_.connect(reset, "clicked", [this](GtkButton*) {
        const auto onReset = onReset_;
        onReset();
    });
}

GtkWidget* SitePermissionEditor::row(const char* title,
                                     PermissionSetting SitePermissionRule::*field) {
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    GtkWidget* label = gtk_label_new(title);
    gtk_widget_add_css_class(label, "caption");
    gtk_widget_set_hexpand(label, true);
    gtk_widget_set_halign(label, GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(row), label);

    GtkWidget* segments = GTK_WIDGET(
        g_object_new(GTK_TYPE_BOX, "orientation", GTK_ORIENTATION_HORIZONTAL, "homogeneous", TRUE,
                     "accessible-role", GTK_ACCESSIBLE_ROLE_RADIO_GROUP, nullptr));
    gtk_widget_add_css_class(segments, "linked");
    gtk_widget_add_css_class(segments, "ovel-segmented");
    gtk_widget_set_size_request(segments, 170, -1);
    setAccessibleLabel(segments, title);
    GtkToggleButton* first = nullptr;
    for (PermissionSetting setting : allPermissionSettings) {
        const std::string text = segmentLabel(setting);
        GtkWidget* segment = gtk_toggle_button_new_with_label(text.c_str());
        setAccessibleLabel(segment, text);
        if (first == nullptr) {
            first = GTK_TOGGLE_BUTTON(segment);
        } else {
            gtk_toggle_button_set_group(GTK_TOGGLE_BUTTON(segment), first);
        }
        gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(segment), rule_.*field == setting);
        gtk_box_append(GTK_BOX(segments), segment);
        signals_.connect(segment, "toggled", [this, field, setting](GtkToggleButton* button) {
            if (gtk_toggle_button_get_active(button)) {
                rule_.*field = setting;
            }
        });
    }
    gtk_box_append(GTK_BOX(row), segments);
    return row;
}

} // namespace ovel
