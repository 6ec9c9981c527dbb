#pragma once

#include "chrome/WebContainer.h"

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <memory>

namespace ovel {

class BrowserState;

// The one browser window: an address entry over the page area.
class BrowserWindow {
public:
    BrowserWindow(GtkApplication* application, BrowserState& state,
                  WebContainer::WidgetResolver resolver);
    ~BrowserWindow();

    BrowserWindow(const BrowserWindow&) = delete;
    BrowserWindow& operator=(const BrowserWindow&) = delete;

    GtkWindow* window() const { return window_.get(); }
    GtkEntry* addressEntry() const { return addressEntry_.get(); }
    const WebContainer& webContainer() const { return *webContainer_; }

private:
    BrowserState& state_;
    GObjectRef<GtkWindow> window_;
    GObjectRef<GtkEntry> addressEntry_;
    std::unique_ptr<WebContainer> webContainer_;
    Connections connections_;
    GSignalConnections signals_;
};

} // namespace ovel
