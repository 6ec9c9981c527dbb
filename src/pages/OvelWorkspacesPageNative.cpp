#include "pages/OvelWorkspacesPageNative.h"

#include "gutil/AccessibleLabel.h"
#include "pages/OvelInfoRow.h"
#include "pages/OvelInternalPageShell.h"
#include "presentation/InternalPages.h"
#include "state/BrowserState.h"
#include "widgets/IconButton.h"

#include <algorithm>

namespace ovel {

struct OvelWorkspacesPageNative::Row {
    WorkspaceSnapshot snapshot;
    GtkWidget* box = nullptr;
    GtkWidget* name = nullptr;
    GtkWidget* detail = nullptr;
    std::unique_ptr<IconButton> restore;
    std::unique_ptr<IconButton> remove;
};

OvelWorkspacesPageNative::OvelWorkspacesPageNative(BrowserState& state)
    : state_(state), list_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 12)),
      empty_(std::make_unique<OvelInfoRow>("No workspaces saved.")) {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_widget_add_css_class(content, "ovel-workspaces-page");
    GtkWidget* header = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    draft_ = gtk_entry_new();
    gtk_entry_set_placeholder_text(GTK_ENTRY(draft_), "Workspace name");
    setAccessibleLabel(draft_, "Workspace name");
    gtk_widget_set_hexpand(draft_, true);
    GtkWidget* save = gtk_button_new_with_label("Save Current");
    gtk_widget_add_css_class(save, "suggested-action");
    setAccessibleLabel(save, "Save Current");
    gtk_box_append(GTK_BOX(header), draft_);
    gtk_box_append(GTK_BOX(header), save);
    gtk_box_append(GTK_BOX(content), header);
    gtk_box_append(GTK_BOX(content), empty_->widget());
    gtk_box_append(GTK_BOX(content), list_);
    signals_.connect(draft_, "activate", [this](GtkEntry*) { createWorkspace(); });
    signals_.connect(save, "clicked", [this](GtkButton*) { createWorkspace(); });

    shell_ = std::make_unique<OvelInternalPageShell>(state, "ovel://workspaces",
                                                     "Save and restore full tab setups", content);
    showSnapshots(*state_.workspaceSnapshots);
    connections_.add(state_.workspaceSnapshots.changed().connect(
        [this](const std::vector<WorkspaceSnapshot>& snapshots) { showSnapshots(snapshots); }));
}

OvelWorkspacesPageNative::~OvelWorkspacesPageNative() = default;

GtkWidget* OvelWorkspacesPageNative::widget() const {
    return shell_->widget();
}

GtkWidget* OvelWorkspacesPageNative::rowFor(const std::string& id) const {
    auto it = rows_.find(id);
    return it == rows_.end() ? nullptr : it->second->box;
}

void OvelWorkspacesPageNative::createWorkspace() {
    // Untrimmed and always present, even empty: the state names an unnamed workspace.
    state_.createWorkspaceSnapshot(std::string(gtk_editable_get_text(GTK_EDITABLE(draft_))));
    gtk_editable_set_text(GTK_EDITABLE(draft_), "");
}

void OvelWorkspacesPageNative::showSnapshots(const std::vector<WorkspaceSnapshot>& snapshots) {
    gtk_widget_set_visible(empty_->widget(), snapshots.empty());
    for (auto it = rows_.begin(); it != rows_.end();) {
        const bool stays =
            std::any_of(snapshots.begin(), snapshots.end(), [&](const WorkspaceSnapshot& snapshot) {
                return snapshot.id == it->first;
            });
        if (stays) {
            ++it;
        } else {
            gtk_box_remove(GTK_BOX(list_), it->second->box);
            it = rows_.erase(it);
        }
    }
    GtkWidget* previous = nullptr;
    for (const WorkspaceSnapshot& snapshot : snapshots) {
        auto it = rows_.find(snapshot.id);
        if (it == rows_.end()) {
            auto row = makeRow(snapshot);
            gtk_box_insert_child_after(GTK_BOX(list_), row->box, previous);
            it = rows_.emplace(snapshot.id, std::move(row)).first;
        } else if (gtk_widget_get_prev_sibling(it->second->box) != previous) {
            gtk_box_reorder_child_after(GTK_BOX(list_), it->second->box, previous);
        }
        Row& row = *it->second;
        row.snapshot = snapshot;
        gtk_label_set_text(GTK_LABEL(row.name), snapshot.name.c_str());
        gtk_label_set_text(GTK_LABEL(row.detail), workspaceDetailLine(snapshot).c_str());
        previous = row.box;
    }
}

std::unique_ptr<OvelWorkspacesPageNative::Row>
OvelWorkspacesPageNative::makeRow(const WorkspaceSnapshot& snapshot) {
    auto row = std::make_unique<Row>();
    row->box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_widget_add_css_class(row->box, "ovel-workspace-row");
    GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 3);
    gtk_widget_set_hexpand(texts, true);
    row->name = gtk_label_new(nullptr);
    gtk_widget_add_css_class(row->name, "ovel-workspace-name");
    row->detail = gtk_label_new(nullptr);
    gtk_widget_add_css_class(row->detail, "caption");
    gtk_widget_add_css_class(row->detail, "dim-label");
    for (GtkWidget* label : {row->name, row->detail}) {
        gtk_widget_set_halign(label, GTK_ALIGN_START);
        gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
        gtk_box_append(GTK_BOX(texts), label);
    }
    gtk_box_append(GTK_BOX(row->box), texts);
    const std::string id = snapshot.id;
    row->restore = std::make_unique<IconButton>(
        "arrow.clockwise.circle", IconButton::square("Restore"), [this, id] {
            auto it = rows_.find(id);
            if (it != rows_.end()) {
                const WorkspaceSnapshot chosen = it->second->snapshot;
                state_.restoreWorkspaceSnapshot(chosen);
            }
        });
    row->remove = std::make_unique<IconButton>("trash", IconButton::square("Delete"),
                                               [this, id] { state_.deleteWorkspaceSnapshot(id); });
    gtk_box_append(GTK_BOX(row->box), row->restore->widget());
    gtk_box_append(GTK_BOX(row->box), row->remove->widget());
    return row;
}

} // namespace ovel
