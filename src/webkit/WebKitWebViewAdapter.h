#pragma once

#include "gutil/GLibTimer.h"
#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"
#include "web/WebView.h"
#include "webkit/LoadEventSequencer.h"
#include "webkit/LoadGate.h"
#include "webkit/WebKitPagePermissions.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

typedef struct _WebKitWebView WebKitWebView;
typedef struct _WebKitDownload WebKitDownload;
typedef struct _WebKitPolicyDecision WebKitPolicyDecision;
typedef struct _WebKitWebResource WebKitWebResource;
typedef struct _WebKitURIRequest WebKitURIRequest;
typedef struct _WebKitPrintOperation WebKitPrintOperation;
typedef struct _GAsyncResult GAsyncResult;
typedef struct _GTlsCertificate GTlsCertificate;
typedef struct _GVariant GVariant;
typedef struct _GSimpleAction GSimpleAction;
typedef struct _WebKitNavigationAction WebKitNavigationAction;
typedef struct _WebKitContextMenu WebKitContextMenu;
typedef struct _WebKitHitTestResult WebKitHitTestResult;
typedef struct _WebKitAuthenticationRequest WebKitAuthenticationRequest;

namespace ovel {

class WebKitEngine;

// A tab's page in WebKitGTK: one WebKitWebView with its own settings and user content manager,
// reporting to the tab through the WebViewDelegate. The window shows widget().
class WebKitWebViewAdapter final : public WebView {
public:
    // How long a finished page may take to tell its title before it finishes untitled.
    static constexpr std::chrono::milliseconds titleWait{1000};

    // The engine gives the view its network session and the user's prompters, and outlives it.
    // With `relatedView`, the new view is a window that page asked for: it runs in the same web
    // process and session, and its page can reach its opener.
    WebKitWebViewAdapter(WebKitEngine& engine, WebViewDelegate& delegate,
                         WebKitWebView* relatedView = nullptr);
    ~WebKitWebViewAdapter() override;

    WebKitWebViewAdapter(const WebKitWebViewAdapter&) = delete;
    WebKitWebViewAdapter& operator=(const WebKitWebViewAdapter&) = delete;

    GtkWidget* widget() const;
    WebKitWebView* webKitView() const { return view_.get(); }
    // The widget to show for a tab's web view; null when the view is not one of these.
    static GtkWidget* widgetOf(const WebView& view);

    // The adapter showing `view`, if any.
    static WebKitWebViewAdapter* forWebKitView(WebKitWebView* view);
    // Takes over a download this view started and hands it to the delegate.
    void adoptDownload(WebKitDownload* download);

    // WebView
    void load(const LoadRequest& request) override;
    void loadHTMLString(std::string_view html) override;
    void goBack() override;
    void goForward() override;
    void reload() override;
    void stopLoading() override;
    std::optional<std::string> url() const override;
    std::optional<std::string> title() const override;
    bool canGoBack() const override;
    bool canGoForward() const override;
    double estimatedProgress() const override;
    std::optional<FaviconImage> favicon() const override;
    std::optional<std::string> sessionState() const override;
    bool restoreSessionState(std::string_view state, const LoadRequest& request) override;
    double pageZoom() const override;
    void setPageZoom(double zoom) override;
    void find(std::string_view text) override;
    void removeAllContentRuleLists() override;
    void addContentRuleList(const ContentRuleList& list) override;
    void removeAllUserScripts() override;
    void addUserScript(const UserScript& script) override;
    void print() override;

private:
    static void onLoadChanged(WebKitWebView* view, int event, WebKitWebViewAdapter* self);
    static int onLoadFailed(WebKitWebView* view, int event, char* uri, GError* error,
                            WebKitWebViewAdapter* self);
    static void onTitleChanged(WebKitWebView* view, GParamSpec*, WebKitWebViewAdapter* self);
    static void onLoadingChanged(WebKitWebView* view, GParamSpec*, WebKitWebViewAdapter* self);
    static void onUriChanged(WebKitWebView* view, GParamSpec*, WebKitWebViewAdapter* self);
    static void onFaviconChanged(WebKitWebView* view, GParamSpec*, WebKitWebViewAdapter* self);
    static void onProgressChanged(WebKitWebView* view, GParamSpec*, WebKitWebViewAdapter* self);
    static void onResourceLoadStarted(WebKitWebView* view, WebKitWebResource* resource,
                                      WebKitURIRequest*, WebKitWebViewAdapter* self);
    // Connected swapped: the view comes first, the signal's own arguments are not needed.
    static void onResourceEvent(WebKitWebView* view);
    static void onTitleElementAnswer(GObject* view, GAsyncResult* result, void* query);
    static int onDecidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision, int type,
                              WebKitWebViewAdapter* self);
    static void onWebProcessTerminated(WebKitWebView* view, int reason, WebKitWebViewAdapter* self);
    static void onResponsiveChanged(WebKitWebView* view, GParamSpec*, WebKitWebViewAdapter* self);
    static GtkWidget* onCreate(WebKitWebView* view, WebKitNavigationAction* action,
                               WebKitWebViewAdapter* self);
    static int onContextMenu(WebKitWebView* view, WebKitContextMenu* menu, WebKitHitTestResult* hit,
                             WebKitWebViewAdapter* self);
    static void onOpenLinkInNewTab(GSimpleAction* action, GVariant* link,
                                   WebKitWebViewAdapter* self);
    static int onLoadFailedWithTlsErrors(WebKitWebView* view, char* failingUri,
                                         GTlsCertificate* certificate, unsigned errors,
                                         WebKitWebViewAdapter* self);
    static int onAuthenticate(WebKitWebView* view, WebKitAuthenticationRequest* request,
                              WebKitWebViewAdapter* self);

    friend class WebKitNewWebViewRequest;
    static int onEnterFullscreen(WebKitWebView* view, WebKitWebViewAdapter* self);
    static int onLeaveFullscreen(WebKitWebView* view, WebKitWebViewAdapter* self);
    static int onPrintRequested(WebKitWebView* view, WebKitPrintOperation* operation,
                                WebKitWebViewAdapter* self);

    void noteCommittedUri();
    // Tells the delegate the address the page is loading from.
    void notePageWillLoad();
    // The site-rule key of the page shown (siteRuleKey); empty when it has no host.
    std::string currentHost() const;
    void timedLoadExpired();
    // Asks the page whether it has a title element, once WebKit reports no title.
    void askForTitleElement();
    // A PDF or an image shown by itself is named by its file.
    // Hands `issue` to the engine through the gate, as the load of `url`.
    void requestLoad(const LoadRequest& request, std::function<void()> issue);

    GObjectRef<WebKitWebView> view_;
    WebViewDelegate& delegate_;
    WebKitEngine& engine_;
    // Behind the page's context menu item "Open Link in New Tab"; its target is the link.
    GObjectRef<GSimpleAction> openLinkAction_;
    GSignalConnections signals_;
    GLibTimer titleTimer_;
    GLibTimer loadTimer_;
    GLibTimer heldLoadTimer_;
    GLibTimer refusedLoadTimer_;
    LoadEventSequencer sequencer_;
    LoadGate gate_;
    WebKitPagePermissions permissions_;
    // get_uri already shows a navigation that has not committed; this is the page shown.
    std::optional<std::string> committedUri_;
    // The address of the last load(), reported until anything commits.
    std::optional<std::string> requestedUri_;
    // What the load under way was started for, before any commit.
    std::string startedUri_;
    // The page shown has a title element whose text is empty.
    bool hasEmptyTitle_ = false;
    // Counts the pages: an answer about the title element of an earlier one is dropped.
    unsigned titleQuery_ = 0;
    // The last thing asked for was generated HTML without a title element.
    bool showingTitlelessHTML_ = false;
    // Shows the error page of a refused certificate once the failed load has fully ended.
    GLibTimer errorPageTimer_;
    // This adapter is ending a hung page's process itself, to load it again: not a crash.
    bool restartingProcess_ = false;
};

} // namespace ovel
