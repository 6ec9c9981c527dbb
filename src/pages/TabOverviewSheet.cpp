#include "pages/TabOverviewSheet.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"
#include "pages/SheetHost.h"
#include "pages/ThemeOrbs.h"
#include "presentation/TabOverview.h"
#include "presentation/TabSearch.h"
#include "state/BrowserState.h"

#include <set>

namespace ovel {
namespace {

constexpr int cardMinimumWidth = 230;
constexpr int gridSpacing = 14;

GtkWidget* singleLine(const char* cssClass) {
    GtkWidget* label = gtk_label_new(nullptr);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_label_set_single_line_mode(GTK_LABEL(label), TRUE);
    gtk_widget_add_css_class(label, cssClass);
    return label;
}

} // namespace

TabOverviewSheet::TabOverviewSheet(BrowserState& state, SheetHost& host)
    : state_(state), host_(host), frame_("Tab Overview", "ovel-tab-overview", 820, 520) {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 14);
    gtk_widget_add_css_class(content, "ovel-tab-overview-content");
    frame_.setContent(content);

    GtkWidget* header = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_box_append(GTK_BOX(content), header);
    GtkWidget* title = gtk_label_new("Tab Overview");
    gtk_widget_add_css_class(title, "ovel-tab-overview-heading");
    gtk_widget_add_css_class(title, "ovel-design-font");
    gtk_widget_set_hexpand(title, TRUE);
    gtk_label_set_xalign(GTK_LABEL(title), 0);
    gtk_box_append(GTK_BOX(header), title);
    addHeaderButton(header, "Close Others", nullptr, &TabOverviewSheet::closeOthers);
    addHeaderButton(header, "Dedupe", nullptr, &TabOverviewSheet::dedupe);
    addHeaderButton(header, "New Tab", nullptr, &TabOverviewSheet::newTab);
    addHeaderButton(header, "Done", "suggested-action", &TabOverviewSheet::dismiss);

    entry_ = gtk_entry_new();
    gtk_entry_set_placeholder_text(GTK_ENTRY(entry_), "Search tabs by title or host");
    setAccessibleLabel(entry_, "Search tabs by title or host");
    gtk_box_append(GTK_BOX(content), entry_);
    entryChanged_ = signals_.connect(entry_, "changed", [this](GtkEditable*) { applyFilter(); });

    scroller_ = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller_), GTK_POLICY_NEVER,
                                   GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(scroller_), FALSE);
    gtk_widget_set_vexpand(scroller_, TRUE);
    gtk_box_append(GTK_BOX(content), scroller_);
    // As many columns of at least 230 as the width allows, sharing the width evenly.
    grid_ = gtk_flow_box_new();
    gtk_flow_box_set_selection_mode(GTK_FLOW_BOX(grid_), GTK_SELECTION_NONE);
    gtk_flow_box_set_homogeneous(GTK_FLOW_BOX(grid_), TRUE);
    gtk_flow_box_set_column_spacing(GTK_FLOW_BOX(grid_), gridSpacing);
    gtk_flow_box_set_row_spacing(GTK_FLOW_BOX(grid_), gridSpacing);
    gtk_flow_box_set_min_children_per_line(GTK_FLOW_BOX(grid_), 1);
    gtk_flow_box_set_max_children_per_line(GTK_FLOW_BOX(grid_), 64);
    gtk_widget_set_valign(grid_, GTK_ALIGN_START);
    gtk_widget_add_css_class(grid_, "ovel-tab-overview-grid");
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller_), grid_);

    frame_.orbs().setPalette(themeOrbPalette(state_.theme.get()));
    connections_.add(state_.theme.changed().connect(
        [this](BrowserTheme theme) { frame_.orbs().setPalette(themeOrbPalette(theme)); }));
    connections_.add(
        state_.showTabOverview.changed().connect([this](bool show) { showFlagChanged(show); }));
    connections_.add(state_.tabs.changed().connect([this](const TabListChange&) {
        stale_ = true;
        if (isShowing()) {
            syncCards();
        }
    }));
    connections_.add(state_.tabChanged.connect([this](const BrowserTab& tab, TabFields fields) {
        if (!isShowing() || !(fields.has(TabField::Title) || fields.has(TabField::Url))) {
            return;
        }
        if (const auto found = cards_.find(tab.id()); found != cards_.end()) {
            updateCard(*found->second, tab);
            applyFilter();
        }
    }));
    if (state_.showTabOverview.get()) {
        showFlagChanged(true);
    }
}

TabOverviewSheet::~TabOverviewSheet() {
    host_.release(widget());
    // The cards' buttons go with the grid; their handlers go first.
    cards_.clear();
}

void TabOverviewSheet::addHeaderButton(GtkWidget* header, const char* label, const char* cssClass,
                                       void (TabOverviewSheet::*action)()) {
    GtkWidget* button = gtk_button_new_with_label(label);
    gtk_widget_add_css_class(button, cssClass != nullptr ? cssClass : "ovel-sheet-bordered");
    gtk_box_append(GTK_BOX(header), button);
    signals_.connect(button, "clicked", [this, action](GtkButton*) { (this->*action)(); });
}

bool TabOverviewSheet::isShowing() const {
    return host_.isShowing(widget());
}

void TabOverviewSheet::showFlagChanged(bool show) {
    if (!show) {
        host_.close(widget());
        return;
    }
    if (isShowing()) {
        return;
    }
    g_signal_handler_block(entry_, entryChanged_);
    gtk_editable_set_text(GTK_EDITABLE(entry_), "");
    g_signal_handler_unblock(entry_, entryChanged_);
    if (stale_) {
        syncCards();
    } else {
        applyFilter();
    }
    gtk_adjustment_set_value(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller_)),
                             0);
    host_.present(widget(), [this] { dismiss(); });
    gtk_widget_grab_focus(entry_);
}

void TabOverviewSheet::syncCards() {
    stale_ = false;
    const auto& tabs = state_.tabs.get();
    std::set<Uuid> open;
    for (const auto& tab : tabs) {
        open.insert(tab->id());
    }
    for (auto it = cards_.begin(); it != cards_.end();) {
        if (open.count(it->first) == 0) {
            gtk_flow_box_remove(GTK_FLOW_BOX(grid_), it->second->child);
            it = cards_.erase(it);
        } else {
            ++it;
        }
    }
    for (int index = 0; index < static_cast<int>(tabs.size()); ++index) {
        const BrowserTab& tab = *tabs[static_cast<std::size_t>(index)];
        auto& card = cards_[tab.id()];
        if (!card) {
            card = makeCard(tab.id());
            gtk_flow_box_insert(GTK_FLOW_BOX(grid_), card->child, index);
        } else if (gtk_flow_box_child_get_index(GTK_FLOW_BOX_CHILD(card->child)) != index) {
            g_object_ref(card->child);
            gtk_flow_box_remove(GTK_FLOW_BOX(grid_), card->child);
            gtk_flow_box_insert(GTK_FLOW_BOX(grid_), card->child, index);
            g_object_unref(card->child);
        }
        updateCard(*card, tab);
    }
    applyFilter();
}

std::unique_ptr<TabOverviewSheet::Card> TabOverviewSheet::makeCard(const Uuid& id) {
    auto card = std::make_unique<Card>();
    card->child = gtk_flow_box_child_new();
    // The card's own buttons take the focus, not the grid cell around them.
    gtk_widget_set_focusable(card->child, FALSE);
    GtkWidget* overlay = gtk_overlay_new();
    gtk_widget_set_size_request(overlay, cardMinimumWidth, -1);
    gtk_flow_box_child_set_child(GTK_FLOW_BOX_CHILD(card->child), overlay);

    // The whole card is one button; the close button lies over its corner, beside it rather
    // than inside it, so each is a control of its own.
    card->button = gtk_button_new();
    gtk_button_set_has_frame(GTK_BUTTON(card->button), FALSE);
    gtk_widget_add_css_class(card->button, "ovel-tab-overview-card");
    gtk_overlay_set_child(GTK_OVERLAY(overlay), card->button);
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_button_set_child(GTK_BUTTON(card->button), content);
    card->title = singleLine("ovel-tab-overview-card-title");
    gtk_widget_add_css_class(card->title, "ovel-design-font");
    gtk_box_append(GTK_BOX(content), card->title);
    card->host = singleLine("ovel-tab-overview-card-host");
    gtk_box_append(GTK_BOX(content), card->host);
    GtkWidget* preview = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_widget_add_css_class(preview, "ovel-tab-overview-preview");
    gtk_widget_set_size_request(preview, -1, 90);
    GtkWidget* safari = gtk_image_new_from_icon_name(iconNameForGtk("safari"));
    gtk_image_set_pixel_size(GTK_IMAGE(safari), 24);
    gtk_widget_add_css_class(safari, "ovel-sheet-accent");
    gtk_widget_set_vexpand(safari, TRUE);
    gtk_box_append(GTK_BOX(preview), safari);
    gtk_box_append(GTK_BOX(content), preview);

    card->close = gtk_button_new_from_icon_name(iconNameForGtk("xmark.circle.fill"));
    gtk_button_set_has_frame(GTK_BUTTON(card->close), FALSE);
    gtk_widget_add_css_class(card->close, "ovel-tab-overview-close");
    gtk_widget_set_halign(card->close, GTK_ALIGN_END);
    gtk_widget_set_valign(card->close, GTK_ALIGN_START);
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay), card->close);

    // Actions find the tab by id when they run: its index in the full list is the card's offset.
    card->signals.connect(card->button, "clicked", [this, id](GtkButton*) {
        const int offset = state_.indexOfTab(id);
        if (offset >= 0) {
            state_.selectTab(offset);
            dismiss();
        }
    });
    card->signals.connect(card->close, "clicked", [this, id](GtkButton*) {
        const int offset = state_.indexOfTab(id);
        if (offset >= 0) {
            state_.closeTab(offset);
        }
    });
    return card;
}

void TabOverviewSheet::updateCard(Card& card, const BrowserTab& tab) {
    const std::string& title = tab.title.get();
    gtk_label_set_text(GTK_LABEL(card.title), title.c_str());
    gtk_label_set_text(GTK_LABEL(card.host), tabHostOrStartPage(tab).c_str());
    setAccessibleLabel(card.button, title);
    setAccessibleLabel(card.close, "Close " + title);
}

void TabOverviewSheet::applyFilter() {
    std::set<int> shown;
    for (const TabOverviewEntry& entry :
         filteredTabs(state_, gtk_editable_get_text(GTK_EDITABLE(entry_)))) {
        shown.insert(entry.offset);
    }
    const auto& tabs = state_.tabs.get();
    for (int index = 0; index < static_cast<int>(tabs.size()); ++index) {
        if (const auto found = cards_.find(tabs[static_cast<std::size_t>(index)]->id());
            found != cards_.end()) {
            gtk_widget_set_visible(found->second->child, shown.count(index) > 0);
        }
    }
}

void TabOverviewSheet::closeOthers() {
    state_.closeOtherTabs(state_.selectedIndex.get());
}
void TabOverviewSheet::dedupe() {
    state_.closeDuplicateTabs();
}
void TabOverviewSheet::newTab() {
    state_.newTab();
}
void TabOverviewSheet::dismiss() {
    state_.setShowTabOverview(false);
}

} // namespace ovel
