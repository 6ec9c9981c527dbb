#include "chrome/DownloadShelf.h"

#include "presentation/DownloadActions.h"
#include "state/BrowserState.h"

#include <algorithm>

namespace ovel {

DownloadShelf::DownloadShelf(BrowserState& state)
    : state_(state), root_(GTK_WIDGET(g_object_ref_sink(gtk_box_new(GTK_ORIENTATION_VERTICAL, 8)))),
      row_(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8)) {
    gtk_widget_add_css_class(root_, "download-shelf");

    GtkWidget* header = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    GtkWidget* title = gtk_label_new("Downloads");
    gtk_widget_add_css_class(title, "shelf-heading");
    gtk_widget_set_hexpand(title, TRUE);
    gtk_label_set_xalign(GTK_LABEL(title), 0);
    GtkWidget* clear = gtk_button_new_with_label("Clear");
    gtk_button_set_has_frame(GTK_BUTTON(clear), FALSE);
    gtk_widget_add_css_class(clear, "dim-label");
    signals_.connect(clear, "clicked", G_CALLBACK(+[](GtkButton*, DownloadShelf* shelf) {
                         shelf->state_.clearDownloads();
                     }),
                     this);
    gtk_box_append(GTK_BOX(header), title);
    gtk_box_append(GTK_BOX(header), clear);
    gtk_box_append(GTK_BOX(root_), header);

    // Scrolls sideways when the items do not fit, without showing a scroll bar.
    GtkWidget* scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_EXTERNAL,
                                   GTK_POLICY_NEVER);
    gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), row_);
    gtk_box_append(GTK_BOX(root_), scroller);

    connections_.add(state_.downloads.changed().connect([this](const auto&) { showDownloads(); }));
    showDownloads();
}

DownloadShelf::~DownloadShelf() {
    signals_.disconnectAll();
    items_.clear();
    g_object_unref(root_);
}

void DownloadShelf::showDownloads() {
    const auto shown = shelfDownloads(state_.downloads.get());
    for (auto it = items_.begin(); it != items_.end();) {
        const bool kept = std::any_of(shown.begin(), shown.end(),
                                      [&](const DownloadRecord& r) { return r.id == it->first; });
        if (kept) {
            ++it;
        } else {
            gtk_box_remove(GTK_BOX(row_), it->second->widget());
            it = items_.erase(it);
        }
    }
    GtkWidget* previous = nullptr;
    for (const DownloadRecord& record : shown) {
        auto& item = items_[record.id];
        if (!item) {
            item = std::make_unique<DownloadShelfItem>(state_, record);
            gtk_box_insert_child_after(GTK_BOX(row_), item->widget(), previous);
        } else {
            item->update(record);
            gtk_box_reorder_child_after(GTK_BOX(row_), item->widget(), previous);
        }
        previous = item->widget();
    }
}

} // namespace ovel
