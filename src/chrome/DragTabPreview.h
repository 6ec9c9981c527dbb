#pragma once

#include "chrome/TabLabelParts.h"
#include "gutil/GObjectRef.h"

#include <gtk/gtk.h>

namespace ovel {

class BrowserTab;

// What follows the pointer while a tab is dragged: the tab's pin mark, favicon and title on a
// glass capsule.
class DragTabPreview {
public:
    explicit DragTabPreview(const BrowserTab& tab);

    DragTabPreview(const DragTabPreview&) = delete;
    DragTabPreview& operator=(const DragTabPreview&) = delete;

    GtkWidget* widget() const { return root_.get(); }

private:
    GObjectRef<GtkWidget> root_;
    TabLabelParts parts_;
};

} // namespace ovel
