#pragma once

#include <functional>

namespace ovel {

// Runs tasks later, one at a time, on the UI thread. post() may be called from any thread.
class MainQueue {
public:
    virtual ~MainQueue() = default;
    virtual void post(std::function<void()> task) = 0;
};

} // namespace ovel
