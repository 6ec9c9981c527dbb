#pragma once

#include "chrome/WebContainer.h"

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

    GtkWindow* window() const { return window_; }
    GtkEntry* addressEntry() const { return addressEntry_; }
    const WebContainer& webContainer() const { return *webContainer_; }

private:
    BrowserState& state_;
    GtkWindow* window_;
    GtkEntry* addressEntry_;
    std::unique_ptr<WebContainer> webContainer_;
    Connections connections_;
};

} // namespace ovel
