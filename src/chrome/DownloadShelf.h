#pragma once

#include "chrome/DownloadShelfItem.h"
#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <map>
#include <memory>
#include <string>

namespace ovel {

class BrowserState;

// The strip of downloads at the bottom of the card: a "Downloads" header with "Clear", and
// the first eight downloads side by side, one item each, kept by id across updates.
class DownloadShelf {
public:
    explicit DownloadShelf(BrowserState& state);
    ~DownloadShelf();

    DownloadShelf(const DownloadShelf&) = delete;
    DownloadShelf& operator=(const DownloadShelf&) = delete;

    GtkWidget* widget() const { return root_; }

private:
    void showDownloads();

    BrowserState& state_;
    GtkWidget* root_;
    GtkWidget* row_;
    std::map<std::string, std::unique_ptr<DownloadShelfItem>> items_;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
