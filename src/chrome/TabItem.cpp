#include "chrome/TabItem.h"

#include "chrome/DrawnBin.h"
#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"
#include "state/BrowserState.h"

#include <string>
#include <utility>

namespace ovel {

namespace {

constexpr Spring hoverSpring{0.25, 0.84};
constexpr double hoverScale = 1.015;
// The drop indicators: 3 by 24 points, 8 points outside the capsule.
constexpr int indicatorWidth = 3;
constexpr int indicatorHeight = 24;
constexpr int indicatorOffset = 8;

double mix(double from, double to, double progress) {
    return from + (to - from) * progress;
}

// The capsule grown about its centre by the hover, over a shadow that deepens with it.
void drawLifted(GtkWidget* self, GtkWidget* child, GtkSnapshot* snapshot, double hover) {
    const float width = static_cast<float>(gtk_widget_get_width(self));
    const float height = static_cast<float>(gtk_widget_get_height(self));
    const float scale = static_cast<float>(mix(1.0, hoverScale, hover));
    gtk_snapshot_save(snapshot);
    const graphene_point_t centre{width / 2, height / 2};
    const graphene_point_t corner{-width / 2, -height / 2};
    gtk_snapshot_translate(snapshot, &centre);
    gtk_snapshot_scale(snapshot, scale, scale);
    gtk_snapshot_translate(snapshot, &corner);
    graphene_rect_t bounds;
    graphene_rect_init(&bounds, 0, 0, width, height);
    GskRoundedRect capsule;
    gsk_rounded_rect_init_from_rect(&capsule, &bounds, height / 2);
    const GdkRGBA shadow{0, 0, 0, 0.15f};
    gtk_snapshot_append_outset_shadow(snapshot, &capsule, &shadow, 0,
                                      static_cast<float>(mix(3, 6, hover)), 0,
                                      static_cast<float>(mix(6, 12, hover)));
    gtk_widget_snapshot_child(self, child, snapshot);
    gtk_snapshot_restore(snapshot);
}

} // namespace

TabItem::TabItem(BrowserState& state, std::shared_ptr<BrowserTab> tab)
    : state_(state), tab_(std::move(tab)),
      // A tab for assistive technologies, named by its title.
      capsule_(GObjectRef<GtkWidget>::retain(GTK_WIDGET(
          g_object_new(GTK_TYPE_BOX, "orientation", GTK_ORIENTATION_HORIZONTAL, "spacing", 8,
                       "accessible-role", GTK_ACCESSIBLE_ROLE_TAB, nullptr)))),
      overlay_(GObjectRef<GtkWidget>::retain(gtk_overlay_new())), parts_(GTK_BOX(capsule_.get())),
      menu_(GObjectRef<GMenu>::adopt(g_menu_new())),
      actions_(GObjectRef<GSimpleActionGroup>::adopt(g_simple_action_group_new())) {
    gtk_widget_add_css_class(capsule(), "tab-item");
    gtk_widget_set_valign(capsule(), GTK_ALIGN_CENTER);
    gtk_widget_set_overflow(capsule(), GTK_OVERFLOW_HIDDEN);

    closeButton_ = gtk_button_new_from_icon_name(iconNameForGtk("xmark"));
    gtk_button_set_has_frame(GTK_BUTTON(closeButton_), FALSE);
    gtk_widget_add_css_class(closeButton_, "tab-close");
    gtk_widget_set_valign(closeButton_, GTK_ALIGN_CENTER);
    gtk_widget_set_focus_on_click(closeButton_, FALSE);
    gtk_box_append(GTK_BOX(capsule()), closeButton_);
    signals_.connect(closeButton_, "clicked", [this](GtkButton*) { state_.closeTab(index()); });

    // The indicators sit outside the capsule, where the overlay places them by hand.
    gtk_overlay_set_child(GTK_OVERLAY(overlay_.get()), capsule());
    before_ = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    after_ = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    for (GtkWidget* indicator : {before_, after_}) {
        gtk_widget_add_css_class(indicator, "tab-drop-indicator");
        gtk_widget_set_can_target(indicator, FALSE);
        gtk_widget_set_visible(indicator, FALSE);
        gtk_overlay_add_overlay(GTK_OVERLAY(overlay_.get()), indicator);
    }
    signals_.connect(
        overlay_.get(), "get-child-position",
        [this](GtkOverlay* overlay, GtkWidget* child, GdkRectangle* place) -> gboolean {
            const int width = gtk_widget_get_width(GTK_WIDGET(overlay));
            const int height = gtk_widget_get_height(GTK_WIDGET(overlay));
            place->x =
                child == before_ ? -indicatorOffset : width - indicatorWidth + indicatorOffset;
            place->y = (height - indicatorHeight) / 2;
            place->width = indicatorWidth;
            place->height = indicatorHeight;
            return TRUE;
        });

    root_ = GObjectRef<GtkWidget>::retain(drawnBinNew(
        overlay_.get(), [this](GtkWidget* self, GtkWidget* child, GtkSnapshot* snapshot) {
            drawLifted(self, child, snapshot, hover_ ? hover_->value() : 0);
        }));
    gtk_widget_add_css_class(widget(), "tab-item-lift");
    hover_ = std::make_unique<AnimatedValue>(widget(), 0.0,
                                             [this](double) { gtk_widget_queue_draw(widget()); });

    gtk_widget_insert_action_group(widget(), "tab", menuActions());
    for (const char* name : {"pin", "move-left", "move-right", "close"}) {
        GSimpleAction* action = g_simple_action_new(name, nullptr);
        const std::string which = name;
        signals_.connect(action, "activate", [this, which](GSimpleAction*, GVariant*) {
            const int at = index();
            if (which == "pin") {
                state_.togglePinTab(at);
            } else if (which == "move-left") {
                state_.moveTabLeft(at);
            } else if (which == "move-right") {
                state_.moveTabRight(at);
            } else {
                state_.closeTab(at);
            }
        });
        g_action_map_add_action(G_ACTION_MAP(actions_.get()), G_ACTION(action));
        g_object_unref(action);
    }

    connectDragAndDrop(connectGestures());
    connections_.add(state_.dropTargetTabID.changed().connect(
        [this](const std::optional<Uuid>&) { showDropIndicators(); }));
    connections_.add(
        state_.dropInsertAfter.changed().connect([this](bool) { showDropIndicators(); }));

    parts_.showAll(*tab_);
    update(TabField::Title);
    showDropIndicators();
}

TabItem::~TabItem() {
    connections_.disconnectAll();
    signals_.disconnectAll();
    if (popover_ && gtk_widget_get_parent(popover_.get()) != nullptr) {
        gtk_widget_unparent(popover_.get());
    }
    hover_.reset();
}

int TabItem::index() const {
    return state_.indexOfTab(tab_->id());
}

void TabItem::update(TabFields fields) {
    if (fields.has(TabField::Title)) {
        const std::string& title = tab_->title.get();
        parts_.showTitle(title.c_str());
        setAccessibleLabel(capsule(), title);
        setAccessibleLabel(closeButton_, title.empty() ? "Close Tab" : "Close " + title);
    }
    if (fields.has(TabField::Favicon)) {
        parts_.showFavicon(*tab_);
    }
    if (fields.has(TabField::Pinned)) {
        parts_.showPinned(tab_->isPinned.get());
    }
}

void TabItem::setSelected(bool selected) {
    if (selected) {
        gtk_widget_add_css_class(capsule(), "selected");
    } else {
        gtk_widget_remove_css_class(capsule(), "selected");
    }
    gtk_accessible_update_state(GTK_ACCESSIBLE(capsule()), GTK_ACCESSIBLE_STATE_SELECTED,
                                selected ? TRUE : FALSE, -1);
}

void TabItem::showDropIndicators() {
    const bool target = state_.dropTargetTabID.get() == tab_->id();
    const bool after = state_.dropInsertAfter.get();
    gtk_widget_set_visible(before_, target && !after);
    gtk_widget_set_visible(after_, target && after);
}

void TabItem::refreshMenu() {
    const int at = index();
    g_menu_remove_all(menu_.get());
    g_menu_append(menu_.get(), tab_->isPinned.get() ? "Unpin Tab" : "Pin Tab", "tab.pin");
    g_menu_append(menu_.get(), "Move Left", "tab.move-left");
    g_menu_append(menu_.get(), "Move Right", "tab.move-right");
    g_menu_append(menu_.get(), "Close Tab", "tab.close");
    auto enable = [this](const char* name, bool enabled) {
        GAction* action = g_action_map_lookup_action(G_ACTION_MAP(actions_.get()), name);
        g_simple_action_set_enabled(G_SIMPLE_ACTION(action), enabled);
    };
    enable("move-left", state_.canMoveTabLeft(at));
    enable("move-right", state_.canMoveTabRight(at));
}

void TabItem::popUpMenu(double x, double y) {
    refreshMenu();
    if (!popover_) {
        popover_ = GObjectRef<GtkWidget>::retain(gtk_popover_menu_new_from_model(menu()));
        gtk_widget_set_parent(popover_.get(), widget());
        gtk_popover_set_has_arrow(GTK_POPOVER(popover_.get()), FALSE);
        gtk_widget_set_halign(popover_.get(), GTK_ALIGN_START);
    }
    const GdkRectangle at{static_cast<int>(x), static_cast<int>(y), 1, 1};
    gtk_popover_set_pointing_to(GTK_POPOVER(popover_.get()), &at);
    gtk_popover_popup(GTK_POPOVER(popover_.get()));
}

GtkGesture* TabItem::connectGestures() {
    GtkGesture* select = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(select), GDK_BUTTON_PRIMARY);
    signals_.connect(select, "released", [this](GtkGestureClick*, int presses, double, double) {
        if (presses == 1) {
            state_.selectTab(index());
        }
    });
    gtk_widget_add_controller(capsule(), GTK_EVENT_CONTROLLER(select));

    GtkGesture* middle = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(middle), GDK_BUTTON_MIDDLE);
    signals_.connect(middle, "released",
                     [this](GtkGestureClick*, int, double, double) { state_.closeTab(index()); });
    gtk_widget_add_controller(capsule(), GTK_EVENT_CONTROLLER(middle));

    GtkGesture* secondary = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(secondary), GDK_BUTTON_SECONDARY);
    signals_.connect(secondary, "pressed",
                     [this](GtkGestureClick* gesture, int, double x, double y) {
                         gtk_gesture_set_state(GTK_GESTURE(gesture), GTK_EVENT_SEQUENCE_CLAIMED);
                         popUpMenu(x, y);
                     });
    gtk_widget_add_controller(capsule(), GTK_EVENT_CONTROLLER(secondary));

    GtkEventController* motion = gtk_event_controller_motion_new();
    signals_.connect(motion, "enter",
                     [this](GtkEventControllerMotion*, double, double) { hover(true); });
    signals_.connect(motion, "leave", [this](GtkEventControllerMotion*) { hover(false); });
    gtk_widget_add_controller(capsule(), motion);
    return select;
}

void TabItem::hover(bool inside) {
    hover_->animateTo(inside ? 1.0 : 0.0, hoverSpring, state_.smoothAnimations.get());
}

double TabItem::fromLeadingEdge(double x) const {
    // Pointer positions are given from the content's corner, inside the padding and border.
    graphene_rect_t bounds;
    if (!gtk_widget_compute_bounds(capsule(), capsule(), &bounds)) {
        return x;
    }
    return x - bounds.origin.x;
}

void TabItem::connectDragAndDrop(GtkGesture* select) {
    GtkDragSource* source = gtk_drag_source_new();
    gtk_drag_source_set_actions(source, GDK_ACTION_MOVE);
    // A press on a tab belongs to the tab: claimed at once, it is denied to the window handle
    // around the strip, which would otherwise start moving the window when the pointer passes
    // the drag threshold and so end the tab's drag. A press on the close button is the button's.
    signals_.connect(source, "begin", [this](GtkGesture* gesture, GdkEventSequence* sequence) {
        double x = 0;
        double y = 0;
        gtk_gesture_get_point(gesture, sequence, &x, &y);
        GtkWidget* hit = gtk_widget_pick(capsule(), x, y, GTK_PICK_DEFAULT);
        if (hit != nullptr && (hit == closeButton_ || gtk_widget_is_ancestor(hit, closeButton_))) {
            return;
        }
        gtk_gesture_set_sequence_state(gesture, sequence, GTK_EVENT_SEQUENCE_CLAIMED);
    });
    signals_.connect(source, "prepare",
                     [this](GtkDragSource*, double, double) -> GdkContentProvider* {
                         state_.beginTabDrag(tab_->id());
                         return gdk_content_provider_new_typed(G_TYPE_STRING, tab_->id().c_str());
                     });
    signals_.connect(source, "drag-begin", [this](GtkDragSource*, GdkDrag* drag) {
        dragPreview_ = std::make_unique<DragTabPreview>(*tab_);
        gtk_drag_icon_set_child(GTK_DRAG_ICON(gtk_drag_icon_get_for_drag(drag)),
                                dragPreview_->widget());
    });
    signals_.connect(source, "drag-end",
                     [this](GtkDragSource*, GdkDrag*, gboolean) { dragPreview_.reset(); });
    gtk_widget_add_controller(capsule(), GTK_EVENT_CONTROLLER(source));
    // The click that selects shares the claim, so a press without a drag still selects.
    gtk_gesture_group(select, GTK_GESTURE(source));

    GtkDropTarget* target = gtk_drop_target_new(G_TYPE_STRING, GDK_ACTION_MOVE);
    // The pointer's place is read in motion and drop: the one GTK gives on entering is not
    // where the pointer is.
    signals_.connect(target, "enter", [this](GtkDropTarget*, double, double) -> GdkDragAction {
        dropEntering_ = true;
        return GDK_ACTION_MOVE;
    });
    signals_.connect(target, "motion", [this](GtkDropTarget*, double x, double) -> GdkDragAction {
        if (std::exchange(dropEntering_, false)) {
            state_.dropEntered(tab_->id(), fromLeadingEdge(x));
        } else {
            state_.dropUpdated(tab_->id(), fromLeadingEdge(x));
        }
        return GDK_ACTION_MOVE;
    });
    signals_.connect(target, "leave", [this](GtkDropTarget*) {
        dropEntering_ = false;
        state_.dropExited(tab_->id());
    });
    signals_.connect(target, "drop",
                     [this](GtkDropTarget*, const GValue*, double, double) -> gboolean {
                         dropEntering_ = false;
                         return state_.performDrop(tab_->id());
                     });
    gtk_widget_add_controller(capsule(), GTK_EVENT_CONTROLLER(target));
}

} // namespace ovel
