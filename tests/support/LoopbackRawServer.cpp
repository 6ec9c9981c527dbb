#include "support/LoopbackRawServer.h"

#include <gio/gio.h>

#include <array>
#include <stdexcept>

namespace ovel::test {

// One accepted connection while its request head is being read.
struct LoopbackRawServer::Connection {
    LoopbackRawServer* server;
    GSocketConnection* socket;
    // Its own reference: a read that completes after the server has gone must still see that
    // it is cancelled.
    GCancellable* cancellable;
    std::string request;
    std::array<char, 4096> buffer{};

    ~Connection() {
        g_object_unref(socket);
        g_object_unref(cancellable);
    }
    void readMore() {
        g_input_stream_read_async(g_io_stream_get_input_stream(G_IO_STREAM(socket)), buffer.data(),
                                  buffer.size(), G_PRIORITY_DEFAULT, cancellable,
                                  reinterpret_cast<GAsyncReadyCallback>(&LoopbackRawServer::onRead),
                                  this);
    }
};

LoopbackRawServer::LoopbackRawServer(std::string contentType, std::string body)
    : response_("HTTP/1.1 200 OK\r\nContent-Type: " + contentType + "\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body),
      service_(g_socket_service_new()), cancellable_(g_cancellable_new()) {
    GInetAddress* loopback = g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4);
    GSocketAddress* any = g_inet_socket_address_new(loopback, 0);
    GSocketAddress* bound = nullptr;
    GError* error = nullptr;
    const bool listening =
        g_socket_listener_add_address(G_SOCKET_LISTENER(service_), any, G_SOCKET_TYPE_STREAM,
                                      G_SOCKET_PROTOCOL_TCP, nullptr, &bound, &error);
    g_object_unref(any);
    g_object_unref(loopback);
    if (!listening) {
        const std::string message = error->message;
        g_error_free(error);
        g_object_unref(cancellable_);
        g_object_unref(service_);
        throw std::runtime_error("raw loopback server: " + message);
    }
    port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(bound));
    g_object_unref(bound);
    g_signal_connect(service_, "incoming", G_CALLBACK(&onIncoming), this);
    g_socket_service_start(service_);
}

LoopbackRawServer::~LoopbackRawServer() {
    // Reads still pending end with "cancelled" and then touch only their own connection.
    g_cancellable_cancel(cancellable_);
    g_socket_service_stop(service_);
    g_socket_listener_close(G_SOCKET_LISTENER(service_));
    g_signal_handlers_disconnect_by_data(service_, this);
    g_object_unref(service_);
    g_object_unref(cancellable_);
}

std::string LoopbackRawServer::url(std::string_view target) const {
    return "http://127.0.0.1:" + std::to_string(port_) + std::string(target);
}

int LoopbackRawServer::onIncoming(GSocketService*, void* socket, void*, void* self) {
    auto* server = static_cast<LoopbackRawServer*>(self);
    auto* connection = new Connection{server,
                                      G_SOCKET_CONNECTION(g_object_ref(socket)),
                                      G_CANCELLABLE(g_object_ref(server->cancellable_)),
                                      {},
                                      {}};
    connection->readMore();
    return TRUE;
}

void LoopbackRawServer::onRead(void* stream, void* result, void* data) {
    auto* connection = static_cast<Connection*>(data);
    GError* error = nullptr;
    const gssize read =
        g_input_stream_read_finish(G_INPUT_STREAM(stream), G_ASYNC_RESULT(result), &error);
    if (read <= 0 || g_cancellable_is_cancelled(connection->cancellable)) {
        // Closed by the client (a speculative connection never used) or cancelled with us.
        g_clear_error(&error);
        delete connection;
        return;
    }
    connection->request.append(connection->buffer.data(), std::size_t(read));
    if (connection->request.find("\r\n\r\n") == std::string::npos &&
        connection->request.size() < 64 * 1024) {
        connection->readMore();
        return;
    }
    connection->server->answer(*connection);
    delete connection;
}

void LoopbackRawServer::answer(Connection& connection) {
    // "GET <target> HTTP/1.1"
    const std::string& request = connection.request;
    const auto start = request.find(' ');
    const auto end = start == std::string::npos ? start : request.find(' ', start + 1);
    if (end != std::string::npos) {
        targets_.push_back(request.substr(start + 1, end - start - 1));
    }
    GOutputStream* output = g_io_stream_get_output_stream(G_IO_STREAM(connection.socket));
    g_output_stream_write_all(output, response_.data(), response_.size(), nullptr, nullptr,
                              nullptr);
    g_io_stream_close(G_IO_STREAM(connection.socket), nullptr, nullptr);
}

} // namespace ovel::test
