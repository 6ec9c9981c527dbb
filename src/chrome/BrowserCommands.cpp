#include "chrome/BrowserCommands.h"

#include "chrome/KeyboardShortcutsWindow.h"
#include "state/BrowserState.h"

#include <string>

namespace ovel {

namespace {

struct ActionData {
    BrowserCommands* commands;
    Command command;
};

} // namespace

std::vector<std::string> splitAccelerators(std::string_view accelerators) {
    std::vector<std::string> list;
    while (!accelerators.empty()) {
        const auto end = accelerators.find(' ');
        if (end != 0) {
            list.emplace_back(accelerators.substr(0, end));
        }
        if (end == std::string_view::npos) {
            break;
        }
        accelerators.remove_prefix(end + 1);
    }
    return list;
}

BrowserCommands::BrowserCommands(GtkApplication* application, BrowserState& state)
    : application_(application), state_(state), menu_(GObjectRef<GMenu>::adopt(g_menu_new())) {
    GMenu* section = nullptr;
    std::string_view sectionName;
    for (const BrowserCommand& command : browserCommands) {
        const std::string action(command.action);
        GSimpleAction* simple = g_simple_action_new(action.c_str(), nullptr);
        g_signal_connect_data(
            simple, "activate", G_CALLBACK(+[](GSimpleAction*, GVariant*, ActionData* data) {
                data->commands->run(data->command);
            }),
            new ActionData{this, command.command},
            +[](gpointer data, GClosure*) { delete static_cast<ActionData*>(data); },
            GConnectFlags{});
        g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(simple));
        g_object_unref(simple);

        const std::string detailed = "app." + action;
        const std::string accelerator(command.accelerator);
        const char* accelerators[] = {accelerator.c_str(), nullptr};
        gtk_application_set_accels_for_action(
            application_, detailed.c_str(), accelerator.empty() ? accelerators + 1 : accelerators);

        if (section == nullptr || command.section != sectionName) {
            section = g_menu_new();
            sectionName = command.section;
            // The File items open the menu and the Help items close it, both unlabelled; the
            // other sections carry their names.
            const std::string label(command.section);
            const bool unlabelled = sectionName == "File" || sectionName == "Help";
            g_menu_append_section(menu_.get(), unlabelled ? nullptr : label.c_str(),
                                  G_MENU_MODEL(section));
            g_object_unref(section);
        }
        const std::string title(command.title);
        g_menu_append(section, title.c_str(), detailed.c_str());
    }

    // The tab keys of every desktop browser, outside the menu: the next and the previous tab.
    for (const KeyShortcut& shortcut : keyOnlyShortcuts) {
        if (shortcut.action == "select-next-tab") {
            addKeyOnlyAction(shortcut, [this] { state_.selectNextTab(); });
        } else if (shortcut.action == "select-previous-tab") {
            addKeyOnlyAction(shortcut, [this] { state_.selectPreviousTab(); });
        }
    }

    // Print needs a web page in the selected tab.
    updatePrintEnabled();
    connections_.add(
        state_.selectionChanged.connect([this](const SelectionChange&) { updatePrintEnabled(); }));
    connections_.add(state_.tabChanged.connect([this](const BrowserTab&, TabFields fields) {
        if (fields.has(TabField::DisplayAddress)) {
            updatePrintEnabled();
        }
    }));
}

void BrowserCommands::addKeyOnlyAction(const KeyShortcut& shortcut, std::function<void()> run) {
    const std::string name(shortcut.action);
    auto action = GObjectRef<GSimpleAction>::adopt(g_simple_action_new(name.c_str(), nullptr));
    signals_.connect(action.get(), "activate",
                     [run = std::move(run)](GSimpleAction*, GVariant*) { run(); });
    g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(action.get()));
    std::vector<std::string> accelerators = splitAccelerators(shortcut.accelerators);
    // Under X, Shift+Tab arrives as ISO_Left_Tab.
    for (std::size_t i = 0, count = accelerators.size(); i < count; ++i) {
        if (accelerators[i].ends_with("Tab") &&
            accelerators[i].find("<Shift>") != std::string::npos) {
            accelerators.push_back(accelerators[i].substr(0, accelerators[i].size() - 3) +
                                   "ISO_Left_Tab");
        }
    }
    std::vector<const char*> list;
    for (const std::string& accelerator : accelerators) {
        list.push_back(accelerator.c_str());
    }
    list.push_back(nullptr);
    gtk_application_set_accels_for_action(application_, ("app." + name).c_str(), list.data());
    keyOnlyActions_.push_back(name);
}

void BrowserCommands::updatePrintEnabled() {
    GAction* print = g_action_map_lookup_action(G_ACTION_MAP(application_), "print");
    if (G_IS_SIMPLE_ACTION(print)) {
        g_simple_action_set_enabled(G_SIMPLE_ACTION(print), state_.canPrintPage());
    }
}

GtkWindow* BrowserCommands::activeWindow() const {
    return gtk_application_get_active_window(application_);
}

BrowserCommands::~BrowserCommands() {
    connections_.disconnectAll();
    signals_.disconnectAll();
    for (const BrowserCommand& command : browserCommands) {
        const std::string action(command.action);
        g_action_map_remove_action(G_ACTION_MAP(application_), action.c_str());
    }
    for (const std::string& name : keyOnlyActions_) {
        g_action_map_remove_action(G_ACTION_MAP(application_), name.c_str());
    }
}

void BrowserCommands::run(Command command) {
    // Each is an operation of the browser state, which handles its own preconditions, or a
    // matter of the active window.
    switch (command) {
    case Command::NewTab:
        state_.newTab();
        break;
    case Command::ReopenLastClosedTab:
        state_.reopenLastClosedTab();
        break;
    case Command::Print:
        state_.printPage();
        break;
    case Command::Back:
        state_.goBack();
        break;
    case Command::Forward:
        state_.goForward();
        break;
    case Command::Reload:
        state_.reload();
        break;
    case Command::Home:
        state_.openHome();
        break;
    case Command::CloseTab:
        state_.closeTab(state_.selectedIndex.get());
        break;
    case Command::DuplicateTab:
        state_.duplicateSelectedTab();
        break;
    case Command::ShowTabOverview:
        state_.setShowTabOverview(true);
        break;
    case Command::FindInPage:
        state_.toggleFindBar();
        break;
    case Command::ZoomIn:
        state_.adjustZoom(0.1);
        break;
    case Command::ZoomOut:
        state_.adjustZoom(-0.1);
        break;
    case Command::ActualSize:
        state_.resetZoom();
        break;
    case Command::FullScreen:
        // The window's own full screen, chrome and all; a page's full screen is the page's.
        if (GtkWindow* window = activeWindow()) {
            if (gtk_window_is_fullscreen(window)) {
                gtk_window_unfullscreen(window);
            } else {
                gtk_window_fullscreen(window);
            }
        }
        break;
    case Command::CommandPalette:
        state_.setShowCommandPalette(true);
        break;
    case Command::CloseOtherTabs:
        state_.closeOtherTabs(state_.selectedIndex.get());
        break;
    case Command::CloseDuplicateTabs:
        state_.closeDuplicateTabs();
        break;
    case Command::KeyboardShortcuts:
        KeyboardShortcutsWindow::present(application_, activeWindow());
        break;
    }
}

} // namespace ovel
