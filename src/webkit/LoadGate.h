#pragma once

#include <chrono>
#include <functional>
#include <optional>

namespace ovel {

// Decides when a web view's loads reach the engine, and when a load has gone quiet too long.
//
// A new view launches its web process with its first load. A second load asked for before the
// first has started can leave WebKit doing neither, with no start and no failure to tell (seen
// with a new tab's start page followed at once by an address). So while the first load has not
// ended, the latest request is held and handed over once it ends; not as soon as it starts,
// because a load asked for while another commits makes WebKit report the newer address for the
// page that commits.
//
// WebKit has no request time-out of its own. A load given one is stopped when it has gone that
// long without anything arriving; every arrival starts it over, so a slow page that keeps
// sending is never cut off.
class LoadGate {
public:
    // The owner's timers. When the time-out runs out it calls timeoutExpired(); the hand-over
    // runs handOver() from the main loop, not from inside the engine's signal about the first
    // load.
    struct Timers {
        std::function<void(std::chrono::milliseconds)> startTimeout;
        std::function<void()> cancelTimeout;
        std::function<void()> scheduleHandOver;
        std::function<void()> cancelHandOver;
    };

    // Where the last load with a time-out stands.
    enum class TimedLoad {
        None,
        // Handed to the engine, which has not started it yet.
        Pending,
        // The navigation under way.
        Running,
    };

    enum class Expiry {
        // The engine never started the load: it is dropped without a word.
        Dropped,
        // The load was under way: it has failed.
        Failed,
    };

    explicit LoadGate(Timers timers);

    // `issue` hands the load to the engine, now or once the first load has ended. Without an
    // idle time-out, the time-out of an earlier load is forgotten as this one is issued.
    void request(std::function<void()> issue, std::optional<std::chrono::milliseconds> idleTimeout);
    void loadStarted();
    // Something of the page arrived.
    void activity();
    // A load finished or failed.
    void loadEnded();
    // The engine is not loading: a first load dropped before it began has ended too.
    void loadingStopped();
    // The user stopped: nothing held is handed over.
    void stop();
    // What loads now is not the timed load (back, forward, a web process gone).
    void forgetTimedLoad();

    Expiry timeoutExpired();
    void handOver();

    TimedLoad timedLoad() const { return timedLoad_; }

private:
    struct Load {
        std::function<void()> issue;
        std::optional<std::chrono::milliseconds> idleTimeout;
    };

    void issue(Load load);
    void firstLoadEnded();

    Timers timers_;
    bool firstLoadAsked_ = false;
    bool firstLoadEnded_ = false;
    // The latest load asked for while the first had not ended, until it is handed over.
    std::optional<Load> held_;
    TimedLoad timedLoad_ = TimedLoad::None;
    std::chrono::milliseconds idleTimeout_{0};
};

} // namespace ovel
