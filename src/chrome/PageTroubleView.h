#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

namespace ovel {

class BrowserState;
class BrowserTab;

// What the page area shows for a tab whose page crashed or hangs: a short heading, a line
// naming the site, and "Reload", which loads the selected tab's page again in a new process.
class CrashedPageView {
public:
    explicit CrashedPageView(BrowserState& state);
    ~CrashedPageView();

    CrashedPageView(const CrashedPageView&) = delete;
    CrashedPageView& operator=(const CrashedPageView&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    // Words the message for `tab`: crashed, or not answering.
    void showFor(const BrowserTab& tab);

private:
    BrowserState& state_;
    GObjectRef<GtkWidget> root_;
    GtkWidget* heading_ = nullptr;
    GtkWidget* detail_ = nullptr;
    GSignalConnections signals_;
};

} // namespace ovel
