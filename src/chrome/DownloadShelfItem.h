#pragma once

#include "gutil/GSignalConnections.h"
#include "records/Records.h"

#include <gtk/gtk.h>

namespace ovel {

class BrowserState;

// One download on the shelf: its status icon, file name and status, a button that shows the
// file in the file manager when it has one, and the controls its status allows.
class DownloadShelfItem {
public:
    DownloadShelfItem(BrowserState& state, const DownloadRecord& item);
    ~DownloadShelfItem();

    DownloadShelfItem(const DownloadShelfItem&) = delete;
    DownloadShelfItem& operator=(const DownloadShelfItem&) = delete;

    GtkWidget* widget() const { return root_; }
    // Shows the record's new state; rebuilds only when what it shows changed.
    void update(const DownloadRecord& item);

private:
    void build();
    GtkWidget* iconButton(std::string_view symbol, const char* label, GCallback clicked);

    BrowserState& state_;
    DownloadRecord item_;
    GtkWidget* root_;
    GSignalConnections signals_;
};

} // namespace ovel
