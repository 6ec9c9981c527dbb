#include "app/GlibMainQueue.h"

#include <glib.h>

namespace ovel {

namespace {

using Task = std::function<void()>;

gboolean runTask(gpointer task) {
    (*static_cast<Task*>(task))();
    return G_SOURCE_REMOVE;
}

void deleteTask(gpointer task) {
    delete static_cast<Task*>(task);
}

} // namespace

void GlibMainQueue::post(std::function<void()> task) {
    if (!task) {
        return;
    }
    // Default priority, not idle: a result handed back from elsewhere (a favicon, a compiled
    // rule list) should not wait behind redraws while an animation runs. Sources of one
    // priority are dispatched in the order they were added, so tasks keep their order.
    g_idle_add_full(G_PRIORITY_DEFAULT, runTask, new Task(std::move(task)), deleteTask);
}

} // namespace ovel
