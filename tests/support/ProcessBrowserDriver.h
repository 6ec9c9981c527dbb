#pragma once

#include "support/ProcessBrowser.h"

#include <chrono>
#include <optional>
#include <string>

namespace ovel::test {

// Drives a running ProcessBrowser as a person would: finds controls by role and accessible name
// through the accessibility tree and presses them, and types on the keyboard with xdotool.
// Roles are AT-SPI's role names: "push button", "toggle button", "menu item", "text".
class ProcessBrowserDriver {
public:
    explicit ProcessBrowserDriver(const ProcessBrowser& browser) : browser_(browser) {}

    bool exists(const std::string& role, const std::string& name) const;
    bool waitFor(const std::string& role, const std::string& name,
                 std::chrono::milliseconds limit = std::chrono::seconds(30)) const;
    // Runs the control's click action; false when no such control shows.
    bool click(const std::string& role, const std::string& name) const;
    // Where the control is, relative to its window, once it has stopped moving.
    struct Extents {
        int x, y, width, height;
    };
    std::optional<Extents> extents(const std::string& role, const std::string& name) const;
    // The accessibility tree as text, for failure messages.
    std::string dump() const;

    // Presses keys on the browser's window: xdotool's names, e.g. "ctrl+t", "Return".
    // `window` is a pattern of the window's title: the browser's, unless a dialog is meant.
    bool keys(const std::string& combination, const std::string& window = "^Ovel Web$") const;
    bool type(const std::string& text) const;
    // A click at a point of the window: button 1 is the left one, 2 the middle, 3 the right.
    bool clickAt(int x, int y, int button = 1) const;
    // Presses the left button at one point of the window, moves with pauses GTK needs to see a
    // drag begin and hover a target, and lets go at the other.
    bool drag(int fromX, int fromY, int toX, int toY) const;

private:
    // Runs a command, returning its standard output when it exits with status 0.
    std::optional<std::string> run(const std::vector<std::string>& argv) const;
    std::optional<std::string> atspi(const std::vector<std::string>& arguments) const;
    std::optional<Extents> extentsNow(const std::string& role, const std::string& name) const;

    const ProcessBrowser& browser_;
};

} // namespace ovel::test
