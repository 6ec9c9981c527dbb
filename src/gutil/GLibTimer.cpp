#include "gutil/GLibTimer.h"

#include <glib.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace ovel {

void GLibTimer::start(std::chrono::milliseconds delay, std::function<void()> action) {
    cancel();
    action_ = std::move(action);
    const auto ms = static_cast<guint>(std::clamp<std::chrono::milliseconds::rep>(
        delay.count(), 0, std::numeric_limits<guint>::max()));
    sourceId_ = g_timeout_add(ms, &GLibTimer::fire, this);
}

void GLibTimer::cancel() {
    if (sourceId_ != 0) {
        g_source_remove(sourceId_);
        sourceId_ = 0;
    }
    action_ = nullptr;
}

int GLibTimer::fire(void* data) {
    auto* self = static_cast<GLibTimer*>(data);
    self->sourceId_ = 0;
    // The action may start the timer again or destroy its owner: take it out first.
    auto action = std::exchange(self->action_, nullptr);
    action();
    return G_SOURCE_REMOVE;
}

} // namespace ovel
