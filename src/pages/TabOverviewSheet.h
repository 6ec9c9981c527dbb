#pragma once

#include "gutil/GSignalConnections.h"
#include "records/Records.h"
#include "web/Connections.h"
#include "widgets/SheetFrame.h"

#include <gtk/gtk.h>

#include <map>
#include <memory>

namespace ovel {

class BrowserState;
class BrowserTab;
class SheetHost;

// The tab overview: every open tab as a card in a grid, narrowed by a search on title or host.
// Shown on `host` while the state's showTabOverview is set. A card selects its tab and closes
// the overview; its close button closes the tab and leaves the overview open. One card per tab,
// kept by the tab's id; cards follow the tab list while the overview shows and catch up when it
// opens.
class TabOverviewSheet {
public:
    // `host` outlives the sheet.
    TabOverviewSheet(BrowserState& state, SheetHost& host);
    ~TabOverviewSheet();
    TabOverviewSheet(const TabOverviewSheet&) = delete;
    TabOverviewSheet& operator=(const TabOverviewSheet&) = delete;

    GtkWidget* widget() const { return frame_.widget(); }

private:
    struct Card {
        GtkWidget* child;
        GtkWidget* button;
        GtkWidget* title;
        GtkWidget* host;
        GtkWidget* close;
        GSignalConnections signals;
    };

    void showFlagChanged(bool show);
    bool isShowing() const;
    // Brings the cards in line with the tab list: new tabs get cards, closed ones lose theirs,
    // moved ones move; then the filter is applied again.
    void syncCards();
    void updateCard(Card& card, const BrowserTab& tab);
    void applyFilter();
    std::unique_ptr<Card> makeCard(const Uuid& id);
    void addHeaderButton(GtkWidget* header, const char* label, const char* cssClass,
                         void (TabOverviewSheet::*action)());
    void closeOthers();
    void dedupe();
    void newTab();
    void dismiss();

    BrowserState& state_;
    SheetHost& host_;
    SheetFrame frame_;
    GtkWidget* entry_ = nullptr;
    GtkWidget* grid_ = nullptr;
    GtkWidget* scroller_ = nullptr;
    gulong entryChanged_ = 0;
    std::map<Uuid, std::unique_ptr<Card>> cards_;
    // Set when the tabs changed while the overview was closed.
    bool stale_ = true;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
