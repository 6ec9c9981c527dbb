#pragma once

#include "gutil/GSignalConnections.h"
#include "presentation/CommandPalette.h"
#include "web/Connections.h"
#include "widgets/SheetFrame.h"

#include <gtk/gtk.h>

#include <vector>

namespace ovel {

class BrowserState;
class SheetHost;

// The command palette: a search field over the list of commands, tabs and workspaces that match
// it. Shown on `host` while the state's showCommandPalette is set; any way of closing it clears
// the flag. Return runs the first entry, a row runs its own; either closes the palette.
class CommandPaletteSheet {
public:
    // `host` outlives the sheet.
    CommandPaletteSheet(BrowserState& state, SheetHost& host);
    ~CommandPaletteSheet();
    CommandPaletteSheet(const CommandPaletteSheet&) = delete;
    CommandPaletteSheet& operator=(const CommandPaletteSheet&) = delete;

    GtkWidget* widget() const { return frame_.widget(); }

private:
    // One button per entry of the full list, relabelled when the state changes; a query only
    // hides the rows that do not match, so typing lays out no text.
    struct Row {
        GtkWidget* button;
        GtkWidget* icon;
        GtkWidget* title;
        GtkWidget* subtitle;
    };

    void showFlagChanged(bool show);
    void dismiss();
    // Rebuilds the full list from the state, then filters it.
    void rebuild();
    // Shows the rows of the entries that match the query, hides the others.
    void filter();
    void runEntry(const CommandPaletteAction& action);
    void executePrimary();
    Row& rowAt(std::size_t index);
    GtkWidget* firstRow() const;

    BrowserState& state_;
    SheetHost& host_;
    SheetFrame frame_;
    GtkWidget* entry_ = nullptr;
    GtkWidget* list_ = nullptr;
    GtkWidget* scroller_ = nullptr;
    gulong entryChanged_ = 0;
    std::vector<Row> rows_;
    // The full list, as the rows show it.
    std::vector<CommandPaletteAction> actions_;
    std::size_t firstShown_ = 0;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
