#include "presentation/CommandPalette.h"

#include "presentation/TabSearch.h"
#include "state/BrowserState.h"

#include <memory>

namespace ovel {

std::vector<CommandPaletteAction> commandPaletteActions(const BrowserState& state,
                                                        std::string_view query) {
    // States are only ever made by BrowserState::create, never const, so the entries may act
    // on the one they were built from. They hold it weakly: a list outliving its window acts
    // on nothing.
    const std::weak_ptr<BrowserState> weak =
        std::const_pointer_cast<BrowserState>(state.shared_from_this());
    auto on = [weak](auto operation) {
        return [weak, operation] {
            if (const auto target = weak.lock()) {
                operation(*target);
            }
        };
    };

    std::vector<CommandPaletteAction> all{
        {"New Tab", "Open a blank tab", "plus", on([](BrowserState& s) { s.newTab(); })},
        {"Reopen Closed Tab", "Restore the latest closed tab", "arrow.uturn.backward",
         on([](BrowserState& s) { s.reopenLastClosedTab(); })},
        {"Tab Overview", "Open tab grid", "square.grid.2x2",
         on([](BrowserState& s) { s.setShowTabOverview(true); })},
        {"Open Settings", "Go to ovel://settings", "gearshape",
         on([](BrowserState& s) { s.openURL("ovel://settings"); })},
        {"Open Downloads", "Go to ovel://downloads", "arrow.down.circle",
         on([](BrowserState& s) { s.openURL("ovel://downloads"); })},
        {"Open History", "Go to ovel://history",
         "clock.arrow.trianglehead.counterclockwise.rotate.90",
         on([](BrowserState& s) { s.openURL("ovel://history"); })},
        {"Open Workspaces", "Go to ovel://workspaces", "square.stack.3d.up",
         on([](BrowserState& s) { s.openURL("ovel://workspaces"); })},
        {"Close Duplicate Tabs", "Keep one copy of each page", "rectangle.stack.badge.minus",
         on([](BrowserState& s) { s.closeDuplicateTabs(); })},
        // The tab kept is the one selected when the entry runs, not when the list was built.
        {"Close Other Tabs", "Keep only current tab", "xmark.bin",
         on([](BrowserState& s) { s.closeOtherTabs(s.selectedIndex.get()); })},
    };
    const auto& tabs = state.tabs.get();
    for (int index = 0; index < static_cast<int>(tabs.size()); ++index) {
        const BrowserTab& tab = *tabs[static_cast<std::size_t>(index)];
        all.push_back({"Switch to " + tab.title.get(), tabHostOrStartPage(tab), "safari",
                       on([index](BrowserState& s) { s.selectTab(index); })});
    }
    for (const WorkspaceSnapshot& snapshot : state.workspaceSnapshots.get()) {
        all.push_back({"Restore Workspace: " + snapshot.name,
                       std::to_string(snapshot.tabs.size()) + " tab(s)", "square.stack.3d.up.fill",
                       on([snapshot](BrowserState& s) { s.restoreWorkspaceSnapshot(snapshot); })});
    }

    const std::string key = searchKey(query);
    if (key.empty()) {
        return all;
    }
    std::vector<CommandPaletteAction> matching;
    for (CommandPaletteAction& action : all) {
        if (containsSearchKey(action.title, key) || containsSearchKey(action.subtitle, key)) {
            matching.push_back(std::move(action));
        }
    }
    return matching;
}

} // namespace ovel
