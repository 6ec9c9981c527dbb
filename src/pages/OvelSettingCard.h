#pragma once

#include "gutil/GObjectRef.h"

#include <gtk/gtk.h>

#include <string>

namespace ovel {

// A titled card grouping related controls inside an internal page.
class OvelSettingCard {
public:
    OvelSettingCard(const std::string& title, GtkWidget* content);

    GtkWidget* widget() const { return root_.get(); }
    void setTitle(const std::string& title);
    GtkWidget* titleLabel() const { return title_; }

private:
    GObjectRef<GtkWidget> root_;
    GtkWidget* title_;
};

} // namespace ovel
