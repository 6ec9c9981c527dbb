#include "chrome/DownloadShelfItem.h"

#include "gutil/AccessibleLabel.h"
#include "gutil/IconNames.h"
#include "presentation/DownloadActions.h"
#include "state/BrowserState.h"

#include <string>

namespace ovel {

DownloadShelfItem::DownloadShelfItem(BrowserState& state, const DownloadRecord& item)
    : state_(state), item_(item),
      root_(GTK_WIDGET(g_object_ref_sink(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8)))) {
    gtk_widget_add_css_class(root_, "download-item");
    gtk_widget_set_valign(root_, GTK_ALIGN_CENTER);
    build();
}

DownloadShelfItem::~DownloadShelfItem() {
    signals_.disconnectAll();
    g_object_unref(root_);
}

void DownloadShelfItem::update(const DownloadRecord& item) {
    if (item == item_) {
        return;
    }
    item_ = item;
    signals_.disconnectAll();
    while (GtkWidget* child = gtk_widget_get_first_child(root_)) {
        gtk_box_remove(GTK_BOX(root_), child);
    }
    build();
}

GtkWidget* DownloadShelfItem::iconButton(std::string_view symbol, const char* label,
                                         GCallback clicked) {
    GtkWidget* button = gtk_button_new_from_icon_name(iconNameForGtk(symbol));
    gtk_button_set_has_frame(GTK_BUTTON(button), FALSE);
    gtk_widget_set_tooltip_text(button, label);
    setAccessibleLabel(button, label);
    signals_.connect(button, "clicked", clicked, this);
    gtk_box_append(GTK_BOX(root_), button);
    return button;
}

void DownloadShelfItem::build() {
    const bool failed = item_.status == DownloadStatus::Failed;
    GtkWidget* icon = gtk_image_new_from_icon_name(
        std::string(iconName(failed ? "exclamationmark.triangle.fill" : "arrow.down.circle.fill"))
            .c_str());
    gtk_widget_add_css_class(icon, failed ? "failed-icon" : "accent");
    gtk_box_append(GTK_BOX(root_), icon);

    // File names come from servers: plain text.
    GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
    GtkWidget* name = gtk_label_new(item_.fileName.c_str());
    gtk_label_set_ellipsize(GTK_LABEL(name), PANGO_ELLIPSIZE_MIDDLE);
    gtk_label_set_single_line_mode(GTK_LABEL(name), TRUE);
    gtk_label_set_max_width_chars(GTK_LABEL(name), 28);
    gtk_label_set_xalign(GTK_LABEL(name), 0);
    gtk_widget_add_css_class(name, "file-name");
    GtkWidget* status = gtk_label_new(std::string(item_.statusLabel()).c_str());
    gtk_label_set_xalign(GTK_LABEL(status), 0);
    gtk_widget_add_css_class(status, "status");
    gtk_widget_add_css_class(status, "dim-label");
    gtk_box_append(GTK_BOX(texts), name);
    gtk_box_append(GTK_BOX(texts), status);
    gtk_box_append(GTK_BOX(root_), texts);
    setAccessibleLabel(root_, item_.fileName.c_str());

    for (DownloadAction action : downloadActions(item_, DownloadPlace::Shelf)) {
        switch (action) {
        case DownloadAction::Reveal:
            iconButton("folder", "Show in Folder",
                       G_CALLBACK(+[](GtkButton*, DownloadShelfItem* self) {
                           self->state_.openDownload(self->item_);
                       }));
            break;
        case DownloadAction::Pause:
            iconButton("pause.fill", "Pause", G_CALLBACK(+[](GtkButton*, DownloadShelfItem* self) {
                           self->state_.pauseDownload(self->item_);
                       }));
            break;
        case DownloadAction::Resume:
            iconButton("play.fill", "Resume", G_CALLBACK(+[](GtkButton*, DownloadShelfItem* self) {
                           self->state_.resumeDownload(self->item_);
                       }));
            break;
        case DownloadAction::Cancel:
            iconButton("xmark.circle", "Cancel",
                       G_CALLBACK(+[](GtkButton*, DownloadShelfItem* self) {
                           self->state_.cancelDownload(self->item_);
                       }));
            break;
        case DownloadAction::Retry:
            iconButton("arrow.clockwise", "Retry",
                       G_CALLBACK(+[](GtkButton*, DownloadShelfItem* self) {
                           self->state_.retryDownload(self->item_);
                       }));
            break;
        }
    }
}

} // namespace ovel
