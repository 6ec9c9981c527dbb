#pragma once

#include "chrome/ChromeStyle.h"
#include "chrome/DownloadShelf.h"
#include "chrome/FindBar.h"
#include "chrome/SidebarView.h"
#include "chrome/TabBar.h"
#include "chrome/ToolbarView.h"
#include "chrome/WebContainer.h"
#include "gutil/GLibTimer.h"
#include "gutil/GObjectRef.h"
#include "web/Connections.h"
#include "widgets/OrbLayer.h"
#include "widgets/SlideRevealer.h"

#include <gtk/gtk.h>

#include <memory>

namespace ovel {

class BrowserState;

// The whole content of the browser window: the theme's gradient with the breathing orbs, and
// over it one rounded glass card holding, beside the sliding sidebar, the tab strip row (the
// window's drag handle, with the main menu and the window controls at its end), the toolbar row,
// the find bar, the page and the download shelf. Sheets are laid over the card by whoever owns
// them, in overlay().
class BrowserRootView {
public:
    BrowserRootView(BrowserState& state, WebContainer::WidgetResolver resolver,
                    WebContainer::PageMaker pages);
    ~BrowserRootView();

    BrowserRootView(const BrowserRootView&) = delete;
    BrowserRootView& operator=(const BrowserRootView&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    // The layer over everything, for sheets, and the card they cover.
    GtkOverlay* overlay() const { return GTK_OVERLAY(root_.get()); }
    GtkWidget* card() const { return card_; }
    ToolbarView& toolbar() { return toolbar_; }
    TabBar& tabBar() { return tabBar_; }
    GtkEditable* addressEntry() { return toolbar_.addressField().entry(); }
    const WebContainer& webContainer() const { return *webContainer_; }
    OrbLayer& orbs() { return orbs_; }

    SlideRevealer& sidebar() { return sidebar_; }
    SlideRevealer& findBar() { return findBar_; }
    SlideRevealer& downloadShelf() { return downloadShelf_; }
    FindBar& findBarView() { return findBarView_; }

    // The menu button at the end of the tab strip row, before the window controls.
    void setPrimaryMenu(GMenuModel* menu);
    GtkMenuButton* primaryMenuButton() const { return primaryMenuButton_; }

    // The rows that the tab strip and the toolbar fill.
    GtkWidget* tabStripSlot() const { return tabStripSlot_; }
    GtkWidget* toolbarSlot() const { return toolbarSlot_; }

    // While a page is in full screen, the page is all there is: every row and panel of the
    // chrome is hidden and the card loses its inset and rounding.
    void showPageFullscreen(bool fullscreen);

private:
    void applyTheme();
    SlideRevealer::Motion motion() const;

    BrowserState& state_;
    ChromeStyle style_;
    OrbLayer orbs_;
    SlideRevealer sidebar_;
    SlideRevealer findBar_;
    SlideRevealer downloadShelf_;
    std::unique_ptr<WebContainer> webContainer_;
    SidebarView sidebarView_;
    FindBar findBarView_;
    DownloadShelf downloadShelfView_;
    TabBar tabBar_;
    ToolbarView toolbar_;
    GObjectRef<GtkWidget> root_;
    GtkWidget* tabStripSlot_;
    GtkWidget* toolbarSlot_;
    GtkWidget* card_ = nullptr;
    GtkWidget* dragHandle_ = nullptr;
    GtkWidget* toolbarRow_ = nullptr;
    // The window was in full screen of its own (F11) when the page took it.
    bool windowWasFullscreen_ = false;
    GLibTimer refullscreen_;
    GtkMenuButton* primaryMenuButton_;
    Connections connections_;
    BrowserTheme shownTheme_;
};

} // namespace ovel
