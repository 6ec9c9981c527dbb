#include "chrome/BookmarksPanel.h"

#include "gutil/AccessibleLabel.h"
#include "state/BrowserState.h"

#include <algorithm>

namespace ovel {

namespace {

constexpr const char* bookmarkIDKey = "ovel-bookmark-id";

} // namespace

BookmarksPanel::BookmarksPanel(BrowserState& state)
    : state_(state),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_box_new(GTK_ORIENTATION_VERTICAL, 12)))) {
    gtk_widget_add_css_class(root_, "bookmarks-panel");
    gtk_widget_set_halign(root_, GTK_ALIGN_FILL);
    GtkWidget* heading = gtk_label_new("Bookmarks");
    gtk_widget_add_css_class(heading, "bookmarks-heading");
    gtk_label_set_xalign(GTK_LABEL(heading), 0);
    setAccessibleLabel(heading, "Bookmarks");
    gtk_box_append(GTK_BOX(root_), heading);

    connections_.add(state_.bookmarks.changed().connect([this](const auto&) { showBookmarks(); }));
    showBookmarks();
}

BookmarksPanel::~BookmarksPanel() {
    signals_.disconnectAll();
    g_object_unref(root_);
}

void BookmarksPanel::showBookmarks() {
    const auto& bookmarks = state_.bookmarks.get();
    // Buttons of bookmarks that are gone leave; the others stay and are put in list order.
    for (auto it = buttons_.begin(); it != buttons_.end();) {
        const bool kept = std::any_of(bookmarks.begin(), bookmarks.end(),
                                      [&](const Bookmark& b) { return b.id == it->first; });
        if (kept) {
            ++it;
        } else {
            gtk_box_remove(GTK_BOX(root_), it->second);
            it = buttons_.erase(it);
        }
    }
    GtkWidget* previous = gtk_widget_get_first_child(root_); // the heading
    for (const Bookmark& bookmark : bookmarks) {
        GtkWidget*& button = buttons_[bookmark.id];
        if (button == nullptr) {
            button = gtk_button_new();
            GtkWidget* label = gtk_label_new(nullptr);
            // Long titles are cut short: the sidebar keeps its width whatever they say.
            gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
            gtk_label_set_max_width_chars(GTK_LABEL(label), 1);
            gtk_label_set_single_line_mode(GTK_LABEL(label), TRUE);
            gtk_label_set_xalign(GTK_LABEL(label), 0);
            gtk_button_set_child(GTK_BUTTON(button), label);
            gtk_button_set_has_frame(GTK_BUTTON(button), FALSE);
            gtk_widget_add_css_class(button, "bookmark");
            g_object_set_data_full(G_OBJECT(button), bookmarkIDKey, g_strdup(bookmark.id.c_str()),
                                   g_free);
            signals_.connect(button, "clicked",
                             G_CALLBACK(+[](GtkButton* clicked, BookmarksPanel* panel) {
                                 panel->open(static_cast<const char*>(
                                     g_object_get_data(G_OBJECT(clicked), bookmarkIDKey)));
                             }),
                             this);
            gtk_box_insert_child_after(GTK_BOX(root_), button, previous);
        } else {
            gtk_box_reorder_child_after(GTK_BOX(root_), button, previous);
        }
        // Titles come from pages: plain text, never markup.
        GtkLabel* label = GTK_LABEL(gtk_button_get_child(GTK_BUTTON(button)));
        gtk_label_set_text(label, bookmark.title.c_str());
        setAccessibleLabel(button, bookmark.title.c_str());
        previous = button;
    }
}

void BookmarksPanel::open(const std::string& id) {
    const auto& bookmarks = state_.bookmarks.get();
    const auto it = std::find_if(bookmarks.begin(), bookmarks.end(),
                                 [&](const Bookmark& b) { return b.id == id; });
    if (it != bookmarks.end()) {
        state_.openBookmark(*it);
    }
}

} // namespace ovel
