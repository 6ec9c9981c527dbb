#pragma once

#include "chrome/PageTroubleView.h"
#include "gutil/GLibTimer.h"
#include "gutil/GObjectRef.h"
#include "presentation/InternalPages.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ovel {

class BrowserState;
class BrowserTab;

// The page area: shows the selected tab's native internal page when its display address names
// one, else the tab's web view. The widget of a tab comes from a resolver the application hands
// in, so this view never sees the engine, and the internal pages come from a maker it hands in,
// so this view never sees the pages' layer. A tab's web view is only moved in and out, never
// re-created, so a tab selected again shows its page as it was left; an internal page is made
// afresh for each tab that shows it. A tab whose page crashed, hangs or failed to load shows a
// message in place of its web view until the page is loaded again.
class WebContainer {
public:
    using WidgetResolver = std::function<GtkWidget*(const BrowserTab&)>;
    // A native page made for the page area: its widget, and whatever keeps the view alive.
    struct PageView {
        GtkWidget* widget = nullptr;
        std::shared_ptr<void> owner;
    };
    using PageMaker = std::function<PageView(InternalPage)>;

    WebContainer(BrowserState& state, WidgetResolver resolver, PageMaker pages = nullptr);
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
    PageMaker pages_;
    // The internal page on show, for the tab on show, if any.
    std::optional<InternalPage> shownRoute_;
    PageView shownPageView_;
    // Pages that left the screen, let go of once the event that replaced them is over: a page's
    // own button may be what sent it away.
    std::vector<std::shared_ptr<void>> retiring_;
    PageTroubleView troublePage_;
    GLibTimer retire_;
    GObjectRef<GtkWidget> root_;
    GObjectRef<GtkWidget> shown_;
    Connections connections_;
};

} // namespace ovel
