#include "webkit/WebKitPagePermissions.h"

#include "web/AnswerOnce.h"
#include "web/Url.h"
#include "web/WebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <optional>

namespace ovel {

namespace {

MediaCaptureType captureType(WebKitUserMediaPermissionRequest* request) {
    const bool video = webkit_user_media_permission_is_for_video_device(request);
    const bool audio = webkit_user_media_permission_is_for_audio_device(request);
    if (webkit_user_media_permission_is_for_display_device(request)) {
        return MediaCaptureType::Other;
    }
    if (video && audio) {
        return MediaCaptureType::CameraAndMicrophone;
    }
    if (video) {
        return MediaCaptureType::Camera;
    }
    if (audio) {
        return MediaCaptureType::Microphone;
    }
    return MediaCaptureType::Other;
}

// Holds the request, not the page, so the answer may come after the tab is gone.
AnswerOnce<bool> replyTo(WebKitPermissionRequest* request) {
    auto held = GObjectRef<WebKitPermissionRequest>::retain(request);
    return AnswerOnce<bool>(
        [held](bool allow) {
            if (allow) {
                webkit_permission_request_allow(held.get());
            } else {
                webkit_permission_request_deny(held.get());
            }
        },
        false);
}

std::string orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

WebKitPagePermissions::WebKitPagePermissions(WebKitWebView* view, WebViewDelegate& delegate,
                                             const PermissionPrompter& prompter,
                                             std::function<std::string()> pageHost)
    : delegate_(delegate), prompter_(prompter), pageHost_(std::move(pageHost)) {
    signals_.connect(view, "permission-request", G_CALLBACK(&onPermissionRequest), this);
    signals_.connect(view, "query-permission-state", G_CALLBACK(&onQueryPermissionState), this);
    signals_.connect(view, "show-notification", G_CALLBACK(&onShowNotification), this);
}

int WebKitPagePermissions::onPermissionRequest(WebKitWebView* view,
                                               WebKitPermissionRequest* request,
                                               WebKitPagePermissions* self) {
    // Requests carry no origin: the page shown is the one asking.
    PermissionQuestion question{self->pageHost_(), MediaCaptureType::Other, GTK_WIDGET(view)};
    PermissionDecision decision;
    if (WEBKIT_IS_USER_MEDIA_PERMISSION_REQUEST(request)) {
        const auto type = captureType(WEBKIT_USER_MEDIA_PERMISSION_REQUEST(request));
        question.kind = type;
        decision = self->delegate_.decideMediaCapturePermission(question.host, type);
    } else if (WEBKIT_IS_GEOLOCATION_PERMISSION_REQUEST(request)) {
        question.kind = SitePermissionKind::Location;
        decision =
            self->delegate_.decideSitePermission(question.host, SitePermissionKind::Location);
    } else if (WEBKIT_IS_NOTIFICATION_PERMISSION_REQUEST(request)) {
        // WebKit only asks when the page requests it from a user gesture; without one the
        // page is denied before anything reaches us.
        question.kind = SitePermissionKind::Notifications;
        decision =
            self->delegate_.decideSitePermission(question.host, SitePermissionKind::Notifications);
    } else {
        // Kinds the browser does not offer: WebKit denies a request left unhandled.
        return FALSE;
    }
    switch (decision) {
    case PermissionDecision::Grant:
        webkit_permission_request_allow(request);
        break;
    case PermissionDecision::Deny:
        webkit_permission_request_deny(request);
        break;
    case PermissionDecision::Prompt:
        self->askUser(request, question);
        break;
    }
    return TRUE;
}

void WebKitPagePermissions::askUser(WebKitPermissionRequest* request,
                                    const PermissionQuestion& question) {
    auto reply = std::make_shared<AnswerOnce<bool>>(replyTo(request));
    if (!prompter_) {
        (*reply)(false);
        return;
    }
    prompter_(question, [reply](bool allow) { (*reply)(allow); });
}

int WebKitPagePermissions::onQueryPermissionState(WebKitWebView*, WebKitPermissionStateQuery* query,
                                                  WebKitPagePermissions* self) {
    // Notification.permission and navigator.permissions.query() read the site's rule without
    // asking anyone; kinds the browser keeps no rule for are left to WebKit.
    const std::string_view name = webkit_permission_state_query_get_name(query);
    std::optional<SitePermissionKind> kind;
    if (name == "notifications") {
        kind = SitePermissionKind::Notifications;
    } else if (name == "geolocation") {
        kind = SitePermissionKind::Location;
    }
    const char* host =
        webkit_security_origin_get_host(webkit_permission_state_query_get_security_origin(query));
    if (!kind || host == nullptr) {
        return FALSE;
    }
    WebKitPermissionState state = WEBKIT_PERMISSION_STATE_PROMPT;
    switch (self->delegate_.decideSitePermission(toLowerAscii(host), *kind)) {
    case PermissionDecision::Grant:
        state = WEBKIT_PERMISSION_STATE_GRANTED;
        break;
    case PermissionDecision::Deny:
        state = WEBKIT_PERMISSION_STATE_DENIED;
        break;
    case PermissionDecision::Prompt:
        break;
    }
    webkit_permission_state_query_finish(query, state);
    return TRUE;
}

int WebKitPagePermissions::onShowNotification(WebKitWebView*, WebKitNotification* notification,
                                              WebKitPagePermissions* self) {
    // WebKit only shows notifications of pages allowed to; they go to the desktop, not to
    // WebKit's own fallback.
    PageNotification shown{webkit_notification_get_id(notification),
                           orEmpty(webkit_notification_get_title(notification)),
                           orEmpty(webkit_notification_get_body(notification))};
    if (!self->notificationHandlers_.contains(shown.id)) {
        self->notificationHandlers_[shown.id] = self->notificationSignals_.connect(
            notification, "closed", G_CALLBACK(&onNotificationClosed), self);
    }
    self->delegate_.pageDidShowNotification(shown);
    return TRUE;
}

void WebKitPagePermissions::onNotificationClosed(WebKitNotification* notification,
                                                 WebKitPagePermissions* self) {
    // Closed by the page (notification.close(), or its tag reused) or by WebKit as the page goes.
    const std::uint64_t id = webkit_notification_get_id(notification);
    if (auto handler = self->notificationHandlers_.extract(id)) {
        self->notificationSignals_.disconnect(handler.mapped());
    }
    self->delegate_.pageDidCloseNotification(id);
}

} // namespace ovel
