#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <vector>

namespace ovel {

class BrowserState;
class OvelInternalPageShell;
class OvelSettingCard;
class SitePermissionEditor;

// ovel://settings: the active profile, browsing preferences, workspaces and the permission rule
// of the selected tab's site. Every control writes to the browser state through its operations.
class OvelSettingsPageNative {
public:
    explicit OvelSettingsPageNative(BrowserState& state);
    ~OvelSettingsPageNative();
    OvelSettingsPageNative(const OvelSettingsPageNative&) = delete;
    OvelSettingsPageNative& operator=(const OvelSettingsPageNative&) = delete;

    GtkWidget* widget() const;

    // The editor on show and the host it was made for.
    const SitePermissionEditor& permissionEditor() const { return *editor_; }
    const std::string& permissionHost() const { return editorHost_; }

private:
    GtkWidget* profileCard();
    GtkWidget* browsingCard();
    GtkWidget* workspacesCard();
    GtkWidget* permissionsCard();

    void applyProfileRename();
    void createWorkspace();
    void showProfiles();
    void showActiveProfile();
    void showPreferences();
    void showWorkspaceStatus();
    // Makes a new editor when the selected tab's host is not the one it was made for.
    void followCurrentHost();

    BrowserState& state_;
    // Set while the page puts the state's values into its controls, so their handlers do not
    // write them back.
    bool showingState_ = false;
    std::vector<std::string> profileIDs_;

    GtkWidget* profilePicker_ = nullptr;
    GObjectRef<GtkStringList> profileNames_;
    GtkWidget* renameField_ = nullptr;
    GtkWidget* deleteButton_ = nullptr;
    GtkWidget* themePicker_ = nullptr;
    GtkWidget* searchPicker_ = nullptr;
    GtkWidget* adBlockSwitch_ = nullptr;
    GtkWidget* adBlockStatus_ = nullptr;
    GtkWidget* smoothSwitch_ = nullptr;
    GtkWidget* workspaceField_ = nullptr;
    GtkWidget* workspaceStatus_ = nullptr;
    GtkWidget* editorSlot_ = nullptr;

    std::vector<std::unique_ptr<OvelSettingCard>> cards_;
    OvelSettingCard* permissionsCard_ = nullptr;
    std::unique_ptr<SitePermissionEditor> editor_;
    std::string editorHost_;
    std::unique_ptr<OvelInternalPageShell> shell_;
    GSignalConnections signals_;
    Connections connections_;
};

} // namespace ovel
