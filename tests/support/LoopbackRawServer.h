#pragma once

#include <string>
#include <string_view>
#include <vector>

typedef struct _GSocketService GSocketService;
typedef struct _GCancellable GCancellable;

namespace ovel::test {

// A bare HTTP/1.1 server on 127.0.0.1 for request targets that libsoup's server turns away
// with 400 before any handler sees them (an encoded slash next to dot segments, an encoded NUL).
// It answers every request with the same response, whatever the target, and logs the targets
// as they were sent. Runs on the default main context, like LoopbackServer.
class LoopbackRawServer {
public:
    LoopbackRawServer(std::string contentType, std::string body);
    ~LoopbackRawServer();

    LoopbackRawServer(const LoopbackRawServer&) = delete;
    LoopbackRawServer& operator=(const LoopbackRawServer&) = delete;

    // "http://127.0.0.1:<port>" followed by `target`, sent as it is.
    std::string url(std::string_view target) const;
    const std::vector<std::string>& targets() const { return targets_; }

private:
    struct Connection;
    static int onIncoming(GSocketService* service, void* connection, void* source, void* self);
    static void onRead(void* stream, void* result, void* connection);
    void answer(Connection& connection);

    std::string response_;
    std::vector<std::string> targets_;
    GSocketService* service_ = nullptr;
    GCancellable* cancellable_ = nullptr;
    int port_ = 0;
};

} // namespace ovel::test
