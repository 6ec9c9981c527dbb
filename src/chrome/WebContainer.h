#pragma once

#include "gutil/GObjectRef.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <functional>

namespace ovel {

class BrowserState;
class BrowserTab;

// The page area: shows the selected tab's web view. The widget of a tab comes from a resolver
// the application hands in, so this view never sees the engine. A tab's widget is only moved in
// and out, never re-created, so a tab selected again shows its page as it was left.
class WebContainer {
public:
    using WidgetResolver = std::function<GtkWidget*(const BrowserTab&)>;

    WebContainer(BrowserState& state, WidgetResolver resolver);
    ~WebContainer();

    WebContainer(const WebContainer&) = delete;
    WebContainer& operator=(const WebContainer&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    // The page widget on show, or null.
    GtkWidget* shownPage() const { return shown_.get(); }

private:
    void showSelectedTab();
    void show(GtkWidget* page);

    BrowserState& state_;
    WidgetResolver resolver_;
    GObjectRef<GtkWidget> root_;
    GObjectRef<GtkWidget> shown_;
    Connections connections_;
};

} // namespace ovel
