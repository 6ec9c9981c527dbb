// Dragging a tab over the strip: where the drop would land, drawn as an indicator beside the
// target, and the move when it lands.

#include "state/BrowserState.h"

#include <utility>

namespace ovel {

void BrowserState::beginTabDrag(const Uuid& id) {
    auto group = operation();
    draggedTabID_ = id;
    dropTargetTabID.set(std::nullopt);
}

void BrowserState::dropEntered(const Uuid& target, double x) {
    auto group = operation();
    if (!draggedTabID_) {
        return;
    }
    const int source = indexOfTab(*draggedTabID_);
    const int destination = indexOfTab(target);
    if (source < 0 || destination < 0 || source == destination) {
        return;
    }
    // A pinned tab never lands among unpinned ones, nor the reverse.
    if (tabs.get()[static_cast<std::size_t>(source)]->isPinned.get() !=
        tabs.get()[static_cast<std::size_t>(destination)]->isPinned.get()) {
        return;
    }
    setDropTarget(target, x > dropAfterThreshold);
}

void BrowserState::dropUpdated(const Uuid& target, double x) {
    setDropTarget(target, x > dropAfterThreshold);
}

void BrowserState::dropExited(const Uuid& target) {
    auto group = operation();
    if (dropTargetTabID.get() == target) {
        dropTargetTabID.set(std::nullopt);
    }
}

void BrowserState::setDropTarget(std::optional<Uuid> id, bool insertAfter) {
    auto group = operation();
    dropTargetTabID.set(std::move(id));
    dropInsertAfter.set(insertAfter);
}

bool BrowserState::performDrop(const Uuid& target) {
    auto group = operation();
    const std::optional<Uuid> dragged = std::exchange(draggedTabID_, std::nullopt);
    if (dragged) {
        // reorderTab decides whether and where the tab moves.
        reorderTab(*dragged, target, dropInsertAfter.get());
    }
    dropTargetTabID.set(std::nullopt);
    return dragged.has_value();
}

} // namespace ovel
