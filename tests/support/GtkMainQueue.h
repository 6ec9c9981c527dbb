#pragma once

#include "state/MainQueue.h"

#include <memory>

namespace ovel::test {

// Posts tasks to the default GLib main context, as the application does; tasks still queued
// when the queue goes are dropped.
class GtkMainQueue : public MainQueue {
public:
    GtkMainQueue() : alive_(std::make_shared<bool>(true)) {}
    ~GtkMainQueue() override { *alive_ = false; }

    void post(std::function<void()> task) override;

private:
    std::shared_ptr<bool> alive_;
};

} // namespace ovel::test
