#pragma once

#include <cstddef>
#include <optional>
#include <unordered_set>
#include <vector>

namespace ovel {

// One change of a list shown by position: at `position`, `removed` items went and the items
// `addedFrom` up to `addedFrom + addedCount` of the new list came in their place.
struct ListSplice {
    std::size_t position = 0;
    std::size_t removed = 0;
    std::size_t addedFrom = 0;
    std::size_t addedCount = 0;
    bool operator==(const ListSplice&) const = default;
};

// The splices that turn `before` into `after`, items matched by their `id`, applied in order (the
// positions of each count the splices before it). Items that kept their id and value stay; an
// item whose value changed is replaced where it is; items that changed order are removed and
// inserted again. Inserting at the front and dropping the oldest at the back is two splices.
template <typename Item>
std::vector<ListSplice> listSplices(const std::vector<Item>& before,
                                    const std::vector<Item>& after) {
    using Id = decltype(Item{}.id);
    std::unordered_set<Id> afterIds;
    for (const Item& item : after) {
        afterIds.insert(item.id);
    }
    // Ids of `before` still waiting to be matched.
    std::unordered_set<Id> pending;
    for (const Item& item : before) {
        pending.insert(item.id);
    }
    std::vector<ListSplice> splices;
    std::optional<ListSplice> open;
    auto flush = [&] {
        if (open && (open->removed > 0 || open->addedCount > 0)) {
            splices.push_back(*open);
        }
        open.reset();
    };
    auto current = [&](std::size_t position, std::size_t next) -> ListSplice& {
        if (!open) {
            open = ListSplice{position, 0, next, 0};
        }
        return *open;
    };
    std::size_t position = 0;
    std::size_t oldIndex = 0;
    std::size_t newIndex = 0;
    while (oldIndex < before.size() || newIndex < after.size()) {
        const Item* old = oldIndex < before.size() ? &before[oldIndex] : nullptr;
        const Item* fresh = newIndex < after.size() ? &after[newIndex] : nullptr;
        if (old && fresh && old->id == fresh->id && pending.count(old->id) != 0) {
            pending.erase(old->id);
            if (*old == *fresh) {
                flush();
            } else {
                ListSplice& splice = current(position, newIndex);
                ++splice.removed;
                ++splice.addedCount;
            }
            ++oldIndex;
            ++newIndex;
            ++position;
        } else if (old &&
                   (afterIds.count(old->id) == 0 || !fresh || pending.count(fresh->id) != 0)) {
            // Gone, or in the way of an item that comes later in `before`: it goes here and, if
            // it stays, comes back where `after` has it.
            pending.erase(old->id);
            ++current(position, newIndex).removed;
            ++oldIndex;
        } else {
            // An open splice has added every item of `after` before this one, so this one follows.
            ++current(position, newIndex).addedCount;
            ++newIndex;
            ++position;
        }
    }
    flush();
    return splices;
}

} // namespace ovel
