#include "gutil/GSignalConnections.h"

#include <algorithm>

namespace ovel {

gulong GSignalConnections::connect(gpointer instance, const char* signal, GCallback handler,
                                   gpointer data) {
    return connectData(instance, signal, handler, data, nullptr);
}

gulong GSignalConnections::connectData(gpointer instance, const char* signal, GCallback handler,
                                       gpointer data, GClosureNotify release) {
    auto* object = G_OBJECT(instance);
    const gulong id =
        g_signal_connect_data(object, signal, handler, data, release, GConnectFlags{});
    connections_.push_back({GObjectRef<GObject>::retain(object), id});
    return id;
}

void GSignalConnections::disconnect(gulong handlerId) {
    auto found = std::find_if(connections_.begin(), connections_.end(),
                              [&](const Connection& c) { return c.handlerId == handlerId; });
    if (found != connections_.end()) {
        g_signal_handler_disconnect(found->instance.get(), found->handlerId);
        connections_.erase(found);
    }
}

void GSignalConnections::disconnectAll() {
    // Taken out first: disconnecting may drop the last reference to an instance.
    auto connections = std::move(connections_);
    connections_.clear();
    for (auto& connection : connections) {
        g_signal_handler_disconnect(connection.instance.get(), connection.handlerId);
    }
}

} // namespace ovel
