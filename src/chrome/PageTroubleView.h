#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

namespace ovel {

class BrowserState;
class BrowserTab;

// What the page area shows for a tab whose page crashed, hangs or failed to load: a short
// heading, a line naming the site, and a button that loads the selected tab's page again
// ("Reload", in a new process; "Try Again" for the address that failed).
class PageTroubleView {
public:
    explicit PageTroubleView(BrowserState& state);
    ~PageTroubleView();

    PageTroubleView(const PageTroubleView&) = delete;
    PageTroubleView& operator=(const PageTroubleView&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    // Words the message for `tab`: crashed, not answering, or failed to load.
    void showFor(const BrowserTab& tab);

private:
    BrowserState& state_;
    GObjectRef<GtkWidget> root_;
    GtkWidget* heading_ = nullptr;
    GtkWidget* detail_ = nullptr;
    GtkWidget* button_ = nullptr;
    GSignalConnections signals_;
};

} // namespace ovel
