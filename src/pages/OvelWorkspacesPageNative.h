#pragma once

#include "gutil/GSignalConnections.h"
#include "records/Records.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ovel {

class BrowserState;
class OvelInfoRow;
class OvelInternalPageShell;

// ovel://workspaces: a name field with "Save Current", and one row per saved workspace, kept by
// its id, with Restore and Delete.
class OvelWorkspacesPageNative {
public:
    explicit OvelWorkspacesPageNative(BrowserState& state);
    ~OvelWorkspacesPageNative();
    OvelWorkspacesPageNative(const OvelWorkspacesPageNative&) = delete;
    OvelWorkspacesPageNative& operator=(const OvelWorkspacesPageNative&) = delete;

    GtkWidget* widget() const;
    GtkWidget* rowFor(const std::string& id) const;

private:
    struct Row;

    void createWorkspace();
    void showSnapshots(const std::vector<WorkspaceSnapshot>& snapshots);
    std::unique_ptr<Row> makeRow(const WorkspaceSnapshot& snapshot);

    BrowserState& state_;
    GtkWidget* draft_ = nullptr;
    GtkWidget* list_ = nullptr;
    std::unique_ptr<OvelInfoRow> empty_;
    std::map<std::string, std::unique_ptr<Row>> rows_;
    std::unique_ptr<OvelInternalPageShell> shell_;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
