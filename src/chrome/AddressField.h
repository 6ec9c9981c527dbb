#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <string>

namespace ovel {

class BrowserState;

// The address field: a capsule entry bound both ways to the state's address text. Return
// opens what was typed; Escape gives back the selected tab's address.
class AddressField {
public:
    explicit AddressField(BrowserState& state);
    ~AddressField();

    AddressField(const AddressField&) = delete;
    AddressField& operator=(const AddressField&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    GtkEditable* entry() const { return GTK_EDITABLE(entry_.get()); }
    // For the keyboard command that jumps to the address field.
    void focusAndSelectAll();

private:
    void show(const std::string& text);

    BrowserState& state_;
    GObjectRef<GtkWidget> root_;
    GObjectRef<GtkWidget> entry_;
    gulong changedHandler_ = 0;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
