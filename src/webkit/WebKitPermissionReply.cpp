#include "webkit/WebKitPermissionReply.h"

#include <webkit/webkit.h>

namespace ovel {

WebKitPermissionReply::WebKitPermissionReply(WebKitPermissionRequest* request)
    : request_(GObjectRef<WebKitPermissionRequest>::retain(request)) {}

WebKitPermissionReply::~WebKitPermissionReply() {
    answer(false);
}

void WebKitPermissionReply::answer(bool allow) {
    if (answered_) {
        return;
    }
    answered_ = true;
    if (allow) {
        webkit_permission_request_allow(request_.get());
    } else {
        webkit_permission_request_deny(request_.get());
    }
}

} // namespace ovel
