#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "records/Records.h"
#include "web/Connections.h"

#include <gio/gio.h>
#include <gtk/gtk.h>

#include <memory>
#include <unordered_map>
#include <vector>

namespace ovel {

class BrowserState;
class IconButton;
class OvelInfoRow;
class OvelInternalPageShell;

// ovel://history: the entry count, "Clear History" and the entries, newest first. The entries
// are a GtkListView over a list model that is told exactly which entries came and went, so only
// the rows on screen exist and a visit touches one or two of them.
class OvelHistoryPageNative {
public:
    explicit OvelHistoryPageNative(BrowserState& state);
    ~OvelHistoryPageNative();
    OvelHistoryPageNative(const OvelHistoryPageNative&) = delete;
    OvelHistoryPageNative& operator=(const OvelHistoryPageNative&) = delete;

    GtkWidget* widget() const;
    // The entries' list model (one GtkStringObject holding the entry id per entry).
    GListModel* model() const { return G_LIST_MODEL(entries_.get()); }
    GtkWidget* listView() const { return listView_; }

private:
    struct RowContext;

    void showEntries(const std::vector<HistoryEntry>& entries);
    const HistoryEntry* entryFor(GtkListItem* item) const;
    void setUpRow(GtkListItem* item);
    void bindRow(GtkListItem* item);
    void open(guint position);

    BrowserState& state_;
    std::vector<HistoryEntry> shown_;
    std::unordered_map<Uuid, std::size_t> indexByID_;
    GObjectRef<GListStore> entries_;
    GtkWidget* count_ = nullptr;
    GtkWidget* listView_ = nullptr;
    GtkWidget* scroller_ = nullptr;
    std::unique_ptr<OvelInfoRow> empty_;
    std::unique_ptr<IconButton> clear_;
    std::unique_ptr<OvelInternalPageShell> shell_;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
