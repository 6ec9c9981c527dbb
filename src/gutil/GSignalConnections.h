#pragma once

#include "gutil/GObjectRef.h"

#include <glib-object.h>

#include <utility>
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

    // `handler` is a callable taking the signal's arguments, the instance first (the user data
    // that GLib appends is not passed on). It lives as long as the connection.
    template <typename Handler>
    gulong connect(gpointer instance, const char* signal, Handler handler) {
        return connectCallable(instance, signal, std::move(handler), &Handler::operator());
    }
    void disconnect(gulong handlerId);
    void disconnectAll();

private:
    template <typename Handler, typename Result, typename... Args>
    gulong connectCallable(gpointer instance, const char* signal, Handler handler,
                           Result (Handler::*)(Args...) const) {
        auto trampoline = +[](Args... args, gpointer data) -> Result {
            return (*static_cast<Handler*>(data))(args...);
        };
        auto release = +[](gpointer data, GClosure*) { delete static_cast<Handler*>(data); };
        return connectData(instance, signal, G_CALLBACK(trampoline),
                           new Handler(std::move(handler)), release);
    }
    gulong connectData(gpointer instance, const char* signal, GCallback handler, gpointer data,
                       GClosureNotify release);

    struct Connection {
        GObjectRef<GObject> instance;
        gulong handlerId;
    };
    std::vector<Connection> connections_;
};

} // namespace ovel
