#pragma once

#include "web/MainQueue.h"

namespace ovel {

// Runs posted tasks from GLib's default main context, the one GTK runs, in the order posted.
class GlibMainQueue : public MainQueue {
public:
    void post(std::function<void()> task) override;
};

} // namespace ovel
