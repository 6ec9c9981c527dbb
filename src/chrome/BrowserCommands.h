#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gtk/gtk.h>

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

class BrowserState;

enum class Command {
    NewTab,
    ReopenLastClosedTab,
    Print,
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
    FullScreen,
    CommandPalette,
    CloseOtherTabs,
    CloseDuplicateTabs,
    KeyboardShortcuts,
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

// In menu order. The File items come first; the other sections follow in the order shown, and
// the Help items close the menu.
inline constexpr std::array<BrowserCommand, 19> browserCommands{{
    {Command::NewTab, "File", "New Tab", "new-tab", "<Control>t"},
    {Command::ReopenLastClosedTab, "File", "Reopen Last Closed Tab", "reopen-closed-tab",
     "<Shift><Control>t"},
    {Command::Print, "File", "Print…", "print", "<Control>p"},
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
    {Command::FullScreen, "View", "Full Screen", "fullscreen", "F11"},
    {Command::CommandPalette, "Tools", "Command Palette", "command-palette", "<Shift><Control>k"},
    {Command::CloseOtherTabs, "Tools", "Close Other Tabs", "close-other-tabs", ""},
    {Command::CloseDuplicateTabs, "Tools", "Close Duplicate Tabs", "close-duplicate-tabs", ""},
    {Command::KeyboardShortcuts, "Help", "Keyboard Shortcuts", "keyboard-shortcuts",
     "<Control>question"},
}};

// Shortcuts outside the menu, in the sections of the keyboard-shortcuts window. `accelerators`
// is a space-separated list in GTK's syntax; the ones with an action are installed by
// BrowserCommands, the others by the widget or the application that handles them.
struct KeyShortcut {
    std::string_view section;
    std::string_view title;
    std::string_view action;
    std::string_view accelerators;
};

inline constexpr std::array<KeyShortcut, 5> keyOnlyShortcuts{{
    {"Navigation", "Focus Address Field", "", "<Control>l <Alt>d"},
    {"Tabs", "Next Tab", "select-next-tab", "<Control>Tab <Control>Page_Down"},
    {"Tabs", "Previous Tab", "select-previous-tab", "<Shift><Control>Tab <Control>Page_Up"},
    {"View", "Leave Page Full Screen", "", "Escape"},
    {"Help", "Quit", "", "<Control>q"},
}};

// The menu commands as application actions ("app.new-tab", …) with their shortcuts, and the
// primary menu that lists them. Every command but Print is always enabled: each is a thin call
// into the browser state, which ignores what does not apply, or into the active window. Print
// follows whether the selected tab shows a web page.
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
    void addKeyOnlyAction(const KeyShortcut& shortcut, std::function<void()> run);
    void updatePrintEnabled();
    GtkWindow* activeWindow() const;

    GtkApplication* application_;
    BrowserState& state_;
    GObjectRef<GMenu> menu_;
    GSignalConnections signals_;
    std::vector<std::string> keyOnlyActions_;
    Connections connections_;
};

// The accelerators of a space-separated list, in order.
std::vector<std::string> splitAccelerators(std::string_view accelerators);

} // namespace ovel
