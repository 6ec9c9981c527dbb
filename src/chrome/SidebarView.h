#pragma once

#include "chrome/BookmarksPanel.h"

#include <gtk/gtk.h>

namespace ovel {

class BrowserState;

// The sidebar at the card's leading edge, 220 wide: the bookmarks panel at its top.
class SidebarView {
public:
    explicit SidebarView(BrowserState& state);
    ~SidebarView();

    SidebarView(const SidebarView&) = delete;
    SidebarView& operator=(const SidebarView&) = delete;

    GtkWidget* widget() const { return root_; }

    static constexpr int width = 220;

private:
    BookmarksPanel bookmarks_;
    GtkWidget* root_;
};

} // namespace ovel
