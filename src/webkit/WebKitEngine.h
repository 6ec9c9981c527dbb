#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/WebEngine.h"
#include "webkit/AuthenticationPrompter.h"
#include "webkit/PermissionPrompter.h"

#include <memory>
#include <set>
#include <string>
#include <tuple>

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitUserContentFilterStore WebKitUserContentFilterStore;
typedef struct _WebKitDownload WebKitDownload;
typedef struct _WebKitWebContext WebKitWebContext;
typedef struct _GList GList;

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
    bool loadContentRuleList(std::string_view identifier, CompletionHandler completion) override;
    bool fetchContentRuleListIdentifiers(IdentifiersHandler completion) override;
    void removeContentRuleList(std::string_view identifier) override;
    void setNotificationPermissions(const NotificationPermissions& permissions) override;

    // An address a page is about to load from: its origin's notification permission is handed to
    // web processes started from now on.
    void noteOrigin(const char* uri);

    // Asks the user about the permission requests that site rules leave open. Until one is set,
    // such requests are denied.
    void setPermissionPrompter(PermissionPrompter prompter);
    // Asks the user to sign in when a site wants HTTP authentication. Until one is set, such
    // requests are cancelled and their loads fail.
    void setAuthenticationPrompter(AuthenticationPrompter prompter);

    WebKitNetworkSession* networkSession() const { return session_.get(); }
    // Read at each question: a prompter set after a view was made still asks for it.
    const PermissionPrompter& permissionPrompter() const { return prompter_; }
    const AuthenticationPrompter& authenticationPrompter() const { return authenticationPrompter_; }

private:
    // Scheme, host and port (0 for the scheme's default).
    using Origin = std::tuple<std::string, std::string, unsigned>;

    static void onDownloadStarted(WebKitNetworkSession* session, WebKitDownload* download,
                                  WebKitEngine* self);
    void initializeNotificationPermissions(WebKitWebContext* context);
    void appendOrigins(GList** list, const std::string& host) const;

    GObjectRef<WebKitNetworkSession> session_;
    GObjectRef<WebKitUserContentFilterStore> filterStore_;
    PermissionPrompter prompter_;
    AuthenticationPrompter authenticationPrompter_;
    NotificationPermissions notificationPermissions_;
    // The origins on other than default ports that pages were loaded from. WebKit keys a
    // notification permission by origin, port included, while site rules name hosts: a rule
    // covers the default ports of http and https, and any other port its host was loaded from.
    std::set<Origin> visitedOrigins_;
    GSignalConnections signals_;
};

} // namespace ovel
