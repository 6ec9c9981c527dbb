#pragma once

#include "gutil/GObjectRef.h"
#include "widgets/OrbLayer.h"

#include <gtk/gtk.h>

#include <string>

namespace ovel {

// The frame of a sheet: a dialog of at least `width` × `height` with rounded corners, the
// theme's gradient (styled by .ovel-sheet) and the window's orbs behind its content.
class SheetFrame {
public:
    // `name` is what assistive technologies call the dialog; `cssClass` names the sheet.
    SheetFrame(const std::string& name, const char* cssClass, int width, int height);

    SheetFrame(const SheetFrame&) = delete;
    SheetFrame& operator=(const SheetFrame&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    OrbLayer& orbs() { return orbs_; }
    // Lays `content` over the orbs.
    void setContent(GtkWidget* content);

private:
    OrbLayer orbs_;
    GObjectRef<GtkWidget> root_;
};

} // namespace ovel
