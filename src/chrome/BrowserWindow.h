#pragma once

#include "chrome/BrowserRootView.h"
#include "chrome/WebContainer.h"
#include "gutil/GObjectRef.h"

#include <gtk/gtk.h>

#include <memory>

namespace ovel {

class BrowserState;

// The one browser window. It has no title bar of its own: its content, BrowserRootView,
// reaches the top edge, and the tab strip row drags the window and holds its controls.
class BrowserWindow {
public:
    BrowserWindow(GtkApplication* application, BrowserState& state,
                  WebContainer::WidgetResolver resolver, WebContainer::PageMaker pages,
                  GMenuModel* primaryMenu);
    ~BrowserWindow();

    BrowserWindow(const BrowserWindow&) = delete;
    BrowserWindow& operator=(const BrowserWindow&) = delete;

    GtkWindow* window() const { return window_.get(); }
    BrowserRootView& rootView() { return *rootView_; }
    GtkEditable* addressEntry() const { return rootView_->addressEntry(); }
    const WebContainer& webContainer() const { return rootView_->webContainer(); }

private:
    // Held so this object stays safe to destroy after GTK has destroyed the window.
    GObjectRef<GtkWindow> window_;
    std::unique_ptr<BrowserRootView> rootView_;
};

} // namespace ovel
