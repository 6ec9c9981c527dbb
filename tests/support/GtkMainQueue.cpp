#include "support/GtkMainQueue.h"

#include <glib.h>

namespace ovel::test {

namespace {

struct QueuedTask {
    std::shared_ptr<bool> alive;
    std::function<void()> task;
};

} // namespace

void GtkMainQueue::post(std::function<void()> task) {
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            auto* queued = static_cast<QueuedTask*>(data);
            if (*queued->alive && queued->task) {
                queued->task();
            }
            return G_SOURCE_REMOVE;
        },
        new QueuedTask{alive_, std::move(task)},
        [](gpointer data) { delete static_cast<QueuedTask*>(data); });
}

} // namespace ovel::test
