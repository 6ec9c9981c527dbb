#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

class BrowserState;

// One entry of the command palette: a command, a tab to switch to or a workspace to restore.
struct CommandPaletteAction {
    std::string title;
    std::string subtitle;
    // The design's symbol name; views map it to an icon.
    std::string symbol;
    // Acts on the state the list was built from, if it still exists.
    std::function<void()> run;
};

// The palette's entries for `query`, in order: the fixed commands, one per open tab, one per
// saved workspace; those whose title or subtitle contains the trimmed, lower-cased query (all
// of them for a blank query). Building reads the state only; an entry acts on it when it runs.
std::vector<CommandPaletteAction> commandPaletteActions(const BrowserState& state,
                                                        std::string_view query);

} // namespace ovel
