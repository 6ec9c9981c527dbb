#pragma once

#include "web/MainQueue.h"

#include <deque>
#include <functional>

namespace ovel::test {

// Keeps posted tasks until the test drains them, so tests decide when "later" is.
class ManualMainQueue : public MainQueue {
public:
    void post(std::function<void()> task) override { tasks_.push_back(std::move(task)); }

    // Runs tasks, including those posted while draining, until none is left; returns how many.
    int drain() {
        int count = 0;
        while (!tasks_.empty()) {
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
            ++count;
        }
        return count;
    }
    std::size_t pending() const { return tasks_.size(); }

private:
    std::deque<std::function<void()>> tasks_;
};

} // namespace ovel::test
