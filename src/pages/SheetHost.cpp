#include "pages/SheetHost.h"

#include <algorithm>

namespace ovel {

SheetHost::SheetHost(GtkWidget* covered)
    : covered_(covered), layer_(GObjectRef<GtkWidget>::retain(gtk_overlay_new())) {
    g_weak_ref_init(&focusBefore_, nullptr);
    GtkWidget* layer = layer_.get();
    gtk_widget_add_css_class(layer, "ovel-sheet-host");
    gtk_widget_set_visible(layer, FALSE);

    GtkWidget* backdrop = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_add_css_class(backdrop, "ovel-sheet-backdrop");
    gtk_widget_set_hexpand(backdrop, TRUE);
    gtk_widget_set_vexpand(backdrop, TRUE);
    gtk_overlay_set_child(GTK_OVERLAY(layer), backdrop);
    GtkGesture* click = gtk_gesture_click_new();
    signals_.connect(click, "released",
                     [this](GtkGestureClick*, int, double, double) { dismissTop(); });
    gtk_widget_add_controller(backdrop, GTK_EVENT_CONTROLLER(click));

    // Caught on the way down, so a field in the sheet cannot keep Escape to itself.
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    signals_.connect(keys, "key-pressed",
                     [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
                         if (key != GDK_KEY_Escape || shown_.empty()) {
                             return FALSE;
                         }
                         dismissTop();
                         return TRUE;
                     });
    gtk_widget_add_controller(layer, keys);
}

SheetHost::~SheetHost() {
    if (!shown_.empty()) {
        coverContent(false);
    }
    g_weak_ref_clear(&focusBefore_);
}

bool SheetHost::isShowing(GtkWidget* sheet) const {
    return std::any_of(shown_.begin(), shown_.end(),
                       [sheet](const Shown& shown) { return shown.sheet.get() == sheet; });
}

void SheetHost::present(GtkWidget* sheet, std::function<void()> dismiss) {
    if (isShowing(sheet)) {
        return;
    }
    if (shown_.empty()) {
        GtkRoot* root = gtk_widget_get_root(layer_.get());
        g_weak_ref_set(&focusBefore_, root != nullptr ? gtk_root_get_focus(root) : nullptr);
        coverContent(true);
        gtk_widget_set_visible(layer_.get(), TRUE);
    } else {
        gtk_widget_set_visible(shown_.back().sheet.get(), FALSE);
    }
    shown_.push_back({GObjectRef<GtkWidget>::retain(sheet), std::move(dismiss)});
    gtk_widget_set_halign(sheet, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(sheet, GTK_ALIGN_CENTER);
    gtk_widget_set_visible(sheet, TRUE);
    if (gtk_widget_get_parent(sheet) != layer_.get()) {
        gtk_overlay_add_overlay(GTK_OVERLAY(layer_.get()), sheet);
    }
}

void SheetHost::release(GtkWidget* sheet) {
    close(sheet);
    if (gtk_widget_get_parent(sheet) == layer_.get()) {
        gtk_overlay_remove_overlay(GTK_OVERLAY(layer_.get()), sheet);
    }
}

void SheetHost::close(GtkWidget* sheet) {
    const auto found = std::find_if(shown_.begin(), shown_.end(), [sheet](const Shown& shown) {
        return shown.sheet.get() == sheet;
    });
    if (found == shown_.end()) {
        return;
    }
    const bool wasTop = found + 1 == shown_.end();
    const Shown closing = std::move(*found);
    shown_.erase(found);
    gtk_widget_set_visible(sheet, FALSE);
    if (!shown_.empty()) {
        if (wasTop) {
            GtkWidget* top = shown_.back().sheet.get();
            gtk_widget_set_visible(top, TRUE);
            gtk_widget_child_focus(top, GTK_DIR_TAB_FORWARD);
        }
        return;
    }
    gtk_widget_set_visible(layer_.get(), FALSE);
    coverContent(false);
    if (auto* before = static_cast<GtkWidget*>(g_weak_ref_get(&focusBefore_))) {
        if (gtk_widget_get_root(before) == gtk_widget_get_root(layer_.get())) {
            gtk_widget_grab_focus(before);
        }
        g_object_unref(before);
    }
    g_weak_ref_set(&focusBefore_, nullptr);
}

void SheetHost::dismissTop() {
    if (!shown_.empty()) {
        // Copied: the dismissal closes the sheet, which drops its entry.
        const std::function<void()> dismiss = shown_.back().dismiss;
        dismiss();
    }
}

void SheetHost::coverContent(bool covered) {
    gtk_widget_set_can_focus(covered_, !covered);
    gtk_widget_set_can_target(covered_, !covered);
    gtk_accessible_update_state(GTK_ACCESSIBLE(covered_), GTK_ACCESSIBLE_STATE_HIDDEN, covered, -1);
}

} // namespace ovel
