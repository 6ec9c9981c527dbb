#include "pages/OvelHistoryPageNative.h"

#include "gutil/AccessibleLabel.h"
#include "pages/OvelInfoRow.h"
#include "pages/OvelInternalPageShell.h"
#include "presentation/InternalPages.h"
#include "state/BrowserState.h"
#include "web/ListSplices.h"
#include "widgets/IconButton.h"

namespace ovel {

namespace {

GtkWidget* singleLine(const char* cssClass = nullptr) {
    GtkWidget* label = gtk_label_new(nullptr);
    gtk_label_set_single_line_mode(GTK_LABEL(label), true);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    if (cssClass != nullptr) {
        gtk_widget_add_css_class(label, cssClass);
    }
    return label;
}

// The labels of one row, kept on its button.
struct RowLabels {
    GtkWidget* title;
    GtkWidget* url;
    GtkWidget* date;
};

constexpr const char* rowLabelsKey = "ovel-history-row-labels";

} // namespace

OvelHistoryPageNative::OvelHistoryPageNative(BrowserState& state)
    : state_(state),
      entries_(GObjectRef<GListStore>::adopt(g_list_store_new(GTK_TYPE_STRING_OBJECT))),
      empty_(std::make_unique<OvelInfoRow>("No history yet.")) {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_widget_add_css_class(content, "ovel-history-page");

    GtkWidget* header = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    count_ = gtk_label_new(nullptr);
    gtk_widget_add_css_class(count_, "caption");
    gtk_widget_add_css_class(count_, "dim-label");
    gtk_widget_set_hexpand(count_, true);
    gtk_widget_set_halign(count_, GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(header), count_);
    clear_ = std::make_unique<IconButton>("trash", IconButton::square("Clear History"),
                                          [this] { state_.clearHistory(); });
    gtk_box_append(GTK_BOX(header), clear_->widget());
    gtk_box_append(GTK_BOX(content), header);
    gtk_box_append(GTK_BOX(content), empty_->widget());

    GtkListItemFactory* factory = gtk_signal_list_item_factory_new();
    signals_.connect(factory, "setup",
                     [this](GtkSignalListItemFactory*, GtkListItem* item) { setUpRow(item); });
    signals_.connect(factory, "bind",
                     [this](GtkSignalListItemFactory*, GtkListItem* item) { bindRow(item); });
    g_object_ref(entries_.get()); // the selection model takes one reference of its own
    GtkSelectionModel* selection = GTK_SELECTION_MODEL(gtk_no_selection_new(model()));
    listView_ = gtk_list_view_new(selection, factory);
    gtk_widget_add_css_class(listView_, "ovel-history-list");
    setAccessibleLabel(listView_, "History");
    signals_.connect(listView_, "activate",
                     [this](GtkListView*, guint position) { open(position); });
    scroller_ = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller_), GTK_POLICY_NEVER,
                                   GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller_), listView_);
    gtk_widget_set_vexpand(scroller_, true);
    gtk_box_append(GTK_BOX(content), scroller_);

    shell_ = std::make_unique<OvelInternalPageShell>(
        state, "ovel://history", "Your browsing history for this profile", content,
        OvelInternalPageShell::Scrolling::Content);
    showEntries(*state_.historyEntries);
    connections_.add(state_.historyEntries.changed().connect(
        [this](const std::vector<HistoryEntry>& entries) { showEntries(entries); }));
}

OvelHistoryPageNative::~OvelHistoryPageNative() = default;

GtkWidget* OvelHistoryPageNative::widget() const {
    return shell_->widget();
}

void OvelHistoryPageNative::showEntries(const std::vector<HistoryEntry>& entries) {
    // Rows read `shown_` when they are bound: it is the new list before the model says so.
    const std::vector<ListSplice> splices = listSplices(shown_, entries);
    shown_ = entries;
    indexByID_.clear();
    for (std::size_t i = 0; i < shown_.size(); ++i) {
        indexByID_.emplace(shown_[i].id, i);
    }
    for (const ListSplice& splice : splices) {
        std::vector<GtkStringObject*> added;
        for (std::size_t i = splice.addedFrom; i < splice.addedFrom + splice.addedCount; ++i) {
            added.push_back(gtk_string_object_new(shown_[i].id.c_str()));
        }
        g_list_store_splice(
            entries_.get(), static_cast<guint>(splice.position), static_cast<guint>(splice.removed),
            reinterpret_cast<gpointer*>(added.data()), static_cast<guint>(added.size()));
        for (GtkStringObject* object : added) {
            g_object_unref(object);
        }
    }
    gtk_label_set_text(GTK_LABEL(count_), historyCountText(shown_.size()).c_str());
    gtk_widget_set_visible(empty_->widget(), shown_.empty());
    gtk_widget_set_visible(scroller_, !shown_.empty());
}

const HistoryEntry* OvelHistoryPageNative::entryFor(GtkListItem* item) const {
    auto* object = GTK_STRING_OBJECT(gtk_list_item_get_item(item));
    if (object == nullptr) {
        return nullptr;
    }
    auto it = indexByID_.find(gtk_string_object_get_string(object));
    return it == indexByID_.end() ? nullptr : &shown_[it->second];
}

void OvelHistoryPageNative::setUpRow(GtkListItem* item) {
    GtkWidget* button = gtk_button_new();
    gtk_button_set_has_frame(GTK_BUTTON(button), false);
    gtk_widget_add_css_class(button, "ovel-history-row");
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 10);
    GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
    gtk_widget_set_hexpand(texts, true);
    auto* labels = new RowLabels{singleLine(), singleLine("caption"), singleLine("ovel-caption-2")};
    gtk_widget_add_css_class(labels->url, "dim-label");
    gtk_widget_add_css_class(labels->date, "dim-label");
    gtk_box_append(GTK_BOX(texts), labels->title);
    gtk_box_append(GTK_BOX(texts), labels->url);
    gtk_box_append(GTK_BOX(row), texts);
    gtk_box_append(GTK_BOX(row), labels->date);
    gtk_button_set_child(GTK_BUTTON(button), row);
    g_object_set_data_full(G_OBJECT(button), rowLabelsKey, labels,
                           [](gpointer data) { delete static_cast<RowLabels*>(data); });
    gtk_list_item_set_child(item, button);
    gtk_list_item_set_activatable(item, false);
    // A click activates the row's position in the list view, whose handler the page holds.
    g_signal_connect(button, "clicked", G_CALLBACK(+[](GtkButton* self, GtkListItem* listItem) {
                         gtk_widget_activate_action(GTK_WIDGET(self), "list.activate-item", "u",
                                                    gtk_list_item_get_position(listItem));
                     }),
                     item);
}

void OvelHistoryPageNative::bindRow(GtkListItem* item) {
    const HistoryEntry* entry = entryFor(item);
    GtkWidget* button = gtk_list_item_get_child(item);
    auto* labels = static_cast<RowLabels*>(g_object_get_data(G_OBJECT(button), rowLabelsKey));
    if (entry == nullptr || labels == nullptr) {
        return;
    }
    // Titles and addresses come from pages: plain text only.
    gtk_label_set_text(GTK_LABEL(labels->title), entry->title.c_str());
    gtk_label_set_text(GTK_LABEL(labels->url), entry->url.c_str());
    gtk_label_set_text(GTK_LABEL(labels->date), abbreviatedDateTime(entry->visitedAt).c_str());
    setAccessibleLabel(button, entry->title.empty() ? entry->url : entry->title);
}

void OvelHistoryPageNative::open(guint position) {
    if (position < shown_.size()) {
        const HistoryEntry* entry = &shown_[position];
        // The stored text as it is; opening it may end this page, so nothing of it is touched
        // afterwards.
        const std::string url = entry->url;
        BrowserState& state = state_;
        state.openURL(url);
    }
}

} // namespace ovel
