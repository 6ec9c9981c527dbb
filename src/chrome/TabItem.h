#pragma once

#include "chrome/DragTabPreview.h"
#include "chrome/TabLabelParts.h"
#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/BrowserTab.h"
#include "web/Connections.h"
#include "widgets/AnimatedValue.h"

#include <gtk/gtk.h>

#include <memory>

namespace ovel {

class BrowserState;

// One tab of the strip: pin mark, favicon, title and close button on a capsule. A click
// selects the tab, a middle click closes it, a right click opens its menu; the capsule is a
// drag source carrying the tab's id and a drop target for other tabs.
class TabItem {
public:
    TabItem(BrowserState& state, std::shared_ptr<BrowserTab> tab);
    ~TabItem();

    TabItem(const TabItem&) = delete;
    TabItem& operator=(const TabItem&) = delete;

    GtkWidget* widget() const { return root_.get(); }
    // The capsule, without the room the drop indicators take outside it.
    GtkWidget* capsule() const { return capsule_.get(); }
    const BrowserTab& tab() const { return *tab_; }

    // Redraws what the tab's changed fields show.
    void update(TabFields fields);
    void setSelected(bool selected);

    // The context menu, refreshed for the tab's place in the strip; its actions are under the
    // "tab." prefix on the item.
    void refreshMenu();
    void popUpMenu(double x, double y);
    GMenuModel* menu() const { return G_MENU_MODEL(menu_.get()); }
    GActionGroup* menuActions() const { return G_ACTION_GROUP(actions_.get()); }

private:
    int index() const;
    void showDropIndicators();
    // Returns the primary-button click gesture.
    GtkGesture* connectGestures();
    // `select` is the primary-button click that selects the tab; the drag starts from the same
    // press.
    void connectDragAndDrop(GtkGesture* select);
    void hover(bool inside);
    // `x` in the capsule's own coordinates, measured from its outer leading edge.
    double fromLeadingEdge(double x) const;

    BrowserState& state_;
    std::shared_ptr<BrowserTab> tab_;
    GObjectRef<GtkWidget> capsule_;
    GObjectRef<GtkWidget> overlay_;
    GObjectRef<GtkWidget> root_;
    GtkWidget* closeButton_ = nullptr;
    GtkWidget* before_ = nullptr;
    GtkWidget* after_ = nullptr;
    TabLabelParts parts_;
    GObjectRef<GMenu> menu_;
    GObjectRef<GSimpleActionGroup> actions_;
    GObjectRef<GtkWidget> popover_;
    std::unique_ptr<DragTabPreview> dragPreview_;
    // Entered by a drag, and not yet past its first motion, where the entry is decided.
    bool dropEntering_ = false;
    std::unique_ptr<AnimatedValue> hover_;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
