#include "support/GtkWait.h"

#include <glib.h>

namespace ovel::test {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    // A tick wakes the loop at least this often, so the deadline is noticed when nothing else
    // happens.
    const guint tick = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool held = condition();
    while (!held && std::chrono::steady_clock::now() < deadline) {
        g_main_context_iteration(nullptr, TRUE);
        held = condition();
    }
    g_source_remove(tick);
    return held;
}

void runMainLoopFor(std::chrono::milliseconds duration) {
    waitUntil([] { return false; }, duration);
}

} // namespace ovel::test
