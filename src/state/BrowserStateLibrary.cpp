// The active profile's bookmarks, history and workspace snapshots.

#include "state/BrowserState.h"

#include "web/Clock.h"
#include "web/UuidSource.h"
#include "web/BrowserTab.h"

#include <algorithm>

namespace ovel {

void BrowserState::addBookmark() {
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    const std::optional<std::string> url = tab->webView().url();
    if (!url) {
        return;
    }
    bookmarks.modify([&](auto& list) {
        list.push_back(Bookmark{services_.uuids.makeUuid(), tab->title.get(), *url});
    });
}

void BrowserState::recordHistory(const Url& url, const std::string& title) {
    const std::string& address = url.absoluteString();
    if (!historyEntries->empty() && historyEntries->front().url == address) {
        return;
    }
    historyEntries.modify([&](auto& list) {
        list.insert(list.begin(), HistoryEntry{services_.uuids.makeUuid(), title, address,
                                               services_.clock.now()});
    });
    if (historyEntries->size() > maxHistoryEntries) {
        historyEntries.modify([](auto& list) { list.pop_back(); });
    }
}

void BrowserState::clearHistory() {
    historyEntries.set({});
}

void BrowserState::createWorkspaceSnapshot(const std::optional<std::string>& named) {
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
        snapshot.tabs.push_back(TabStore{tab->webView().url(), tab->isPinned.get()});
    }
    workspaceSnapshots.modify([&](auto& list) { list.insert(list.begin(), std::move(snapshot)); });
    if (workspaceSnapshots->size() > maxWorkspaceSnapshots) {
        workspaceSnapshots.modify([](auto& list) { list.resize(maxWorkspaceSnapshots); });
    }
}

void BrowserState::restoreWorkspaceSnapshot(const WorkspaceSnapshot& snapshot) {
    if (snapshot.tabs.empty()) {
        return;
    }
    cancelTabSubscriptions();
    // The previous tabs are dropped, not closed: they do not enter the closed-tab list.
    tabs.set(tabsFromRecords(snapshot.tabs));
    for (const auto& tab : tabs.get()) {
        bind(*tab);
    }
    selectedIndex.set(
        std::clamp(snapshot.selectedIndex, 0, std::max(static_cast<int>(tabs->size()) - 1, 0)));
    applyAdBlockToAllTabs();
    applyPasskeyPolicyToAllTabs();
    persistSession();
}

void BrowserState::deleteWorkspaceSnapshot(const std::string& id) {
    workspaceSnapshots.modify([&](auto& list) {
        std::erase_if(list, [&](const WorkspaceSnapshot& snapshot) { return snapshot.id == id; });
    });
}

} // namespace ovel
