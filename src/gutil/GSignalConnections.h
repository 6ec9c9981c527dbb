#pragma once

#include "gutil/GObjectRef.h"

#include <glib-object.h>

#include <vector>

namespace ovel {

// The signal handlers one object installed on others, all disconnected when it goes. Each
// instance is kept alive while a handler is connected to it.
class GSignalConnections {
public:
    GSignalConnections() = default;
    GSignalConnections(const GSignalConnections&) = delete;
    GSignalConnections& operator=(const GSignalConnections&) = delete;
    ~GSignalConnections() { disconnectAll(); }

    // `handler` is a plain function whose last argument receives `data`.
    gulong connect(gpointer instance, const char* signal, GCallback handler, gpointer data);
    void disconnect(gulong handlerId);
    void disconnectAll();

private:
    struct Connection {
        GObjectRef<GObject> instance;
        gulong handlerId;
    };
    std::vector<Connection> connections_;
};

} // namespace ovel
