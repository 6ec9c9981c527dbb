#include "webkit/SoupFaviconFetcher.h"

#include "webkit/FaviconDecoder.h"

#include <libsoup/soup.h>

#include <memory>
#include <vector>

namespace ovel {

namespace {

constexpr gsize readChunk = 64 * 1024;
constexpr guint timeoutSeconds = 30;

// One fetch in flight. It holds what it needs itself, so it may finish after the fetcher is
// gone.
struct FaviconRequest {
    std::function<void(std::optional<FaviconImage>)> completion;
    GObjectRef<SoupSession> session;
    GObjectRef<SoupMessage> message;
    GObjectRef<GCancellable> cancellable;
    GObjectRef<GInputStream> body;
    std::vector<std::uint8_t> data;

    void finish(std::optional<FaviconImage> image) {
        if (completion) {
            auto done = std::move(completion);
            completion = nullptr;
            done(std::move(image));
        }
    }
};

void readMore(std::unique_ptr<FaviconRequest> request);

void onRead(GObject* stream, GAsyncResult* result, gpointer data) {
    std::unique_ptr<FaviconRequest> request(static_cast<FaviconRequest*>(data));
    GError* error = nullptr;
    GBytes* bytes = g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, &error);
    if (bytes == nullptr) {
        g_clear_error(&error);
        request->finish(std::nullopt);
        return;
    }
    gsize size = 0;
    const auto* chunk = static_cast<const std::uint8_t*>(g_bytes_get_data(bytes, &size));
    if (size == 0) {
        g_bytes_unref(bytes);
        request->finish(FaviconDecoder::decode(request->data));
        return;
    }
    if (request->data.size() + size > FaviconDecoder::maxBytes) {
        g_bytes_unref(bytes);
        request->finish(std::nullopt);
        return;
    }
    request->data.insert(request->data.end(), chunk, chunk + size);
    g_bytes_unref(bytes);
    readMore(std::move(request));
}

void readMore(std::unique_ptr<FaviconRequest> request) {
    auto* stream = request->body.get();
    auto* cancellable = request->cancellable.get();
    g_input_stream_read_bytes_async(stream, readChunk, G_PRIORITY_LOW, cancellable, &onRead,
                                    request.release());
}

void onSent(GObject* session, GAsyncResult* result, gpointer data) {
    std::unique_ptr<FaviconRequest> request(static_cast<FaviconRequest*>(data));
    GError* error = nullptr;
    GInputStream* body = soup_session_send_finish(SOUP_SESSION(session), result, &error);
    if (body == nullptr) {
        g_clear_error(&error);
        request->finish(std::nullopt);
        return;
    }
    request->body = GObjectRef<GInputStream>::adopt(body);
    const auto status = soup_message_get_status(request->message.get());
    const goffset declared = soup_message_headers_get_content_length(
        soup_message_get_response_headers(request->message.get()));
    if (status < 200 || status >= 300 || declared > goffset(FaviconDecoder::maxBytes)) {
        request->finish(std::nullopt);
        return;
    }
    readMore(std::move(request));
}

} // namespace

SoupFaviconFetcher::SoupFaviconFetcher()
    : session_(GObjectRef<SoupSession>::adopt(
          soup_session_new_with_options("timeout", timeoutSeconds, nullptr))),
      cancellable_(GObjectRef<GCancellable>::adopt(g_cancellable_new())) {}

SoupFaviconFetcher::~SoupFaviconFetcher() {
    g_cancellable_cancel(cancellable_.get());
}

void SoupFaviconFetcher::setTestOrigin(std::string scheme, int port) {
    testOrigin_.emplace(std::move(scheme), port);
}

void SoupFaviconFetcher::fetch(const std::string& url,
                               std::function<void(std::optional<FaviconImage>)> completion) {
    GUri* parsed = g_uri_parse(url.c_str(), GUriFlags(SOUP_HTTP_URI_FLAGS), nullptr);
    if (parsed != nullptr && testOrigin_) {
        GUri* redirected = g_uri_build(g_uri_get_flags(parsed), testOrigin_->first.c_str(),
                                       g_uri_get_userinfo(parsed), g_uri_get_host(parsed),
                                       testOrigin_->second, g_uri_get_path(parsed),
                                       g_uri_get_query(parsed), g_uri_get_fragment(parsed));
        g_uri_unref(parsed);
        parsed = redirected;
    }
    const bool fetchable = parsed != nullptr && g_uri_get_host(parsed) != nullptr &&
                           *g_uri_get_host(parsed) != '\0' &&
                           (g_strcmp0(g_uri_get_scheme(parsed), "https") == 0 ||
                            g_strcmp0(g_uri_get_scheme(parsed), "http") == 0);
    SoupMessage* message = fetchable ? soup_message_new_from_uri("GET", parsed) : nullptr;
    if (parsed != nullptr) {
        g_uri_unref(parsed);
    }
    if (message == nullptr) {
        if (completion) {
            completion(std::nullopt);
        }
        return;
    }
    auto request = std::make_unique<FaviconRequest>();
    request->completion = std::move(completion);
    request->session = session_;
    request->message = GObjectRef<SoupMessage>::adopt(message);
    request->cancellable = cancellable_;
    soup_session_send_async(session_.get(), message, G_PRIORITY_LOW, cancellable_.get(), &onSent,
                            request.release());
}

} // namespace ovel
