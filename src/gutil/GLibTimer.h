#pragma once

#include <chrono>
#include <functional>

namespace ovel {

// A one-shot timer on the default GLib main context. Starting it again replaces the pending
// shot; destroying it cancels the shot.
class GLibTimer {
public:
    GLibTimer() = default;
    GLibTimer(const GLibTimer&) = delete;
    GLibTimer& operator=(const GLibTimer&) = delete;
    ~GLibTimer() { cancel(); }

    void start(std::chrono::milliseconds delay, std::function<void()> action);
    void cancel();
    bool isPending() const { return sourceId_ != 0; }

private:
    static int fire(void* self);

    unsigned sourceId_ = 0;
    std::function<void()> action_;
};

} // namespace ovel
