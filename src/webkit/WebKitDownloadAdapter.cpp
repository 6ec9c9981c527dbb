#include "webkit/WebKitDownloadAdapter.h"

#include <glib/gstdio.h>
#include <webkit/webkit.h>

namespace ovel {

std::shared_ptr<WebKitDownloadAdapter> WebKitDownloadAdapter::start(WebKitDownload* download) {
    std::shared_ptr<WebKitDownloadAdapter> adapter(new WebKitDownloadAdapter(download));
    adapter->self_ = adapter;
    return adapter;
}

WebKitDownloadAdapter::WebKitDownloadAdapter(WebKitDownload* download)
    : download_(GObjectRef<WebKitDownload>::retain(download)) {
    signals_.connect(download, "decide-destination", G_CALLBACK(&onDecideDestination), this);
    finishedHandler_ = signals_.connect(download, "finished", G_CALLBACK(&onFinished), this);
    signals_.connect(download, "failed", G_CALLBACK(&onFailed), this);
}

WebKitDownloadAdapter::~WebKitDownloadAdapter() = default;

void WebKitDownloadAdapter::setDelegate(std::weak_ptr<DownloadDelegate> delegate) {
    delegate_ = std::move(delegate);
}

void WebKitDownloadAdapter::cancel() {
    if (!self_ || cancelled_) {
        return; // already ended
    }
    cancelled_ = true;
    webkit_download_cancel(download_.get());
}

int WebKitDownloadAdapter::onDecideDestination(WebKitDownload* download, char* suggestedFilename,
                                               WebKitDownloadAdapter* self) {
    // WebKit may suggest an empty name (for ".."); the delegate makes a usable one of it.
    const std::string_view suggested = suggestedFilename != nullptr ? suggestedFilename : "";
    std::optional<std::string> destination;
    if (auto delegate = self->delegate_.lock()) {
        destination = delegate->decideDestination(*self, suggested);
    }
    if (!destination) {
        self->abandoned_ = true;
        webkit_download_cancel(download);
        return TRUE;
    }
    // Refused before WebKit sees it: told not to overwrite, WebKit fails with "File exists"
    // and then deletes the file that was there.
    if (g_file_test(destination->c_str(), G_FILE_TEST_EXISTS) ||
        g_file_test(destination->c_str(), G_FILE_TEST_IS_SYMLINK)) {
        g_autofree char* name = g_path_get_basename(destination->c_str());
        self->failureMessage_ = std::string("A file named “") + name + "” already exists";
        webkit_download_cancel(download);
        return TRUE;
    }
    webkit_download_set_allow_overwrite(download, FALSE);
    webkit_download_set_destination(download, destination->c_str());
    self->destination_ = destination;
    return TRUE;
}

void WebKitDownloadAdapter::onFinished(WebKitDownload*, WebKitDownloadAdapter* self) {
    auto keepAlive = self->release();
    if (auto delegate = self->delegate_.lock()) {
        delegate->downloadDidFinish(*self);
    }
}

void WebKitDownloadAdapter::onFailed(WebKitDownload*, GError* error, WebKitDownloadAdapter* self) {
    // WebKit emits "finished" right after "failed"; heard, it would report the failure as a
    // success.
    self->signals_.disconnect(self->finishedHandler_);
    auto keepAlive = self->release();
    if (self->abandoned_) {
        return;
    }
    if (self->cancelled_ && self->destination_) {
        // WebKit writes to the destination plus ".wkdownload" until the end and may leave it;
        // the destination itself did not exist before this download (see above).
        g_remove((*self->destination_ + ".wkdownload").c_str());
        g_remove(self->destination_->c_str());
    }
    if (auto delegate = self->delegate_.lock()) {
        delegate->downloadDidFail(*self, self->failureMessage_ ? *self->failureMessage_
                                         : error != nullptr    ? error->message
                                                               : "");
    }
}

std::shared_ptr<WebKitDownloadAdapter> WebKitDownloadAdapter::release() {
    return std::move(self_);
}

} // namespace ovel
