#pragma once

#include "gutil/GObjectRef.h"
#include "records/Records.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <map>
#include <memory>
#include <vector>

namespace ovel {

class BrowserState;
class IconButton;
class OvelInfoRow;
class OvelInternalPageShell;

// ovel://downloads: one card per download, kept by its id and updated in place, with the
// buttons its status allows; cards slide in and out as downloads come and go.
class OvelDownloadsPageNative {
public:
    explicit OvelDownloadsPageNative(BrowserState& state);
    ~OvelDownloadsPageNative();
    OvelDownloadsPageNative(const OvelDownloadsPageNative&) = delete;
    OvelDownloadsPageNative& operator=(const OvelDownloadsPageNative&) = delete;

    GtkWidget* widget() const;
    // The card shown for a download, or null; a card that is leaving is not shown.
    GtkWidget* cardFor(const Uuid& id) const;

private:
    struct Card;

    void showDownloads(const std::vector<DownloadRecord>& downloads);
    std::unique_ptr<Card> makeCard(const DownloadRecord& record);
    void update(Card& card, const DownloadRecord& record);
    void leave(const Uuid& id);
    static void onLeft(GtkRevealer* revealer, GParamSpec*, gpointer self);

    BrowserState& state_;
    GtkWidget* list_ = nullptr;
    std::unique_ptr<OvelInfoRow> empty_;
    std::map<Uuid, std::unique_ptr<Card>> cards_;
    std::unique_ptr<OvelInternalPageShell> shell_;
    Connections connections_;
};

} // namespace ovel
