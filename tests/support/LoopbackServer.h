#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

typedef struct _SoupServer SoupServer;
typedef struct _SoupServerMessage SoupServerMessage;
typedef struct _GHashTable GHashTable;

namespace ovel::test {

// An HTTP server on 127.0.0.1, on a port the system picks, serving what a test registers by
// path (anything else is 404) and logging every request. Runs on the default main context, so
// it answers while a test waits in the main loop.
class LoopbackServer {
public:
    struct Request {
        std::string method;
        std::string path;
        std::string query;
        std::map<std::string, std::string> headers;
    };

    struct Response {
        int status = 200;
        std::string contentType = "text/html; charset=utf-8";
        std::string body;
        std::vector<std::pair<std::string, std::string>> headers;
    };

    // Answers one request; the message may be paused and finished later.
    using Handler = std::function<void(SoupServerMessage* message, const Request& request)>;

    enum class Transport { Http, Https };

    // Over https the server shows a self-signed certificate, which browsers refuse.
    explicit LoopbackServer(Transport transport = Transport::Http);
    ~LoopbackServer();

    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int port() const { return port_; }
    // "http://127.0.0.1:<port>" (or https) followed by `path`.
    std::string url(std::string_view path) const;
    // The same server under the name "localhost": another site, as the browser sees it.
    std::string localhostUrl(std::string_view path) const;
    // Also listens on ::1, same port; false when that cannot be bound (no IPv6 loopback).
    bool listenOnIPv6Loopback();
    // "http://[::1]:<port>" followed by `path`.
    std::string ipv6Url(std::string_view path) const;

    void serve(std::string path, Response response);
    void serveHtml(std::string path, std::string html);
    // Sends the chunks of a chunked body one by one, `interval` apart (the first at once), after
    // the given extra headers.
    void serveSlowly(std::string path, std::string contentType, std::vector<std::string> chunks,
                     std::chrono::milliseconds interval,
                     std::vector<std::pair<std::string, std::string>> headers = {});
    // Takes the request and never answers it.
    void serveNothing(std::string path);
    // A file the browser should save: "Content-Disposition: attachment" with `fileName`.
    void serveAttachment(std::string path, std::string fileName, std::string body,
                         std::string contentType = "application/octet-stream");
    // Promises `declaredLength` bytes, sends `body` (shorter) and drops the connection.
    void serveBrokenBody(std::string path, std::string contentType, std::string body,
                         std::size_t declaredLength);
    void handle(std::string path, Handler handler);

    std::vector<Request> requests() const { return log_; }
    int requestCount(std::string_view path) const;

    // A loopback port nothing listens on: connections to it are refused.
    static int closedPort();

private:
    struct Impl;
    static void dispatch(SoupServer* server, SoupServerMessage* message, const char* path,
                         GHashTable* query, void* self);

    std::unique_ptr<Impl> impl_;
    std::map<std::string, Handler, std::less<>> handlers_;
    std::vector<Request> log_;
    int port_ = 0;
    Transport transport_;
};

} // namespace ovel::test
