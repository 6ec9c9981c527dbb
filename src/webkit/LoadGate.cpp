#include "webkit/LoadGate.h"

#include <utility>

namespace ovel {

LoadGate::LoadGate(Timers timers) : timers_(std::move(timers)) {}

void LoadGate::request(std::function<void()> issue,
                       std::optional<std::chrono::milliseconds> idleTimeout) {
    Load load{std::move(issue), idleTimeout};
    // A request made while one is held, even one about to be handed over, replaces it: the
    // latest request is what the view must end up showing.
    if (firstLoadAsked_ && (!firstLoadEnded_ || held_)) {
        held_ = std::move(load);
        return;
    }
    firstLoadAsked_ = true;
    this->issue(std::move(load));
}

void LoadGate::issue(Load load) {
    if (load.idleTimeout) {
        idleTimeout_ = *load.idleTimeout;
        timedLoad_ = TimedLoad::Pending;
        timers_.startTimeout(idleTimeout_);
    } else {
        forgetTimedLoad();
    }
    load.issue();
}

void LoadGate::loadStarted() {
    // A navigation that replaces the timed one first fails it, which ends the time-out.
    if (timedLoad_ == TimedLoad::Pending) {
        timedLoad_ = TimedLoad::Running;
    }
}

void LoadGate::activity() {
    if (timedLoad_ != TimedLoad::None) {
        timers_.startTimeout(idleTimeout_);
    }
}

void LoadGate::loadEnded() {
    // Left running, the timer would stop the page's later requests (fetches, images). A timed
    // load still pending has not started: the end is an earlier load's.
    if (timedLoad_ == TimedLoad::Running) {
        forgetTimedLoad();
    }
    firstLoadEnded();
}

void LoadGate::loadingStopped() {
    firstLoadEnded();
}

void LoadGate::stop() {
    held_.reset();
    timers_.cancelHandOver();
    forgetTimedLoad();
}

void LoadGate::forgetTimedLoad() {
    timers_.cancelTimeout();
    timedLoad_ = TimedLoad::None;
}

LoadGate::Expiry LoadGate::timeoutExpired() {
    const bool wasRunning = timedLoad_ == TimedLoad::Running;
    timedLoad_ = TimedLoad::None;
    return wasRunning ? Expiry::Failed : Expiry::Dropped;
}

void LoadGate::firstLoadEnded() {
    if (!firstLoadAsked_ || firstLoadEnded_) {
        return;
    }
    firstLoadEnded_ = true;
    if (held_) {
        timers_.scheduleHandOver();
    }
}

void LoadGate::handOver() {
    if (auto load = std::exchange(held_, std::nullopt)) {
        issue(std::move(*load));
    }
}

} // namespace ovel
