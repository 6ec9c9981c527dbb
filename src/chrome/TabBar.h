#pragma once

#include "chrome/TabItem.h"
#include "gutil/GLibTimer.h"
#include "gutil/GObjectRef.h"
#include "state/TabList.h"
#include "web/Connections.h"
#include "widgets/AnimatedValue.h"
#include "widgets/IconButton.h"

#include <gtk/gtk.h>

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace ovel {

class BrowserState;
struct SelectionChange;

// The tab strip: one TabItem per tab, in strip order, then the new-tab button, in a row that
// scrolls sideways without scroll bars. It follows the tab list step by step, keeping each
// tab's item (a moved tab keeps its widget), and keeps the selected tab in view. The selected
// tab's highlight is drawn by the strip and glides from item to item on a spring.
class TabBar {
public:
    explicit TabBar(BrowserState& state);
    ~TabBar();

    TabBar(const TabBar&) = delete;
    TabBar& operator=(const TabBar&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    // The item showing the tab `id`, or null.
    TabItem* itemFor(const Uuid& id) const;
    // The items' widgets in the order the strip shows them.
    std::vector<GtkWidget*> itemWidgets() const;
    // Where the selection's highlight was last drawn, in the strip's coordinates.
    std::optional<graphene_rect_t> highlightFrame() const { return highlightDrawn_; }
    // The selected item's capsule, in the strip's coordinates.
    std::optional<graphene_rect_t> selectedBounds() const;

private:
    void follow(const TabListChange& change);
    void rebuild();
    std::unique_ptr<TabItem> makeItem(const std::shared_ptr<BrowserTab>& tab);
    void placeItems();
    void retire(std::unique_ptr<TabItem> item);
    void selectionMoved(const SelectionChange& change);
    void markSelection();
    void scrollSelectedIntoView();
    void drawStrip(GtkWidget* self, GtkWidget* child, GtkSnapshot* snapshot);

    BrowserState& state_;
    GObjectRef<GtkWidget> root_;
    GtkWidget* row_ = nullptr;
    GtkWidget* strip_ = nullptr;
    IconButton newTabButton_;
    // The strip's items in order, each with its tab's id.
    std::vector<std::pair<Uuid, std::unique_ptr<TabItem>>> items_;
    // Items already taken out, kept until the event that closed them is over.
    std::vector<std::unique_ptr<TabItem>> retired_;
    GLibTimer retiredCleanup_;
    Uuid selectedTab_;
    // The highlight glides from where it was drawn last to the selected item.
    std::optional<graphene_rect_t> highlightFrom_;
    std::optional<graphene_rect_t> highlightDrawn_;
    std::unique_ptr<AnimatedValue> highlight_;
    guint scrollTick_ = 0;
    int scrollFrames_ = 0;
    Connections connections_;
};

} // namespace ovel
