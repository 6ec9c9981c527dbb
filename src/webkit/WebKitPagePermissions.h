#pragma once

#include "gutil/GSignalConnections.h"
#include "webkit/PermissionPrompter.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

typedef struct _WebKitWebView WebKitWebView;
typedef struct _WebKitPermissionRequest WebKitPermissionRequest;
typedef struct _WebKitPermissionStateQuery WebKitPermissionStateQuery;
typedef struct _WebKitNotification WebKitNotification;

namespace ovel {

class WebViewDelegate;

// What a page may do beyond showing itself: its permission requests, answered by the site's
// rules through the delegate or put to the user; its reads of a permission's state; and its
// notifications, each reported to the delegate until it closes.
class WebKitPagePermissions {
public:
    // `pageHost` gives the site-rule key of the page shown (empty when it has no host).
    // `prompter` is read at each question, so it may be set after the view is made.
    WebKitPagePermissions(WebKitWebView* view, WebViewDelegate& delegate,
                          const PermissionPrompter& prompter,
                          std::function<std::string()> pageHost);

    WebKitPagePermissions(const WebKitPagePermissions&) = delete;
    WebKitPagePermissions& operator=(const WebKitPagePermissions&) = delete;

private:
    static int onPermissionRequest(WebKitWebView* view, WebKitPermissionRequest* request,
                                   WebKitPagePermissions* self);
    static int onQueryPermissionState(WebKitWebView* view, WebKitPermissionStateQuery* query,
                                      WebKitPagePermissions* self);
    static int onShowNotification(WebKitWebView* view, WebKitNotification* notification,
                                  WebKitPagePermissions* self);
    static void onNotificationClosed(WebKitNotification* notification, WebKitPagePermissions* self);
    void askUser(WebKitPermissionRequest* request, const PermissionQuestion& question);

    WebViewDelegate& delegate_;
    const PermissionPrompter& prompter_;
    std::function<std::string()> pageHost_;
    GSignalConnections signals_;
    // The page's notifications on show, each heard until it closes.
    GSignalConnections notificationSignals_;
    std::map<std::uint64_t, unsigned long> notificationHandlers_;
};

} // namespace ovel
