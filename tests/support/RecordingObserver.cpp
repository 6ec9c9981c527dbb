#include "support/RecordingObserver.h"

#include <utility>

namespace ovel::test {

namespace {

std::string describe(const TabListChange::Step& step) {
    switch (step.kind) {
    case TabListChange::Kind::Inserted:
        return "inserted " + std::to_string(step.index);
    case TabListChange::Kind::Removed:
        return "removed " + std::to_string(step.index);
    case TabListChange::Kind::Moved:
        return "moved " + std::to_string(step.index) + "->" + std::to_string(step.to);
    case TabListChange::Kind::Replaced:
        return "replaced";
    }
    return "?";
}

std::string describe(TabFields fields) {
    static const std::pair<TabField, const char*> names[] = {
        {TabField::Title, "title"},
        {TabField::Favicon, "favicon"},
        {TabField::Url, "url"},
        {TabField::Loading, "loading"},
        {TabField::Progress, "progress"},
        {TabField::BackForward, "back-forward"},
        {TabField::Pinned, "pinned"},
        {TabField::DisplayAddress, "display-address"},
        {TabField::DownloadMessage, "download-message"},
    };
    std::string text;
    for (const auto& [field, name] : names) {
        if (fields.has(field)) {
            text += text.empty() ? "" : " ";
            text += name;
        }
    }
    return text;
}

template <typename T> std::string text(const std::vector<T>& list) {
    return std::to_string(list.size());
}
std::string text(const std::string& value) {
    return value;
}
std::string text(bool value) {
    return value ? "true" : "false";
}
std::string text(BrowserTheme value) {
    return std::string(rawValue(value));
}
std::string text(SearchEngine value) {
    return std::string(rawValue(value));
}
std::string text(const SitePermissionRules& rules) {
    return std::to_string(rules.size());
}
std::string text(const std::optional<Uuid>& id) {
    return id ? "a tab" : "none";
}

} // namespace

RecordingObserver::RecordingObserver(BrowserState& state) : state_(state) {
    connections_.add(state.tabs.changed().connect([this](const TabListChange& change) {
        std::string line = "tabs:";
        for (const auto& step : change.steps) {
            line += " " + describe(step);
        }
        note(line);
    }));
    connections_.add(state.selectionChanged.connect([this](const SelectionChange& change) {
        note("selection: " + std::to_string(change.oldIndex) + " -> " +
             std::to_string(change.newIndex) +
             (change.oldTab == change.newTab ? " (same tab)" : ""));
    }));
    connections_.add(state.tabChanged.connect([this](const BrowserTab& tab, TabFields fields) {
        const int index = state_.indexOfTab(tab.id());
        if (index < 0) {
            broken.push_back("a tab outside the strip announced " + describe(fields));
        }
        note("tab " + std::to_string(index) + ": " + describe(fields));
    }));
    auto watch = [this](auto& field, std::string name) {
        connections_.add(field.changed().connect(
            [this, name](const auto& value) { note(name + ": " + text(value)); }));
    };
    watch(state.addressText, "addressText");
    watch(state.bookmarks, "bookmarks");
    watch(state.historyEntries, "history");
    watch(state.downloads, "downloads");
    watch(state.sitePermissionRules, "siteRules");
    watch(state.profiles, "profiles");
    watch(state.activeProfileID, "activeProfile");
    watch(state.showSidebar, "showSidebar");
    watch(state.showTabOverview, "showTabOverview");
    watch(state.showCommandPalette, "showCommandPalette");
    watch(state.showFindBar, "showFindBar");
    watch(state.findText, "findText");
    watch(state.smoothAnimations, "smoothAnimations");
    watch(state.theme, "theme");
    watch(state.searchEngine, "searchEngine");
    watch(state.adBlockEnabled, "adBlock");
    watch(state.workspaceSnapshots, "workspaces");
    watch(state.dropTargetTabID, "dropTarget");
    watch(state.dropInsertAfter, "dropInsertAfter");
}

std::vector<std::string> RecordingObserver::take() {
    return std::exchange(lines, {});
}

void RecordingObserver::note(std::string line) {
    const int count = static_cast<int>(state_.tabs->size());
    const int selected = state_.selectedIndex.get();
    if (count == 0) {
        broken.push_back(line + " heard with no tabs");
    } else if (selected < 0 || selected >= count || !state_.selectedTab()) {
        broken.push_back(line + " heard with the selection at " + std::to_string(selected) +
                         " of " + std::to_string(count));
    }
    lines.push_back(std::move(line));
}

} // namespace ovel::test
