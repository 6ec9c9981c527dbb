#pragma once

#include <chrono>
#include <functional>

namespace ovel::test {

using namespace std::chrono_literals;

// Runs the default GLib main context until `condition` holds or `timeout` has passed; true
// when the condition held. Every wait in a test has a limit.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout = 15s);

// Runs the default main context for `duration`, for tests that check that something does not
// happen.
void runMainLoopFor(std::chrono::milliseconds duration);

} // namespace ovel::test
