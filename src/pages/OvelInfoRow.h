#pragma once

#include "gutil/GObjectRef.h"

#include <gtk/gtk.h>

#include <string>

namespace ovel {

// One full-width line of text in a small rounded box.
class OvelInfoRow {
public:
    explicit OvelInfoRow(const std::string& text);

    GtkWidget* widget() const { return root_.get(); }
    void setText(const std::string& text);

private:
    GObjectRef<GtkWidget> root_;
    GtkWidget* label_;
};

} // namespace ovel
