#pragma once

#include "gutil/GObjectRef.h"

typedef struct _WebKitPermissionRequest WebKitPermissionRequest;

namespace ovel {

// Answers one WebKit permission request exactly once: the first answer counts, later ones are
// ignored, and a reply dropped unanswered denies.
class WebKitPermissionReply {
public:
    explicit WebKitPermissionReply(WebKitPermissionRequest* request);
    ~WebKitPermissionReply();

    WebKitPermissionReply(const WebKitPermissionReply&) = delete;
    WebKitPermissionReply& operator=(const WebKitPermissionReply&) = delete;

    void answer(bool allow);
    bool isAnswered() const { return answered_; }

private:
    GObjectRef<WebKitPermissionRequest> request_;
    bool answered_ = false;
};

} // namespace ovel
