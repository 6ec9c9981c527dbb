// Tab operations: selecting, opening, closing, reopening, duplicating, pinning and moving tabs.
// Each keeps the selection on the same tab and saves the session only when it changed something.

#include "state/BrowserState.h"

#include <algorithm>
#include <set>

namespace ovel {

// The session keeps the selection too: a crash right after a switch comes back to that tab.
void BrowserState::selectTab(int index) {
    auto group = operation();
    if (index >= 0 && index < static_cast<int>(tabs->size()) && index != selectedIndex.get()) {
        selectedIndex.set(index);
        persistSession();
    }
}

void BrowserState::selectNextTab() {
    const int count = static_cast<int>(tabs->size());
    if (count > 0) {
        selectTab((selectedIndex.get() + 1) % count);
    }
}

void BrowserState::selectPreviousTab() {
    const int count = static_cast<int>(tabs->size());
    if (count > 0) {
        selectTab((selectedIndex.get() + count - 1) % count);
    }
}

void BrowserState::addTabAndSelect(std::shared_ptr<BrowserTab> tab) {
    tabs.insert(static_cast<int>(tabs->size()), std::move(tab));
    selectedIndex.set(static_cast<int>(tabs->size()) - 1);
    persistSession();
}

void BrowserState::addTabFromOpener(const BrowserTab& opener, std::shared_ptr<BrowserTab> tab,
                                    bool select) {
    const int count = static_cast<int>(tabs->size());
    int index = std::max(indexOfTab(opener.id()) + 1, pinnedCount());
    while (index < count &&
           tabs.get()[static_cast<std::size_t>(index)]->openerID() == opener.id()) {
        ++index;
    }
    tab->setOpener(opener.id());
    const Uuid id = tab->id();
    const auto selected = selectedTab();
    tabs.insert(index, std::move(tab));
    setSelectionToTab(select || !selected ? id : selected->id());
    persistSession();
}

void BrowserState::pushClosedTab(TabStore record) {
    closedTabs_.insert(closedTabs_.begin(), std::move(record));
    if (closedTabs_.size() > maxClosedTabs) {
        closedTabs_.resize(maxClosedTabs);
    }
}

void BrowserState::setSelectionToTab(const Uuid& id) {
    selectedIndex.set(std::max(indexOfTab(id), 0));
}

void BrowserState::newTab() {
    auto group = operation();
    addTabAndSelect(makeTab(std::nullopt));
}

void BrowserState::reopenLastClosedTab() {
    auto group = operation();
    if (closedTabs_.empty()) {
        return;
    }
    TabStore record = closedTabs_.front();
    closedTabs_.erase(closedTabs_.begin());
    persistClosedTabs();
    // Back where it stood, within its section.
    const int count = static_cast<int>(tabs->size());
    int index = std::clamp(record.index.value_or(count), 0, count);
    index = record.isPinned ? std::min(index, pinnedCount()) : std::max(index, pinnedCount());
    auto tab = makeTab(record);
    const Uuid id = tab->id();
    tabs.insert(index, std::move(tab));
    setSelectionToTab(id);
    persistSession();
}

TabStore BrowserState::closedRecordOf(int index) const {
    TabStore record = tabs.get()[static_cast<std::size_t>(index)]->storedRecord();
    record.index = index;
    return record;
}

void BrowserState::closeTab(int index) {
    auto group = operation();
    const int count = static_cast<int>(tabs->size());
    if (count <= 1 || index < 0 || index >= count) {
        return;
    }
    pushClosedTab(closedRecordOf(index));
    persistClosedTabs();

    int selection = selectedIndex.get();
    if (index < selection) {
        selection -= 1;
    } else if (index == selection) {
        selection = std::min(selection, count - 2);
    }
    tabs.remove(index);
    selectedIndex.set(selection);
    persistSession();
}

void BrowserState::duplicateSelectedTab() {
    auto group = operation();
    const auto source = selectedTab();
    if (!source) {
        return;
    }
    // Only the address is copied: no history, no scroll position.
    TabStore record = source->storedRecord();
    record.sessionState.reset();
    addTabAndSelect(makeTab(record));
}

void BrowserState::closeOtherTabs(int keeping) {
    auto group = operation();
    const int count = static_cast<int>(tabs->size());
    if (keeping < 0 || keeping >= count) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        if (i != keeping) {
            pushClosedTab(closedRecordOf(i));
        }
    }
    // Removed from the right, so each step's index holds when views replay them in order.
    for (int i = count - 1; i >= 0; --i) {
        if (i != keeping) {
            tabs.remove(i);
        }
    }
    selectedIndex.set(0);
    persistClosedTabs();
    persistSession();
}

void BrowserState::closeDuplicateTabs() {
    auto group = operation();
    if (tabs->size() < 2) {
        return;
    }
    std::set<std::string> seen;
    std::vector<int> duplicates;
    for (int i = 0; i < static_cast<int>(tabs->size()); ++i) {
        const BrowserTab& tab = *tabs.get()[static_cast<std::size_t>(i)];
        if (!seen.insert(tab.url().value_or("start://newtab") + "|" + tab.title.get()).second) {
            duplicates.push_back(i);
        }
    }
    if (duplicates.empty()) {
        return;
    }
    const auto selected = selectedTab();
    for (int index : duplicates) {
        pushClosedTab(closedRecordOf(index));
    }
    for (auto it = duplicates.rbegin(); it != duplicates.rend(); ++it) {
        tabs.remove(*it);
    }
    setSelectionToTab(selected ? selected->id() : Uuid{});
    persistClosedTabs();
    persistSession();
}

int BrowserState::pinnedCount() const {
    return static_cast<int>(std::count_if(tabs->begin(), tabs->end(),
                                          [](const auto& tab) { return tab->isPinned.get(); }));
}

void BrowserState::togglePinTab(int index) {
    auto group = operation();
    if (index < 0 || index >= static_cast<int>(tabs->size())) {
        return;
    }
    BrowserTab& tab = *tabs.get()[static_cast<std::size_t>(index)];
    tab.setPinned(!tab.isPinned.get());
    movePinnedTabToSection(index);
    persistSession();
}

void BrowserState::movePinnedTabToSection(int index) {
    if (index < 0 || index >= static_cast<int>(tabs->size())) {
        return;
    }
    const auto selected = selectedTab();
    const bool pinned = tabs.get()[static_cast<std::size_t>(index)]->isPinned.get();
    // Counted without the tab itself: pinned tabs go to the end of the pinned section,
    // unpinned ones to the end of the strip.
    const int others = static_cast<int>(tabs->size()) - 1;
    const int destination = pinned ? pinnedCount() - 1 : others;
    tabs.move(index, destination);
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
    tabs.move(from, gap > from ? gap - 1 : gap);
    if (selected) {
        setSelectionToTab(selected->id());
    }
    persistSession();
}

void BrowserState::moveTabLeft(int index) {
    auto group = operation();
    moveTab(index, index - 1);
}

void BrowserState::moveTabRight(int index) {
    auto group = operation();
    moveTab(index, index + 2);
}

void BrowserState::reorderTab(const Uuid& draggedID, const Uuid& targetID, bool insertAfter) {
    auto group = operation();
    const int from = indexOfTab(draggedID);
    const int target = indexOfTab(targetID);
    if (from < 0 || target < 0) {
        return;
    }
    const int gap = std::clamp(target + (insertAfter ? 1 : 0), 0, static_cast<int>(tabs->size()));
    moveTab(from, gap);
}

void BrowserState::goBack() {
    auto group = operation();
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    // From a failed load, Back returns to the page the web view still holds, unless that is
    // what is left of the failed page itself.
    if (tab->showsPageBehindFailure()) {
        tab->dismissFailure();
        addressText.set(tab->url().value_or(std::string()));
        persistSession();
        return;
    }
    tab->mutableWebView().goBack();
}

void BrowserState::goForward() {
    if (const auto tab = selectedTab()) {
        tab->mutableWebView().goForward();
    }
}

void BrowserState::reload() {
    auto group = operation();
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    // A failed load is tried again; the web view still holds the page before it.
    if (const auto& failure = tab->loadFailure.get()) {
        if (const auto url = Url::fromEngine(failure->url)) {
            tab->load(*url);
            return;
        }
    }
    tab->reload();
}

} // namespace ovel
