#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

#include <array>
#include <string_view>

namespace ovel {

class BrowserState;

enum class Command {
    NewTab,
    ReopenLastClosedTab,
    Back,
    Forward,
    Reload,
    Home,
    CloseTab,
    DuplicateTab,
    ShowTabOverview,
    FindInPage,
    ZoomIn,
    ZoomOut,
    ActualSize,
    CommandPalette,
    CloseOtherTabs,
    CloseDuplicateTabs,
};

// One menu command: where it sits, what it says, the application action it runs and its
// keyboard shortcut (GTK's accelerator syntax; Control stands for the design's Command key).
struct BrowserCommand {
    Command command;
    std::string_view section;
    std::string_view title;
    std::string_view action;
    std::string_view accelerator;
};

// In menu order. The File items come first; the other sections follow in the order shown.
inline constexpr std::array<BrowserCommand, 16> browserCommands{{
    {Command::NewTab, "File", "New Tab", "new-tab", "<Control>t"},
    {Command::ReopenLastClosedTab, "File", "Reopen Last Closed Tab", "reopen-closed-tab",
     "<Shift><Control>t"},
    {Command::Back, "Navigation", "Back", "back", "<Control>bracketleft"},
    {Command::Forward, "Navigation", "Forward", "forward", "<Control>bracketright"},
    {Command::Reload, "Navigation", "Reload", "reload", "<Control>r"},
    {Command::Home, "Navigation", "Home", "home", "<Control>h"},
    {Command::CloseTab, "Tabs", "Close Tab", "close-tab", "<Control>w"},
    {Command::DuplicateTab, "Tabs", "Duplicate Tab", "duplicate-tab", "<Shift><Control>d"},
    {Command::ShowTabOverview, "Tabs", "Show Tab Overview", "show-tab-overview",
     "<Control>backslash"},
    {Command::FindInPage, "View", "Find in Page", "find-in-page", "<Control>f"},
    {Command::ZoomIn, "View", "Zoom In", "zoom-in", "<Control>equal"},
    {Command::ZoomOut, "View", "Zoom Out", "zoom-out", "<Control>minus"},
    {Command::ActualSize, "View", "Actual Size", "actual-size", "<Control>0"},
    {Command::CommandPalette, "Tools", "Command Palette", "command-palette", "<Shift><Control>k"},
    {Command::CloseOtherTabs, "Tools", "Close Other Tabs", "close-other-tabs", ""},
    {Command::CloseDuplicateTabs, "Tools", "Close Duplicate Tabs", "close-duplicate-tabs", ""},
}};

// The menu commands as application actions ("app.new-tab", …) with their shortcuts, and the
// primary menu that lists them. Every command is always enabled: each is a thin call into the
// browser state, which ignores what does not apply.
class BrowserCommands {
public:
    BrowserCommands(GtkApplication* application, BrowserState& state);
    ~BrowserCommands();

    BrowserCommands(const BrowserCommands&) = delete;
    BrowserCommands& operator=(const BrowserCommands&) = delete;

    GMenuModel* menu() const { return G_MENU_MODEL(menu_.get()); }

    // What the menu item and the shortcut do.
    void run(Command command);

private:
    void addKeyOnlyAction(const char* name, std::vector<const char*> accelerators,
                          std::function<void()> run);

    GtkApplication* application_;
    BrowserState& state_;
    GObjectRef<GMenu> menu_;
    GSignalConnections signals_;
    std::vector<const char*> keyOnlyActions_;
};

} // namespace ovel
