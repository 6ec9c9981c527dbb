#include "chrome/AddressField.h"

#include "gutil/AccessibleLabel.h"
#include "state/BrowserState.h"

#include <adwaita.h>

namespace ovel {

namespace {

constexpr int maximumWidth = 640;

} // namespace

AddressField::AddressField(BrowserState& state)
    : state_(state), root_(GObjectRef<GtkWidget>::retain(adw_clamp_new())),
      entry_(GObjectRef<GtkWidget>::retain(gtk_entry_new())) {
    // At most 640 wide, centred in whatever the row leaves it.
    adw_clamp_set_maximum_size(ADW_CLAMP(widget()), maximumWidth);
    adw_clamp_set_tightening_threshold(ADW_CLAMP(widget()), maximumWidth);
    adw_clamp_set_child(ADW_CLAMP(widget()), entry_.get());
    gtk_widget_set_hexpand(widget(), TRUE);
    gtk_widget_set_valign(widget(), GTK_ALIGN_CENTER);

    GtkEntry* field = GTK_ENTRY(entry_.get());
    gtk_entry_set_has_frame(field, FALSE);
    gtk_entry_set_placeholder_text(field, "Search or enter website");
    gtk_widget_add_css_class(entry_.get(), "address-field");
    gtk_widget_add_css_class(entry_.get(), "ovel-design-font");
    gtk_widget_set_hexpand(entry_.get(), TRUE);
    setAccessibleLabel(entry_.get(), "Address");

    changedHandler_ = signals_.connect(entry_.get(), "changed", [this](GtkEditable* editable) {
        state_.setAddressText(gtk_editable_get_text(editable));
    });
    signals_.connect(entry_.get(), "activate", [this](GtkEntry* activated) {
        state_.openURL(gtk_editable_get_text(GTK_EDITABLE(activated)));
    });
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    signals_.connect(keys, "key-pressed",
                     [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
                         if (key != GDK_KEY_Escape) {
                             return FALSE;
                         }
                         state_.resetAddressText();
                         return TRUE;
                     });
    gtk_widget_add_controller(entry_.get(), keys);

    connections_.add(
        state_.addressText.changed().connect([this](const std::string& text) { show(text); }));
    show(state_.addressText.get());
}

AddressField::~AddressField() {
    connections_.disconnectAll();
    signals_.disconnectAll();
}

void AddressField::show(const std::string& text) {
    if (text == gtk_editable_get_text(entry())) {
        return;
    }
    // Our own writing is not typing: it must not be sent back to the state.
    g_signal_handler_block(entry_.get(), changedHandler_);
    gtk_editable_set_text(entry(), text.c_str());
    g_signal_handler_unblock(entry_.get(), changedHandler_);
}

void AddressField::focusAndSelectAll() {
    gtk_widget_grab_focus(entry_.get());
    gtk_editable_select_region(entry(), 0, -1);
}

} // namespace ovel
