#pragma once

#include <gtk/gtk.h>

namespace ovel {

class BrowserTab;

// The pin mark, favicon and title a tab shows, in the tab strip and under a dragged tab. The
// title is plain text: pages choose it.
class TabLabelParts {
public:
    // Appends the three parts to `box`.
    explicit TabLabelParts(GtkBox* box);

    void showPinned(bool pinned);
    void showFavicon(const BrowserTab& tab);
    void showTitle(const char* title);
    void showAll(const BrowserTab& tab);

    GtkWidget* title() const { return title_; }

private:
    GtkWidget* pin_;
    GtkWidget* favicon_;
    GtkWidget* title_;
};

} // namespace ovel
