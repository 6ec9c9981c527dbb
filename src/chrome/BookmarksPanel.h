#pragma once

#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <map>
#include <string>

namespace ovel {

class BrowserState;

// The sidebar's list of bookmarks under its heading: one plain button per bookmark, in order,
// that loads the bookmark into the selected tab.
class BookmarksPanel {
public:
    explicit BookmarksPanel(BrowserState& state);
    ~BookmarksPanel();

    BookmarksPanel(const BookmarksPanel&) = delete;
    BookmarksPanel& operator=(const BookmarksPanel&) = delete;

    GtkWidget* widget() const { return root_; }

private:
    void showBookmarks();
    void open(const std::string& id);

    BrowserState& state_;
    GtkWidget* root_;
    // One button per bookmark id, kept while the bookmark stays.
    std::map<std::string, GtkWidget*> buttons_;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
