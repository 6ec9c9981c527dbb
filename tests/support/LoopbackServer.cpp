#include "support/LoopbackServer.h"

#include <gtest/gtest.h>
#include <libsoup/soup.h>

#include <stdexcept>

namespace ovel::test {

// What outlives a handler call: messages held open and the timers that will write to them.
struct LoopbackServer::Impl {
    SoupServer* server = nullptr;
    std::vector<SoupServerMessage*> heldMessages;
    std::vector<guint> timers;

    void hold(SoupServerMessage* message) {
        g_object_ref(message);
        heldMessages.push_back(message);
    }
};

namespace {

struct SlowBody {
    SoupServerMessage* message;
    std::vector<std::string> chunks;
    std::size_t next = 0;
    std::vector<guint>* timers;
    guint timer = 0;
};

void appendChunk(SoupServerMessage* message, const std::string& chunk) {
    soup_message_body_append(soup_server_message_get_response_body(message), SOUP_MEMORY_COPY,
                             chunk.data(), chunk.size());
}

gboolean sendNextChunk(gpointer data) {
    auto* slow = static_cast<SlowBody*>(data);
    if (slow->next < slow->chunks.size()) {
        appendChunk(slow->message, slow->chunks[slow->next++]);
    }
    const bool done = slow->next >= slow->chunks.size();
    if (done) {
        soup_message_body_complete(soup_server_message_get_response_body(slow->message));
    }
    soup_server_message_unpause(slow->message);
    if (!done) {
        return G_SOURCE_CONTINUE;
    }
    std::erase(*slow->timers, slow->timer);
    return G_SOURCE_REMOVE;
}

void dropConnection(SoupServerMessage* message, gpointer) {
    if (GSocket* socket = soup_server_message_get_socket(message)) {
        g_socket_close(socket, nullptr);
    }
}

} // namespace

LoopbackServer::LoopbackServer(Transport transport)
    : impl_(std::make_unique<Impl>()), transport_(transport) {
    GError* error = nullptr;
    GTlsCertificate* certificate = nullptr;
    if (transport == Transport::Https) {
        // Self-signed for 127.0.0.1 (RSA 2048, a hundred years): a browser trusts no such one.
        certificate =
            g_tls_certificate_new_from_file(OVEL_SOURCE_DIR "/tests/support/loopback.pem", &error);
        if (certificate == nullptr) {
            const std::string message = error->message;
            g_error_free(error);
            throw std::runtime_error("loopback server certificate: " + message);
        }
    }
    impl_->server = certificate != nullptr
                        ? soup_server_new("tls-certificate", certificate, nullptr)
                        : soup_server_new(nullptr, nullptr);
    g_clear_object(&certificate);
    soup_server_add_handler(impl_->server, nullptr, &LoopbackServer::dispatch, this, nullptr);
    const auto options =
        SoupServerListenOptions(SOUP_SERVER_LISTEN_IPV4_ONLY |
                                (transport == Transport::Https ? SOUP_SERVER_LISTEN_HTTPS : 0));
    if (!soup_server_listen_local(impl_->server, 0, options, &error)) {
        const std::string message = error->message;
        g_error_free(error);
        throw std::runtime_error("loopback server: " + message);
    }
    GSList* uris = soup_server_get_uris(impl_->server);
    port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
}

LoopbackServer::~LoopbackServer() {
    for (guint timer : impl_->timers) {
        g_source_remove(timer);
    }
    soup_server_disconnect(impl_->server);
    for (auto* message : impl_->heldMessages) {
        g_object_unref(message);
    }
    g_object_unref(impl_->server);
}

std::string LoopbackServer::url(std::string_view path) const {
    return std::string(transport_ == Transport::Https ? "https" : "http") +
           "://127.0.0.1:" + std::to_string(port_) + std::string(path);
}

std::string LoopbackServer::localhostUrl(std::string_view path) const {
    return "http://localhost:" + std::to_string(port_) + std::string(path);
}

bool LoopbackServer::listenOnIPv6Loopback() {
    GInetAddress* loopback = g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV6);
    GSocketAddress* address = g_inet_socket_address_new(loopback, guint16(port_));
    const bool listening =
        soup_server_listen(impl_->server, address, SoupServerListenOptions(0), nullptr);
    g_object_unref(address);
    g_object_unref(loopback);
    return listening;
}

std::string LoopbackServer::ipv6Url(std::string_view path) const {
    return "http://[::1]:" + std::to_string(port_) + std::string(path);
}

void LoopbackServer::dispatch(SoupServer*, SoupServerMessage* message, const char* path,
                              GHashTable*, void* data) {
    auto* self = static_cast<LoopbackServer*>(data);
    Request request;
    request.method = soup_server_message_get_method(message);
    request.path = path;
    GUri* uri = soup_server_message_get_uri(message);
    if (const char* query = g_uri_get_query(uri)) {
        request.query = query;
    }
    SoupMessageHeadersIter iter;
    soup_message_headers_iter_init(&iter, soup_server_message_get_request_headers(message));
    const char* name = nullptr;
    const char* value = nullptr;
    while (soup_message_headers_iter_next(&iter, &name, &value)) {
        request.headers[name] = value;
    }
    self->log_.push_back(request);

    auto handler = self->handlers_.find(request.path);
    if (handler == self->handlers_.end()) {
        soup_server_message_set_status(message, 404, nullptr);
        return;
    }
    handler->second(message, request);
}

void LoopbackServer::handle(std::string path, Handler handler) {
    handlers_[std::move(path)] = std::move(handler);
}

void LoopbackServer::serve(std::string path, Response response) {
    handle(std::move(path), [response](SoupServerMessage* message, const Request&) {
        auto* headers = soup_server_message_get_response_headers(message);
        for (const auto& [name, value] : response.headers) {
            soup_message_headers_append(headers, name.c_str(), value.c_str());
        }
        soup_server_message_set_status(message, response.status, nullptr);
        soup_server_message_set_response(message, response.contentType.c_str(), SOUP_MEMORY_COPY,
                                         response.body.data(), response.body.size());
    });
}

void LoopbackServer::serveHtml(std::string path, std::string html) {
    Response response;
    response.body = std::move(html);
    serve(std::move(path), std::move(response));
}

void LoopbackServer::serveSlowly(std::string path, std::string contentType,
                                 std::vector<std::string> chunks,
                                 std::chrono::milliseconds interval,
                                 std::vector<std::pair<std::string, std::string>> extraHeaders) {
    handle(std::move(path), [this, contentType, chunks, interval,
                             extraHeaders](SoupServerMessage* message, const Request&) {
        auto* headers = soup_server_message_get_response_headers(message);
        for (const auto& [name, value] : extraHeaders) {
            soup_message_headers_append(headers, name.c_str(), value.c_str());
        }
        soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
        soup_message_headers_set_content_type(headers, contentType.c_str(), nullptr);
        soup_server_message_set_status(message, 200, nullptr);
        impl_->hold(message);
        auto* slow = new SlowBody{message, chunks, 0, &impl_->timers, 0};
        if (!slow->chunks.empty()) {
            appendChunk(message, slow->chunks[slow->next++]);
        }
        soup_server_message_pause(message);
        slow->timer =
            g_timeout_add_full(G_PRIORITY_DEFAULT, guint(interval.count()), &sendNextChunk, slow,
                               [](gpointer data) { delete static_cast<SlowBody*>(data); });
        impl_->timers.push_back(slow->timer);
    });
}

void LoopbackServer::serveNothing(std::string path) {
    handle(std::move(path), [this](SoupServerMessage* message, const Request&) {
        impl_->hold(message);
        soup_server_message_pause(message);
    });
}

void LoopbackServer::serveAttachment(std::string path, std::string fileName, std::string body,
                                     std::string contentType) {
    Response response;
    response.contentType = std::move(contentType);
    response.body = std::move(body);
    response.headers.emplace_back("Content-Disposition",
                                  "attachment; filename=\"" + fileName + "\"");
    serve(std::move(path), std::move(response));
}

void LoopbackServer::serveBrokenBody(std::string path, std::string contentType, std::string body,
                                     std::size_t declaredLength) {
    handle(std::move(path),
           [contentType, body, declaredLength](SoupServerMessage* message, const Request&) {
               auto* headers = soup_server_message_get_response_headers(message);
               soup_message_headers_set_content_length(headers, goffset(declaredLength));
               soup_message_headers_set_content_type(headers, contentType.c_str(), nullptr);
               soup_server_message_set_status(message, 200, nullptr);
               appendChunk(message, body);
               // Once the partial body is on the wire, the connection goes.
               g_signal_connect(message, "wrote-body-data", G_CALLBACK(&dropConnection), nullptr);
           });
}

int LoopbackServer::requestCount(std::string_view path) const {
    int count = 0;
    for (const auto& request : log_) {
        count += request.path == path ? 1 : 0;
    }
    return count;
}

int LoopbackServer::closedPort() {
    // Bound and closed again without listening: the port was free a moment ago and nothing
    // listens on it now.
    GSocket* socket =
        g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr);
    GInetAddress* loopback = g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4);
    GSocketAddress* any = g_inet_socket_address_new(loopback, 0);
    g_socket_bind(socket, any, TRUE, nullptr);
    GSocketAddress* bound = g_socket_get_local_address(socket, nullptr);
    const int port = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(bound));
    g_object_unref(bound);
    g_object_unref(any);
    g_object_unref(loopback);
    g_socket_close(socket, nullptr);
    g_object_unref(socket);
    return port;
}

} // namespace ovel::test
