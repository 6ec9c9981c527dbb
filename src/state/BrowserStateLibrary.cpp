// The active profile's bookmarks, history and workspace snapshots.

#include "state/BrowserState.h"

#include "web/Clock.h"
#include "web/UuidSource.h"

#include <algorithm>

namespace ovel {

void BrowserState::addBookmark() {
    auto group = operation();
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    const std::optional<std::string> url = tab->url();
    if (!url) {
        return;
    }
    bookmarks.modify([&](auto& list) {
        list.push_back(Bookmark{services_.uuids.makeUuid(), tab->title.get(), *url});
    });
}

void BrowserState::openBookmark(const Bookmark& bookmark) {
    auto group = operation();
    const auto tab = selectedTab();
    if (auto url = Url::parse(bookmark.url); url && tab) {
        tab->load(*url);
    }
}

void BrowserState::recordHistory(const Url& url, const std::string& title) {
    const std::string& address = url.absoluteString();
    if (!historyEntries->empty() && historyEntries->front().url == address) {
        return;
    }
    // One change, so the full history is saved once per visit.
    historyEntries.modify([&](auto& list) {
        list.insert(list.begin(), HistoryEntry{services_.uuids.makeUuid(), title, address,
                                               services_.clock.now()});
        if (list.size() > maxHistoryEntries) {
            list.pop_back();
        }
    });
}

void BrowserState::clearHistory() {
    auto group = operation();
    historyEntries.set({});
}

void BrowserState::createWorkspaceSnapshot(const std::optional<std::string>& named) {
    auto group = operation();
    std::string name = trimmed(named.value_or(""));
    if (name.empty()) {
        name = "Workspace " + std::to_string(workspaceSnapshots->size() + 1);
    }
    WorkspaceSnapshot snapshot{services_.uuids.makeUuid(),
                               std::move(name),
                               services_.clock.now(),
                               selectedIndex.get(),
                               {}};
    for (const auto& tab : tabs.get()) {
        snapshot.tabs.push_back(tab->storedRecord());
    }
    workspaceSnapshots.modify([&](auto& list) { list.insert(list.begin(), std::move(snapshot)); });
    if (workspaceSnapshots->size() > maxWorkspaceSnapshots) {
        workspaceSnapshots.modify([](auto& list) { list.resize(maxWorkspaceSnapshots); });
    }
}

void BrowserState::restoreWorkspaceSnapshot(const WorkspaceSnapshot& snapshot) {
    auto group = operation();
    if (snapshot.tabs.empty()) {
        return;
    }
    replaceTabs(snapshot.tabs, snapshot.selectedIndex, ReloadSelected::Yes);
    persistSession();
}

void BrowserState::deleteWorkspaceSnapshot(const std::string& id) {
    auto group = operation();
    workspaceSnapshots.modify([&](auto& list) {
        std::erase_if(list, [&](const WorkspaceSnapshot& snapshot) { return snapshot.id == id; });
    });
}

} // namespace ovel
