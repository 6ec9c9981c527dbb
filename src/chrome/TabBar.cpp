#include "chrome/TabBar.h"

#include "chrome/DrawnBin.h"
#include "state/BrowserState.h"

#include <algorithm>

namespace ovel {

namespace {

constexpr Spring highlightSpring{0.35, 0.86};
constexpr float highlightRadius = 20;

float mix(float from, float to, double progress) {
    return from + (to - from) * static_cast<float>(progress);
}

} // namespace

TabBar::TabBar(BrowserState& state)
    : state_(state), root_(GObjectRef<GtkWidget>::retain(gtk_scrolled_window_new())),
      newTabButton_("plus", {"New Tab"}, [this] { state_.newTab(); }) {
    GtkScrolledWindow* scroller = GTK_SCROLLED_WINDOW(widget());
    // Scrolls sideways by wheel or touchpad, without scroll bars.
    gtk_scrolled_window_set_policy(scroller, GTK_POLICY_EXTERNAL, GTK_POLICY_NEVER);
    gtk_scrolled_window_set_has_frame(scroller, FALSE);
    gtk_widget_add_css_class(widget(), "tab-bar");
    gtk_widget_set_hexpand(widget(), TRUE);

    row_ =
        GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "orientation", GTK_ORIENTATION_HORIZONTAL, "spacing",
                                8, "accessible-role", GTK_ACCESSIBLE_ROLE_TAB_LIST, nullptr));
    gtk_widget_add_css_class(row_, "tab-bar-row");
    gtk_widget_set_valign(row_, GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(row_), newTabButton_.widget());
    strip_ = drawnBinNew(row_, [this](GtkWidget* self, GtkWidget* child, GtkSnapshot* snapshot) {
        drawStrip(self, child, snapshot);
    });
    gtk_widget_set_halign(strip_, GTK_ALIGN_START);
    // Items keep their natural width; the strip scrolls instead of squeezing them.
    GtkWidget* viewport = gtk_viewport_new(nullptr, nullptr);
    gtk_scrollable_set_hscroll_policy(GTK_SCROLLABLE(viewport), GTK_SCROLL_NATURAL);
    gtk_viewport_set_child(GTK_VIEWPORT(viewport), strip_);
    gtk_scrolled_window_set_child(scroller, viewport);
    highlight_ = std::make_unique<AnimatedValue>(strip_, 1.0,
                                                 [this](double) { gtk_widget_queue_draw(strip_); });

    connections_.add(state_.tabs.changed().connect([this](const TabListChange& c) { follow(c); }));
    connections_.add(state_.selectionChanged.connect(
        [this](const SelectionChange& change) { selectionMoved(change); }));
    connections_.add(state_.tabChanged.connect([this](const BrowserTab& tab, TabFields fields) {
        if (TabItem* item = itemFor(tab.id())) {
            item->update(fields);
        }
    }));
    rebuild();
    scrollSelectedIntoView();
}

TabBar::~TabBar() {
    connections_.disconnectAll();
    if (scrollTick_ != 0) {
        gtk_widget_remove_tick_callback(widget(), scrollTick_);
    }
    highlight_.reset();
    for (auto& [id, item] : items_) {
        gtk_box_remove(GTK_BOX(row_), item->widget());
    }
}

TabItem* TabBar::itemFor(const Uuid& id) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&id](const auto& entry) { return entry.first == id; });
    return found == items_.end() ? nullptr : found->second.get();
}

std::vector<GtkWidget*> TabBar::itemWidgets() const {
    std::vector<GtkWidget*> widgets;
    for (GtkWidget* child = gtk_widget_get_first_child(row_); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (child != newTabButton_.widget()) {
            widgets.push_back(child);
        }
    }
    return widgets;
}

std::unique_ptr<TabItem> TabBar::makeItem(const std::shared_ptr<BrowserTab>& tab) {
    auto item = std::make_unique<TabItem>(state_, tab);
    gtk_box_insert_child_after(GTK_BOX(row_), item->widget(), nullptr);
    return item;
}

void TabBar::rebuild() {
    for (auto& [id, item] : items_) {
        gtk_box_remove(GTK_BOX(row_), item->widget());
        retire(std::move(item));
    }
    items_.clear();
    for (const auto& tab : state_.tabs.get()) {
        items_.emplace_back(tab->id(), makeItem(tab));
    }
    placeItems();
    selectedTab_ = {};
    highlightFrom_.reset();
    markSelection();
}

void TabBar::follow(const TabListChange& change) {
    // Replays the steps on the items, with an empty place for each inserted tab; the places
    // are filled from the final list, where they have landed once every step is replayed.
    bool inserted = false;
    for (const TabListChange::Step& step : change.steps) {
        switch (step.kind) {
        case TabListChange::Kind::Replaced:
            rebuild();
            return;
        case TabListChange::Kind::Inserted:
            items_.insert(items_.begin() + step.index, {Uuid{}, nullptr});
            inserted = true;
            break;
        case TabListChange::Kind::Removed: {
            auto& entry = items_.at(static_cast<std::size_t>(step.index));
            if (entry.second) {
                gtk_box_remove(GTK_BOX(row_), entry.second->widget());
                retire(std::move(entry.second));
            }
            items_.erase(items_.begin() + step.index);
            break;
        }
        case TabListChange::Kind::Moved: {
            auto entry = std::move(items_.at(static_cast<std::size_t>(step.index)));
            items_.erase(items_.begin() + step.index);
            items_.insert(items_.begin() + step.to, std::move(entry));
            break;
        }
        }
    }
    const auto& tabs = state_.tabs.get();
    if (items_.size() != tabs.size()) {
        rebuild();
        return;
    }
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (!items_[i].second) {
            items_[i] = {tabs[i]->id(), makeItem(tabs[i])};
        }
    }
    placeItems();
    markSelection();
    if (inserted) {
        scrollSelectedIntoView();
    }
}

void TabBar::placeItems() {
    GtkWidget* previous = nullptr;
    for (const auto& [id, item] : items_) {
        if (gtk_widget_get_prev_sibling(item->widget()) != previous) {
            gtk_box_reorder_child_after(GTK_BOX(row_), item->widget(), previous);
        }
        previous = item->widget();
    }
}

void TabBar::retire(std::unique_ptr<TabItem> item) {
    retired_.push_back(std::move(item));
    retiredCleanup_.start(std::chrono::milliseconds(0), [this] { retired_.clear(); });
}

void TabBar::selectionMoved(const SelectionChange& change) {
    if (change.newTab != change.oldTab) {
        // From where the highlight is now, even mid-glide.
        highlightFrom_ = highlightDrawn_;
        highlight_->setValue(0);
        highlight_->animateTo(1.0, highlightSpring, state_.smoothAnimations.get());
    }
    markSelection();
    scrollSelectedIntoView();
}

void TabBar::markSelection() {
    const auto selected = state_.selectedTab();
    const Uuid id = selected ? selected->id() : Uuid{};
    for (const auto& [tabID, item] : items_) {
        item->setSelected(tabID == id);
    }
    selectedTab_ = id;
    gtk_widget_queue_draw(strip_);
}

std::optional<graphene_rect_t> TabBar::selectedBounds() const {
    TabItem* item = itemFor(selectedTab_);
    graphene_rect_t bounds;
    if (item == nullptr || !gtk_widget_compute_bounds(item->capsule(), strip_, &bounds)) {
        return std::nullopt;
    }
    return bounds;
}

void TabBar::drawStrip(GtkWidget* self, GtkWidget* child, GtkSnapshot* snapshot) {
    if (const auto target = selectedBounds()) {
        // The spring restarts from 0 on every change of selection; `highlightFrom_` is where
        // it started.
        graphene_rect_t rect = *target;
        if (highlightFrom_ && highlight_->value() < 1.0) {
            const double progress = highlight_->value();
            graphene_rect_init(&rect, mix(highlightFrom_->origin.x, target->origin.x, progress),
                               mix(highlightFrom_->origin.y, target->origin.y, progress),
                               mix(highlightFrom_->size.width, target->size.width, progress),
                               mix(highlightFrom_->size.height, target->size.height, progress));
        }
        highlightDrawn_ = rect;
        GskRoundedRect rounded;
        gsk_rounded_rect_init_from_rect(&rounded, &rect,
                                        std::min(highlightRadius, rect.size.height / 2));
        const GdkRGBA fill{1, 1, 1, 0.15f};
        gtk_snapshot_push_rounded_clip(snapshot, &rounded);
        gtk_snapshot_append_color(snapshot, &fill, &rect);
        gtk_snapshot_pop(snapshot);
    }
    gtk_widget_snapshot_child(self, child, snapshot);
}

void TabBar::scrollSelectedIntoView() {
    scrollFrames_ = 0;
    if (scrollTick_ != 0) {
        return;
    }
    // A frame lays out after its tick: the second tick sees the items where the change put them.
    scrollTick_ = gtk_widget_add_tick_callback(
        widget(),
        +[](GtkWidget* scroller, GdkFrameClock*, gpointer data) -> gboolean {
            auto* bar = static_cast<TabBar*>(data);
            TabItem* item = bar->itemFor(bar->selectedTab_);
            if (++bar->scrollFrames_ < 2 ||
                (item != nullptr && gtk_widget_get_width(item->capsule()) == 0)) {
                return G_SOURCE_CONTINUE;
            }
            bar->scrollTick_ = 0;
            if (const auto bounds = bar->selectedBounds()) {
                GtkAdjustment* adjustment =
                    gtk_scrolled_window_get_hadjustment(GTK_SCROLLED_WINDOW(scroller));
                const double shown = gtk_adjustment_get_value(adjustment);
                const double page = gtk_adjustment_get_page_size(adjustment);
                const double start = bounds->origin.x - 8;
                const double end = bounds->origin.x + bounds->size.width + 8;
                if (start < shown) {
                    gtk_adjustment_set_value(adjustment, start);
                } else if (end > shown + page) {
                    gtk_adjustment_set_value(adjustment, end - page);
                }
            }
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
}

} // namespace ovel
