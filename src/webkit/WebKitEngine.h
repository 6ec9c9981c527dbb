#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/WebEngine.h"
#include "webkit/AuthenticationPrompter.h"
#include "webkit/PermissionPrompter.h"

#include <memory>
#include <string>

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitUserContentFilterStore WebKitUserContentFilterStore;
typedef struct _WebKitDownload WebKitDownload;
typedef struct _WebKitWebContext WebKitWebContext;

namespace ovel {

// The browser's WebKitGTK: one network session for every tab, so cookies and site data are
// shared between tabs and kept across restarts, and one store of compiled content rule lists.
class WebKitEngine final : public WebEngine {
public:
    struct Folders {
        std::string websiteData;
        std::string websiteCache;
        // Empty: no rule-list store, and rule lists are never compiled.
        std::string contentFilters;
    };

    explicit WebKitEngine(const Folders& folders);
    ~WebKitEngine() override;

    WebKitEngine(const WebKitEngine&) = delete;
    WebKitEngine& operator=(const WebKitEngine&) = delete;

    std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) override;
    bool compileContentRuleList(std::string_view identifier, std::string_view json,
                                CompletionHandler completion) override;
    void setNotificationPermissions(const NotificationPermissions& permissions) override;

    // An address a page is about to load from: its origin's notification permission is handed to
    // web processes started from now on.
    static void noteOrigin(const char* uri);

    // Asks the user about the permission requests that site rules leave open. Until one is set,
    // such requests are denied.
    void setPermissionPrompter(PermissionPrompter prompter);
    // Asks the user to sign in when a site wants HTTP authentication. Until one is set, such
    // requests are cancelled and their loads fail.
    void setAuthenticationPrompter(AuthenticationPrompter prompter);

    WebKitNetworkSession* networkSession() const { return session_.get(); }

private:
    static void onDownloadStarted(WebKitNetworkSession* session, WebKitDownload* download,
                                  WebKitEngine* self);
    void initializeNotificationPermissions(WebKitWebContext* context);

    GObjectRef<WebKitNetworkSession> session_;
    GObjectRef<WebKitUserContentFilterStore> filterStore_;
    std::shared_ptr<PermissionPrompter> prompter_;
    std::shared_ptr<AuthenticationPrompter> authenticationPrompter_;
    NotificationPermissions notificationPermissions_;
    GSignalConnections signals_;
};

} // namespace ovel
