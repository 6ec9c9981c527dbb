#pragma once

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace ovel {

// Gathers what views are told while an operation runs, and tells it when the outermost
// operation ends, once the state is whole again. Each source of notices queues itself once per
// operation under a key of its own; notices go out in the order their sources first changed.
// While they go out, the state may not change: a handler that tries is refused.
class NoticeQueue {
public:
    NoticeQueue() = default;
    NoticeQueue(const NoticeQueue&) = delete;
    NoticeQueue& operator=(const NoticeQueue&) = delete;

    // Holds notices back while alive; the last group to close announces them.
    class Group {
    public:
        explicit Group(NoticeQueue& queue) : queue_(queue) { ++queue_.depth_; }
        ~Group() { queue_.close(); }
        Group(const Group&) = delete;
        Group& operator=(const Group&) = delete;

    private:
        NoticeQueue& queue_;
    };

    // Queues `announce` under `key`, unless something is already queued under it.
    void enqueue(const void* key, std::function<void()> announce);
    // Drops what is queued under `key` (its source is going away).
    void cancel(const void* key);
    // Runs once, when the outermost group is about to announce: a last chance to bring
    // derived state in line (it may change the state and queue more).
    void beforeAnnouncing(std::function<void()> settle) { settle_ = std::move(settle); }

    bool isAnnouncing() const { return announcing_; }
    // True, and said loudly, when a change of `what` comes while notices go out. Debug builds
    // stop there: a view changed the state from inside a notice.
    bool refusesChange(std::string_view what) const;

private:
    void close();

    int depth_ = 0;
    bool announcing_ = false;
    std::function<void()> settle_;
    std::vector<std::pair<const void*, std::function<void()>>> pending_;
};

} // namespace ovel
