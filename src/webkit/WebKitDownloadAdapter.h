#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/Download.h"

#include <memory>
#include <optional>
#include <string>

typedef struct _WebKitDownload WebKitDownload;
typedef struct _GError GError;

namespace ovel {

// One WebKit download, reporting to a delegate held weakly. It keeps itself alive until the
// transfer has finished or failed.
class WebKitDownloadAdapter final : public Download {
public:
    // Starts following `download`; the returned object lives at least until the transfer ends.
    static std::shared_ptr<WebKitDownloadAdapter> start(WebKitDownload* download);
    ~WebKitDownloadAdapter() override;

    WebKitDownloadAdapter(const WebKitDownloadAdapter&) = delete;
    WebKitDownloadAdapter& operator=(const WebKitDownloadAdapter&) = delete;

    void setDelegate(std::weak_ptr<DownloadDelegate> delegate) override;
    void cancel() override;

    WebKitDownload* download() const { return download_.get(); }

private:
    explicit WebKitDownloadAdapter(WebKitDownload* download);

    static int onDecideDestination(WebKitDownload* download, char* suggestedFilename,
                                   WebKitDownloadAdapter* self);
    static void onFinished(WebKitDownload* download, WebKitDownloadAdapter* self);
    static void onFailed(WebKitDownload* download, GError* error, WebKitDownloadAdapter* self);
    // Lets go of the self reference; `this` may be gone when the caller's frame unwinds.
    std::shared_ptr<WebKitDownloadAdapter> release();

    GObjectRef<WebKitDownload> download_;
    std::weak_ptr<DownloadDelegate> delegate_;
    std::shared_ptr<WebKitDownloadAdapter> self_;
    GSignalConnections signals_;
    gulong finishedHandler_ = 0;
    // Cancelled because no destination was given: that ending is not reported.
    bool abandoned_ = false;
    // Cancelled for a reason of ours, reported instead of WebKit's "cancelled".
    std::optional<std::string> failureMessage_;
    // Cancelled by cancel(): what the transfer wrote is removed when WebKit reports the end.
    bool cancelled_ = false;
    // Set once WebKit has been told where to write.
    std::optional<std::string> destination_;
};

} // namespace ovel
