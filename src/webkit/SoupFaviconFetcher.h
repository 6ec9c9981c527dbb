#pragma once

#include "gutil/GObjectRef.h"
#include "web/FaviconFetcher.h"

#include <optional>
#include <string>

typedef struct _SoupSession SoupSession;
typedef struct _GCancellable GCancellable;

namespace ovel {

// Fetches site icons over one shared libsoup session and decodes them. Completions run on the
// main thread.
class SoupFaviconFetcher final : public FaviconFetcher {
public:
    SoupFaviconFetcher();
    // Cancels what is still in flight; those completions get none.
    ~SoupFaviconFetcher() override;

    SoupFaviconFetcher(const SoupFaviconFetcher&) = delete;
    SoupFaviconFetcher& operator=(const SoupFaviconFetcher&) = delete;

    void fetch(const std::string& url,
               std::function<void(std::optional<FaviconImage>)> completion) override;

    // For tests only: sends every request to this scheme and port of the same host (a loopback
    // server speaks plain http on a port of its own).
    void setTestOrigin(std::string scheme, int port);

private:
    GObjectRef<SoupSession> session_;
    GObjectRef<GCancellable> cancellable_;
    std::optional<std::pair<std::string, int>> testOrigin_;
};

} // namespace ovel
