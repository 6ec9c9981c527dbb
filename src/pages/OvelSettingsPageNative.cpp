#include "pages/OvelSettingsPageNative.h"

#include "gutil/AccessibleLabel.h"
#include "pages/OvelInternalPageShell.h"
#include "pages/OvelSettingCard.h"
#include "pages/SitePermissionEditor.h"
#include "presentation/AdBlockStatusLine.h"
#include "presentation/InternalPages.h"
#include "state/BrowserState.h"

#include <algorithm>
#include <array>

namespace ovel {

namespace {

GtkWidget* hbox(int spacing = 8) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
    gtk_widget_set_valign(box, GTK_ALIGN_CENTER);
    return box;
}

GtkWidget* labelled(const char* title, GtkWidget* control) {
    GtkWidget* row = hbox();
    GtkWidget* label = gtk_label_new(title);
    gtk_box_append(GTK_BOX(row), label);
    gtk_box_append(GTK_BOX(row), control);
    setAccessibleLabel(control, title);
    return row;
}

GtkWidget* button(const char* text, bool prominent = false) {
    GtkWidget* widget = gtk_button_new_with_label(text);
    if (prominent) {
        gtk_widget_add_css_class(widget, "suggested-action");
    }
    setAccessibleLabel(widget, text);
    return widget;
}

GtkWidget* field(const char* placeholder) {
    GtkWidget* entry = gtk_entry_new();
    gtk_entry_set_placeholder_text(GTK_ENTRY(entry), placeholder);
    setAccessibleLabel(entry, placeholder);
    gtk_widget_set_hexpand(entry, true);
    return entry;
}

template <typename Labelled, std::size_t N>
GtkWidget* picker(const std::array<Labelled, N>& values) {
    std::vector<std::string> texts;
    std::vector<const char*> pointers;
    for (Labelled value : values) {
        texts.emplace_back(label(value));
    }
    for (const std::string& text : texts) {
        pointers.push_back(text.c_str());
    }
    pointers.push_back(nullptr);
    return gtk_drop_down_new_from_strings(pointers.data());
}

std::string permissionsTitle(const std::string& host) {
    return "Site Permissions (" + host + ")";
}

} // namespace

OvelSettingsPageNative::OvelSettingsPageNative(BrowserState& state) : state_(state) {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 14);
    gtk_widget_add_css_class(content, "ovel-settings-page");
    gtk_box_append(GTK_BOX(content), profileCard());
    gtk_box_append(GTK_BOX(content), browsingCard());
    gtk_box_append(GTK_BOX(content), workspacesCard());
    gtk_box_append(GTK_BOX(content), permissionsCard());
    shell_ = std::make_unique<OvelInternalPageShell>(
        state, "ovel://settings", "Real settings for your active profile", content);

    showProfiles();
    showPreferences();
    showWorkspaceStatus();
    gtk_editable_set_text(GTK_EDITABLE(renameField_), state_.activeProfileName().c_str());

    connections_.add(state_.profiles.changed().connect([this](auto&) { showProfiles(); }));
    connections_.add(
        state_.activeProfileID.changed().connect([this](auto&) { showActiveProfile(); }));
    connections_.add(state_.theme.changed().connect([this](auto&) { showPreferences(); }));
    connections_.add(state_.searchEngine.changed().connect([this](auto&) { showPreferences(); }));
    connections_.add(state_.adBlockEnabled.changed().connect([this](auto&) { showPreferences(); }));
    connections_.add(state_.adBlockStatus.changed().connect([this](auto&) { showPreferences(); }));
    connections_.add(
        state_.smoothAnimations.changed().connect([this](auto&) { showPreferences(); }));
    connections_.add(
        state_.workspaceSnapshots.changed().connect([this](auto&) { showWorkspaceStatus(); }));
    connections_.add(state_.selectionChanged.connect([this](auto&) { followCurrentHost(); }));
    connections_.add(state_.tabs.changed().connect([this](auto&) { followCurrentHost(); }));
    connections_.add(state_.tabChanged.connect([this](const BrowserTab&, TabFields fields) {
        if (fields.has(TabField::Url) || fields.has(TabField::DisplayAddress)) {
            followCurrentHost();
        }
    }));
}

OvelSettingsPageNative::~OvelSettingsPageNative() = default;

GtkWidget* OvelSettingsPageNative::widget() const {
    return shell_->widget();
}

GtkWidget* OvelSettingsPageNative::profileCard() {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    profileNames_ = GObjectRef<GtkStringList>::adopt(gtk_string_list_new(nullptr));
    g_object_ref(profileNames_.get()); // the drop-down takes one reference of its own
    profilePicker_ = gtk_drop_down_new(G_LIST_MODEL(profileNames_.get()), nullptr);
    gtk_box_append(GTK_BOX(content), labelled("Active Profile", profilePicker_));
    signals_.connect(profilePicker_, "notify::selected", [this](GtkDropDown* picker, GParamSpec*) {
        const guint selected = gtk_drop_down_get_selected(picker);
        if (!showingState_ && selected < profileIDs_.size()) {
            state_.switchToProfile(profileIDs_[selected]);
        }
    });

    GtkWidget* row = hbox();
    renameField_ = field("Rename profile");
    GtkWidget* rename = button("Rename");
    GtkWidget* create = button("New", true);
    deleteButton_ = button("Delete");
    for (GtkWidget* child : {renameField_, rename, create, deleteButton_}) {
        gtk_box_append(GTK_BOX(row), child);
    }
    gtk_box_append(GTK_BOX(content), row);
    signals_.connect(renameField_, "activate", [this](GtkEntry*) { applyProfileRename(); });
    signals_.connect(rename, "clicked", [this](GtkButton*) { applyProfileRename(); });
    signals_.connect(create, "clicked", [this](GtkButton*) { state_.createProfile(); });
    signals_.connect(deleteButton_, "clicked",
                     [this](GtkButton*) { state_.deleteActiveProfile(); });
    cards_.push_back(std::make_unique<OvelSettingCard>("Profile", content));
    return cards_.back()->widget();
}

GtkWidget* OvelSettingsPageNative::browsingCard() {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    GtkWidget* pickers = hbox(16);
    themePicker_ = picker(allThemes);
    searchPicker_ = picker(allSearchEngines);
    gtk_box_append(GTK_BOX(pickers), labelled("Theme", themePicker_));
    gtk_box_append(GTK_BOX(pickers), labelled("Search", searchPicker_));
    gtk_box_append(GTK_BOX(content), pickers);
    signals_.connect(themePicker_, "notify::selected", [this](GtkDropDown* picker, GParamSpec*) {
        const guint selected = gtk_drop_down_get_selected(picker);
        if (!showingState_ && selected < allThemes.size()) {
            state_.setTheme(allThemes[selected]);
        }
    });
    signals_.connect(searchPicker_, "notify::selected", [this](GtkDropDown* picker, GParamSpec*) {
        const guint selected = gtk_drop_down_get_selected(picker);
        if (!showingState_ && selected < allSearchEngines.size()) {
            state_.setSearchEngine(allSearchEngines[selected]);
        }
    });

    adBlockSwitch_ = gtk_switch_new();
    smoothSwitch_ = gtk_switch_new();
    gtk_box_append(GTK_BOX(content), labelled("Ad Blocker", adBlockSwitch_));
    adBlockStatus_ = gtk_label_new(nullptr);
    gtk_widget_add_css_class(adBlockStatus_, "caption");
    gtk_widget_add_css_class(adBlockStatus_, "dim-label");
    gtk_widget_set_halign(adBlockStatus_, GTK_ALIGN_START);
    gtk_label_set_wrap(GTK_LABEL(adBlockStatus_), true);
    gtk_box_append(GTK_BOX(content), adBlockStatus_);
    gtk_box_append(GTK_BOX(content), labelled("Smooth Animations", smoothSwitch_));
    signals_.connect(adBlockSwitch_, "notify::active", [this](GtkSwitch* toggle, GParamSpec*) {
        if (!showingState_) {
            state_.setAdBlockEnabled(gtk_switch_get_active(toggle));
        }
    });
    signals_.connect(smoothSwitch_, "notify::active", [this](GtkSwitch* toggle, GParamSpec*) {
        if (!showingState_) {
            state_.setSmoothAnimations(gtk_switch_get_active(toggle));
        }
    });
    cards_.push_back(std::make_unique<OvelSettingCard>("Browsing", content));
    return cards_.back()->widget();
}

GtkWidget* OvelSettingsPageNative::workspacesCard() {
    GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    GtkWidget* row = hbox();
    workspaceField_ = field("Workspace name");
    GtkWidget* save = button("Save Current Tabs", true);
    GtkWidget* open = button("Open");
    for (GtkWidget* child : {workspaceField_, save, open}) {
        gtk_box_append(GTK_BOX(row), child);
    }
    gtk_box_append(GTK_BOX(content), row);
    workspaceStatus_ = gtk_label_new(nullptr);
    gtk_widget_add_css_class(workspaceStatus_, "caption");
    gtk_widget_add_css_class(workspaceStatus_, "dim-label");
    gtk_widget_set_halign(workspaceStatus_, GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(content), workspaceStatus_);
    signals_.connect(workspaceField_, "activate", [this](GtkEntry*) { createWorkspace(); });
    signals_.connect(save, "clicked", [this](GtkButton*) { createWorkspace(); });
    signals_.connect(open, "clicked", [this](GtkButton*) {
        // Opening the page may end this one: nothing of it is touched afterwards.
        BrowserState& state = state_;
        state.openURL("ovel://workspaces");
    });
    cards_.push_back(std::make_unique<OvelSettingCard>("Workspaces", content));
    return cards_.back()->widget();
}

GtkWidget* OvelSettingsPageNative::permissionsCard() {
    editorSlot_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    editorHost_ = state_.currentHost();
    cards_.push_back(std::make_unique<OvelSettingCard>(permissionsTitle(editorHost_), editorSlot_));
    permissionsCard_ = cards_.back().get();
    editor_ = std::make_unique<SitePermissionEditor>(
        state_.currentSiteRule(),
        [this](const SitePermissionRule& rule) { state_.setCurrentSiteRule(rule); },
        [this] { state_.clearCurrentSiteRule(); });
    gtk_box_append(GTK_BOX(editorSlot_), editor_->widget());
    return permissionsCard_->widget();
}

void OvelSettingsPageNative::followCurrentHost() {
    const std::string host = state_.currentHost();
    if (host == editorHost_) {
        return;
    }
    editorHost_ = host;
    permissionsCard_->setTitle(permissionsTitle(host));
    gtk_box_remove(GTK_BOX(editorSlot_), editor_->widget());
    editor_ = std::make_unique<SitePermissionEditor>(
        state_.currentSiteRule(),
        [this](const SitePermissionRule& rule) { state_.setCurrentSiteRule(rule); },
        [this] { state_.clearCurrentSiteRule(); });
    gtk_box_append(GTK_BOX(editorSlot_), editor_->widget());
}

void OvelSettingsPageNative::applyProfileRename() {
    state_.renameActiveProfile(gtk_editable_get_text(GTK_EDITABLE(renameField_)));
    gtk_editable_set_text(GTK_EDITABLE(renameField_), state_.activeProfileName().c_str());
}

void OvelSettingsPageNative::createWorkspace() {
    state_.createWorkspaceSnapshot(
        std::string(gtk_editable_get_text(GTK_EDITABLE(workspaceField_))));
    gtk_editable_set_text(GTK_EDITABLE(workspaceField_), "");
}

void OvelSettingsPageNative::showProfiles() {
    showingState_ = true;
    profileIDs_.clear();
    std::vector<std::string> names;
    for (const BrowserProfile& profile : *state_.profiles) {
        profileIDs_.push_back(profile.id);
        names.push_back(profile.name);
    }
    std::vector<const char*> pointers;
    for (const std::string& name : names) {
        pointers.push_back(name.c_str());
    }
    pointers.push_back(nullptr);
    GtkStringList* list = profileNames_.get();
    gtk_string_list_splice(list, 0, g_list_model_get_n_items(G_LIST_MODEL(list)), pointers.data());
    showingState_ = false;
    gtk_widget_set_sensitive(deleteButton_, state_.profiles->size() >= 2);
    showActiveProfile();
}

void OvelSettingsPageNative::showActiveProfile() {
    showingState_ = true;
    for (std::size_t i = 0; i < profileIDs_.size(); ++i) {
        if (profileIDs_[i] == *state_.activeProfileID) {
            gtk_drop_down_set_selected(GTK_DROP_DOWN(profilePicker_), static_cast<guint>(i));
        }
    }
    showingState_ = false;
}

void OvelSettingsPageNative::showPreferences() {
    showingState_ = true;
    auto indexOf = [](const auto& values, auto value) {
        return static_cast<guint>(std::find(values.begin(), values.end(), value) - values.begin());
    };
    gtk_drop_down_set_selected(GTK_DROP_DOWN(themePicker_), indexOf(allThemes, *state_.theme));
    gtk_drop_down_set_selected(GTK_DROP_DOWN(searchPicker_),
                               indexOf(allSearchEngines, *state_.searchEngine));
    gtk_switch_set_active(GTK_SWITCH(adBlockSwitch_), *state_.adBlockEnabled);
    gtk_label_set_text(GTK_LABEL(adBlockStatus_),
                       adBlockStatusLine(*state_.adBlockStatus, *state_.adBlockEnabled).c_str());
    gtk_switch_set_active(GTK_SWITCH(smoothSwitch_), *state_.smoothAnimations);
    showingState_ = false;
}

void OvelSettingsPageNative::showWorkspaceStatus() {
    gtk_label_set_text(GTK_LABEL(workspaceStatus_),
                       workspaceStatusLine(*state_.workspaceSnapshots).c_str());
}

} // namespace ovel
