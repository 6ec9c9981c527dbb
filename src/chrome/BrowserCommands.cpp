#include "chrome/BrowserCommands.h"

#include "state/BrowserState.h"

#include <string>

namespace ovel {

namespace {

struct ActionData {
    BrowserCommands* commands;
    Command command;
};

} // namespace

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
            // The File items open the menu unlabelled; the other sections carry their names.
            const std::string label(command.section);
            g_menu_append_section(menu_.get(), sectionName == "File" ? nullptr : label.c_str(),
                                  G_MENU_MODEL(section));
            g_object_unref(section);
        }
        const std::string title(command.title);
        g_menu_append(section, title.c_str(), detailed.c_str());
    }

    // The tab keys of every desktop browser, outside the menu: the next and the previous tab.
    addKeyOnlyAction("select-next-tab", {"<Control>Tab", "<Control>Page_Down"},
                     [this] { state_.selectNextTab(); });
    addKeyOnlyAction("select-previous-tab",
                     {"<Control><Shift>Tab", "<Control><Shift>ISO_Left_Tab", "<Control>Page_Up"},
                     [this] { state_.selectPreviousTab(); });
}

void BrowserCommands::addKeyOnlyAction(const char* name, std::vector<const char*> accelerators,
                                       std::function<void()> run) {
    auto action = GObjectRef<GSimpleAction>::adopt(g_simple_action_new(name, nullptr));
    signals_.connect(action.get(), "activate",
                     [run = std::move(run)](GSimpleAction*, GVariant*) { run(); });
    g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(action.get()));
    accelerators.push_back(nullptr);
    gtk_application_set_accels_for_action(application_, (std::string("app.") + name).c_str(),
                                          accelerators.data());
    keyOnlyActions_.push_back(name);
}

BrowserCommands::~BrowserCommands() {
    signals_.disconnectAll();
    for (const BrowserCommand& command : browserCommands) {
        const std::string action(command.action);
        g_action_map_remove_action(G_ACTION_MAP(application_), action.c_str());
    }
    for (const char* name : keyOnlyActions_) {
        g_action_map_remove_action(G_ACTION_MAP(application_), name);
    }
}

void BrowserCommands::run(Command command) {
    // Each is an operation of the browser state, which handles its own preconditions.
    switch (command) {
    case Command::NewTab:
        state_.newTab();
        break;
    case Command::ReopenLastClosedTab:
        state_.reopenLastClosedTab();
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
    case Command::CommandPalette:
        state_.setShowCommandPalette(true);
        break;
    case Command::CloseOtherTabs:
        state_.closeOtherTabs(state_.selectedIndex.get());
        break;
    case Command::CloseDuplicateTabs:
        state_.closeDuplicateTabs();
        break;
    }
}

} // namespace ovel
