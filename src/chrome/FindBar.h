#pragma once

#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

namespace ovel {

class BrowserState;

// Find in page, under the toolbar: the search field bound both ways to the find text, "Find"
// (and Return) to run the search, "Done" to hide the bar and clear the text.
class FindBar {
public:
    explicit FindBar(BrowserState& state);
    ~FindBar();

    FindBar(const FindBar&) = delete;
    FindBar& operator=(const FindBar&) = delete;

    GtkWidget* widget() const { return root_; }
    GtkEntry* field() const { return field_; }

private:
    void showFindText();

    BrowserState& state_;
    GtkWidget* root_;
    GtkEntry* field_;
    bool showingFindText_ = false;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
