// Tab operations: opening, closing, reopening, duplicating, pinning and moving tabs. Each keeps
// the selection on the same tab and saves the session only when it changed something.

#include "state/BrowserState.h"

#include "web/BrowserTab.h"

#include <algorithm>
#include <set>

namespace ovel {

std::shared_ptr<BrowserTab> BrowserState::makeTab(const std::optional<TabStore>& record) {
    // Made without a start page of its own: what it shows is loaded below, once.
    auto tab = BrowserTab::create(services_, false);
    std::optional<Url> url;
    if (record) {
        tab->isPinned.set(record->isPinned);
        url = record->url ? Url::parse(*record->url) : std::nullopt;
    }
    if (url) {
        tab->load(*url);
    } else {
        tab->loadStartPage(theme.get());
    }
    applyAdBlock(*tab);
    applyPasskeyPolicy(*tab);
    bind(*tab);
    return tab;
}

void BrowserState::addTabAndSelect(std::shared_ptr<BrowserTab> tab) {
    tabs.modify([&](TabList& list) { list.push_back(std::move(tab)); });
    selectedIndex.set(static_cast<int>(tabs->size()) - 1);
    persistSession();
}

TabStore BrowserState::closedTabRecord(const BrowserTab& tab) const {
    return TabStore{tab.webView().url(), tab.isPinned.get()};
}

void BrowserState::pushClosedTab(TabStore record) {
    closedTabs_.insert(closedTabs_.begin(), std::move(record));
    if (closedTabs_.size() > maxClosedTabs) {
        closedTabs_.resize(maxClosedTabs);
    }
}

int BrowserState::indexOfTab(const Uuid& id) const {
    const TabList& list = tabs.get();
    auto it =
        std::find_if(list.begin(), list.end(), [&](const auto& tab) { return tab->id() == id; });
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}

void BrowserState::setSelectionToTab(const Uuid& id) {
    selectedIndex.set(std::max(indexOfTab(id), 0));
}

void BrowserState::newTab() {
    addTabAndSelect(makeTab(std::nullopt));
}

void BrowserState::reopenLastClosedTab() {
    if (closedTabs_.empty()) {
        return;
    }
    TabStore record = closedTabs_.front();
    closedTabs_.erase(closedTabs_.begin());
    persistClosedTabs();
    addTabAndSelect(makeTab(record));
}

void BrowserState::closeTab(int index) {
    const int count = static_cast<int>(tabs->size());
    if (count <= 1 || index < 0 || index >= count) {
        return;
    }
    pushClosedTab(closedTabRecord(*tabs.get()[static_cast<std::size_t>(index)]));
    persistClosedTabs();

    int selection = selectedIndex.get();
    if (index < selection) {
        selection -= 1;
    } else if (index == selection) {
        selection = std::min(selection, count - 2);
    }
    tabs.modify([index](TabList& list) { list.erase(list.begin() + index); });
    selectedIndex.set(selection);
    persistSession();
}

void BrowserState::duplicateSelectedTab() {
    const auto source = selectedTab();
    if (!source) {
        return;
    }
    // Only the address is copied: no history, no scroll position.
    addTabAndSelect(makeTab(TabStore{source->webView().url(), source->isPinned.get()}));
}

void BrowserState::closeOtherTabs(int keeping) {
    const int count = static_cast<int>(tabs->size());
    if (keeping < 0 || keeping >= count) {
        return;
    }
    const auto kept = tabs.get()[static_cast<std::size_t>(keeping)];
    for (int i = 0; i < count; ++i) {
        if (i != keeping) {
            pushClosedTab(closedTabRecord(*tabs.get()[static_cast<std::size_t>(i)]));
        }
    }
    tabs.set({kept});
    selectedIndex.set(0);
    persistClosedTabs();
    persistSession();
}

void BrowserState::closeDuplicateTabs() {
    if (tabs->size() < 2) {
        return;
    }
    std::set<std::string> seen;
    TabList kept;
    std::vector<std::shared_ptr<BrowserTab>> duplicates;
    for (const auto& tab : tabs.get()) {
        const std::string key =
            tab->webView().url().value_or("start://newtab") + "|" + tab->title.get();
        if (seen.insert(key).second) {
            kept.push_back(tab);
        } else {
            duplicates.push_back(tab);
        }
    }
    if (duplicates.empty()) {
        return;
    }
    const auto selected = selectedTab();
    for (const auto& tab : duplicates) {
        pushClosedTab(closedTabRecord(*tab));
    }
    tabs.set(std::move(kept));
    setSelectionToTab(selected ? selected->id() : Uuid{});
    persistClosedTabs();
    persistSession();
}

int BrowserState::pinnedCount() const {
    return static_cast<int>(std::count_if(tabs->begin(), tabs->end(),
                                          [](const auto& tab) { return tab->isPinned.get(); }));
}

void BrowserState::togglePinTab(int index) {
    if (index < 0 || index >= static_cast<int>(tabs->size())) {
        return;
    }
    BrowserTab& tab = *tabs.get()[static_cast<std::size_t>(index)];
    tab.isPinned.set(!tab.isPinned.get());
    movePinnedTabToSection(index);
    persistSession();
}

void BrowserState::movePinnedTabToSection(int index) {
    if (index < 0 || index >= static_cast<int>(tabs->size())) {
        return;
    }
    const auto selected = selectedTab();
    tabs.modify([index](TabList& list) {
        auto tab = list[static_cast<std::size_t>(index)];
        list.erase(list.begin() + index);
        const auto pinnedRemaining = std::count_if(list.begin(), list.end(),
                                                   [](const auto& t) { return t->isPinned.get(); });
        // Pinned tabs go to the end of the pinned section, unpinned ones to the end of the strip.
        const auto destination =
            tab->isPinned.get() ? pinnedRemaining : static_cast<std::ptrdiff_t>(list.size());
        list.insert(list.begin() + destination, std::move(tab));
    });
    if (selected) {
        setSelectionToTab(selected->id());
    }
}

bool BrowserState::canMoveTabLeft(int index) const {
    if (index < 0 || index >= static_cast<int>(tabs->size())) {
        return false;
    }
    if (tabs.get()[static_cast<std::size_t>(index)]->isPinned.get()) {
        return index != 0 && tabs.get()[static_cast<std::size_t>(index - 1)]->isPinned.get();
    }
    return pinnedCount() < index;
}

bool BrowserState::canMoveTabRight(int index) const {
    const int count = static_cast<int>(tabs->size());
    if (index < 0 || index >= count) {
        return false;
    }
    const bool pinned = tabs.get()[static_cast<std::size_t>(index)]->isPinned.get();
    return index + 1 < (pinned ? pinnedCount() : count);
}

void BrowserState::moveTab(int from, int to) {
    const int count = static_cast<int>(tabs->size());
    if (from < 0 || from >= count || to == from) {
        return;
    }
    const auto selected = selectedTab();
    int gap = std::clamp(to, 0, count);
    // Pinned tabs stay in the leading section, unpinned ones after it.
    const int pinned = pinnedCount();
    if (tabs.get()[static_cast<std::size_t>(from)]->isPinned.get()) {
        gap = std::min(gap, pinned);
    } else {
        gap = std::max(gap, pinned);
    }
    if (gap == from || gap == from + 1) {
        return;
    }
    if (gap > from) {
        gap -= 1;
    }
    tabs.modify([from, gap](TabList& list) {
        auto tab = list[static_cast<std::size_t>(from)];
        list.erase(list.begin() + from);
        list.insert(list.begin() + gap, std::move(tab));
    });
    if (selected) {
        setSelectionToTab(selected->id());
    }
    persistSession();
}

void BrowserState::moveTabLeft(int index) {
    moveTab(index, index - 1);
}

void BrowserState::moveTabRight(int index) {
    moveTab(index, index + 2);
}

void BrowserState::reorderTab(const Uuid& draggedID, const Uuid& targetID, bool insertAfter) {
    const int from = indexOfTab(draggedID);
    const int target = indexOfTab(targetID);
    if (from < 0 || target < 0) {
        return;
    }
    const int gap = std::clamp(target + (insertAfter ? 1 : 0), 0, static_cast<int>(tabs->size()));
    moveTab(from, gap);
}

} // namespace ovel
