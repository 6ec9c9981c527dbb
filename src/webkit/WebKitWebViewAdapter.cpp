#include "webkit/WebKitWebViewAdapter.h"

#include "web/AnswerOnce.h"
#include "web/ContentPolicies.h"
#include "web/ErrorPage.h"
#include "web/Url.h"

#include "webkit/WebKitContentRuleList.h"
#include "webkit/WebKitDownloadAdapter.h"
#include "webkit/WebKitEngine.h"
#include "webkit/WebKitLoadFailures.h"
#include "webkit/WebKitPageContent.h"
#include "webkit/WebKitSessionState.h"

#include <webkit/webkit.h>

namespace ovel {

namespace {

constexpr double initialZoom = 1.1;
// How much of a tab's back/forward list is kept across restarts.
constexpr std::size_t keptHistoryEntries = 50;

GQuark adapterQuark() {
    static const GQuark quark = g_quark_from_static_string("ovel-web-view-adapter");
    return quark;
}

std::optional<std::string> nonEmpty(const char* text) {
    if (text == nullptr || *text == '\0') {
        return std::nullopt;
    }
    return std::string(text);
}

// Answers one sign-in question; dropped unanswered, it cancels. It holds the request, not the
// view, so the answer may come after the tab is gone.
AnswerOnce<std::optional<Credentials>> replyTo(WebKitAuthenticationRequest* request) {
    auto held = GObjectRef<WebKitAuthenticationRequest>::retain(request);
    return AnswerOnce<std::optional<Credentials>>(
        [held](std::optional<Credentials> credentials) {
            if (!credentials) {
                // The load it belongs to fails, as if the site had refused.
                webkit_authentication_request_cancel(held.get());
                return;
            }
            WebKitCredential* credential =
                webkit_credential_new(credentials->user.c_str(), credentials->password.c_str(),
                                      WEBKIT_CREDENTIAL_PERSISTENCE_FOR_SESSION);
            webkit_authentication_request_authenticate(held.get(), credential);
            webkit_credential_free(credential);
        },
        std::nullopt);
}

// A widget starts with a floating reference; retain() sinks it so the adapter owns it. A related
// view takes its opener's network session.
GObjectRef<WebKitWebView> makeView(WebKitNetworkSession* session, WebKitWebView* relatedView) {
    auto settings = GObjectRef<WebKitSettings>::adopt(webkit_settings_new());
    webkit_settings_set_enable_developer_extras(settings.get(), TRUE);
    webkit_settings_set_enable_back_forward_navigation_gestures(settings.get(), TRUE);
    auto contentManager =
        GObjectRef<WebKitUserContentManager>::adopt(webkit_user_content_manager_new());
    GObject* made = relatedView != nullptr
                        ? G_OBJECT(g_object_new(WEBKIT_TYPE_WEB_VIEW, "related-view", relatedView,
                                                "settings", settings.get(), "user-content-manager",
                                                contentManager.get(), nullptr))
                        : G_OBJECT(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session,
                                                "settings", settings.get(), "user-content-manager",
                                                contentManager.get(), nullptr));
    return GObjectRef<WebKitWebView>::retain(WEBKIT_WEB_VIEW(made));
}

} // namespace

// A page's request for a new window: makes the one related view that answers it.
class WebKitNewWebViewRequest final : public NewWebViewRequest {
public:
    WebKitNewWebViewRequest(WebKitWebViewAdapter& opener, WebKitNavigationAction* action)
        : opener_(opener), action_(action) {}

    std::optional<std::string> url() const override {
        return nonEmpty(webkit_uri_request_get_uri(webkit_navigation_action_get_request(action_)));
    }

    std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) override {
        if (made_ != nullptr) {
            return nullptr;
        }
        auto view =
            std::make_unique<WebKitWebViewAdapter>(opener_.engine_, delegate, opener_.view_.get());
        made_ = view.get();
        return view;
    }

    WebKitWebViewAdapter* made() const { return made_; }

private:
    WebKitWebViewAdapter& opener_;
    WebKitNavigationAction* action_;
    WebKitWebViewAdapter* made_ = nullptr;
};

WebKitWebViewAdapter::WebKitWebViewAdapter(WebKitEngine& engine, WebViewDelegate& delegate,
                                           WebKitWebView* relatedView)
    : view_(makeView(engine.networkSession(), relatedView)), delegate_(delegate), engine_(engine),
      sequencer_(
          delegate,
          {[this] { titleTimer_.start(titleWait, [this] { sequencer_.titleWaitExpired(); }); },
           [this] { titleTimer_.cancel(); }}),
      gate_({[this](std::chrono::milliseconds timeout) {
                 loadTimer_.start(timeout, [this] { timedLoadExpired(); });
             },
             [this] { loadTimer_.cancel(); },
             [this] {
                 heldLoadTimer_.start(std::chrono::milliseconds(0), [this] { gate_.handOver(); });
             },
             [this] { heldLoadTimer_.cancel(); }}),
      permissions_(view_.get(), delegate, engine.permissionPrompter(),
                   [this] { return currentHost(); }) {
    webkit_web_view_set_zoom_level(view_.get(), initialZoom);
    g_object_set_qdata(G_OBJECT(view_.get()), adapterQuark(), this);

    auto* view = view_.get();
    signals_.connect(view, "load-changed", G_CALLBACK(&onLoadChanged), this);
    signals_.connect(view, "load-failed", G_CALLBACK(&onLoadFailed), this);
    signals_.connect(view, "notify::title", G_CALLBACK(&onTitleChanged), this);
    signals_.connect(view, "notify::uri", G_CALLBACK(&onUriChanged), this);
    signals_.connect(view, "notify::favicon", G_CALLBACK(&onFaviconChanged), this);
    signals_.connect(view, "notify::estimated-load-progress", G_CALLBACK(&onProgressChanged), this);
    signals_.connect(view, "resource-load-started", G_CALLBACK(&onResourceLoadStarted), this);
    signals_.connect(view, "notify::is-loading", G_CALLBACK(&onLoadingChanged), this);
    signals_.connect(view, "decide-policy", G_CALLBACK(&onDecidePolicy), this);
    signals_.connect(view, "web-process-terminated", G_CALLBACK(&onWebProcessTerminated), this);
    signals_.connect(view, "notify::is-web-process-responsive", G_CALLBACK(&onResponsiveChanged),
                     this);
    signals_.connect(view, "create", G_CALLBACK(&onCreate), this);
    signals_.connect(view, "context-menu", G_CALLBACK(&onContextMenu), this);
    signals_.connect(view, "load-failed-with-tls-errors", G_CALLBACK(&onLoadFailedWithTlsErrors),
                     this);
    signals_.connect(view, "authenticate", G_CALLBACK(&onAuthenticate), this);

    openLinkAction_ = GObjectRef<GSimpleAction>::adopt(
        g_simple_action_new("open-link-in-new-tab", G_VARIANT_TYPE_STRING));
    signals_.connect(openLinkAction_.get(), "activate", G_CALLBACK(&onOpenLinkInNewTab), this);
    signals_.connect(view, "enter-fullscreen", G_CALLBACK(&onEnterFullscreen), this);
    signals_.connect(view, "leave-fullscreen", G_CALLBACK(&onLeaveFullscreen), this);
    signals_.connect(view, "print", G_CALLBACK(&onPrintRequested), this);
}

WebKitWebViewAdapter::~WebKitWebViewAdapter() {
    // The widget may outlive the adapter in its container: it must not call back.
    signals_.disconnectAll();
    titleTimer_.cancel();
    loadTimer_.cancel();
    heldLoadTimer_.cancel();
    errorPageTimer_.cancel();
    g_object_set_qdata(G_OBJECT(view_.get()), adapterQuark(), nullptr);
}

GtkWidget* WebKitWebViewAdapter::widget() const {
    return GTK_WIDGET(view_.get());
}

GtkWidget* WebKitWebViewAdapter::widgetOf(const WebView& view) {
    const auto* adapter = dynamic_cast<const WebKitWebViewAdapter*>(&view);
    return adapter != nullptr ? adapter->widget() : nullptr;
}

WebKitWebViewAdapter* WebKitWebViewAdapter::forWebKitView(WebKitWebView* view) {
    if (view == nullptr) {
        return nullptr;
    }
    return static_cast<WebKitWebViewAdapter*>(g_object_get_qdata(G_OBJECT(view), adapterQuark()));
}

void WebKitWebViewAdapter::adoptDownload(WebKitDownload* download) {
    delegate_.navigationDidBecomeDownload(WebKitDownloadAdapter::start(download));
}

// Loading

void WebKitWebViewAdapter::load(const LoadRequest& request) {
    requestLoad(request, [this, url = request.url] {
        // WebKit commits an empty page in place of an address on a port it refuses, an entry
        // that Back cannot leave safely: such an address never reaches it, and fails here.
        if (usesPortWebKitRefuses(url)) {
            refusedLoadTimer_.start(std::chrono::milliseconds(0), [this, url] {
                startedUri_ = url;
                gate_.loadStarted();
                sequencer_.loadStarted();
                sequencer_.loadFailed(LoadFailure{LoadFailureKind::PortBlocked, url, {}});
                gate_.loadEnded();
            });
            return;
        }
        webkit_web_view_load_uri(view_.get(), url.c_str());
    });
}

void WebKitWebViewAdapter::requestLoad(const LoadRequest& request, std::function<void()> issue) {
    requestedUri_ = request.url;
    gate_.request(
        [this, url = request.url, issue = std::move(issue)] {
            showingTitlelessHTML_ = false;
            engine_.noteOrigin(url.c_str());
            issue();
        },
        request.timeout);
}

std::optional<std::string> WebKitWebViewAdapter::sessionState() const {
    return boundedSessionState(serializedSessionState(view_.get()), keptHistoryEntries);
}

bool WebKitWebViewAdapter::restoreSessionState(std::string_view state, const LoadRequest& request) {
    if (!restoreSerializedSessionState(view_.get(), state)) {
        return false;
    }
    // The list's current entry is loaded where it stands, so Back and Forward lead on from it;
    // another address (one that failed, say) goes after it.
    WebKitBackForwardListItem* current = webkit_back_forward_list_get_current_item(
        webkit_web_view_get_back_forward_list(view_.get()));
    const char* currentUri =
        current != nullptr ? webkit_back_forward_list_item_get_uri(current) : nullptr;
    if (currentUri == nullptr || request.url != currentUri) {
        load(request);
        return true;
    }
    requestLoad(request, [this, item = GObjectRef<WebKitBackForwardListItem>::retain(current)] {
        webkit_web_view_go_to_back_forward_list_item(view_.get(), item.get());
    });
    return true;
}

void WebKitWebViewAdapter::loadHTMLString(std::string_view html) {
    requestedUri_.reset();
    gate_.request(
        [this, html = std::string(html)] {
            // Generated HTML is known in full: without a title element there is no title to
            // wait for.
            showingTitlelessHTML_ = toLowerAscii(html).find("<title") == std::string::npos;
            // Without a base URL WebKit shows the page as about:blank, which url() reports as
            // none.
            webkit_web_view_load_html(view_.get(), html.c_str(), nullptr);
        },
        std::nullopt);
}

void WebKitWebViewAdapter::goBack() {
    showingTitlelessHTML_ = false;
    gate_.forgetTimedLoad();
    webkit_web_view_go_back(view_.get());
}

void WebKitWebViewAdapter::goForward() {
    showingTitlelessHTML_ = false;
    gate_.forgetTimedLoad();
    webkit_web_view_go_forward(view_.get());
}

void WebKitWebViewAdapter::reload() {
    // A load WebKit has not started yet (its web process may still be launching) fetches the
    // page afresh anyway, under the rules and scripts the view has now: reloading would only
    // throw it away and start over, which at launch costs the restored page its head start.
    if (gate_.timedLoad() == LoadGate::TimedLoad::Pending &&
        webkit_web_view_get_is_web_process_responsive(view_.get())) {
        return;
    }
    gate_.forgetTimedLoad();
    errorPageTimer_.cancel();
    // A hung process would never answer: it is ended first, and the page loads in a new one.
    if (!webkit_web_view_get_is_web_process_responsive(view_.get())) {
        restartingProcess_ = true;
        webkit_web_view_terminate_web_process(view_.get());
        restartingProcess_ = false;
    }
    // Also brings a crashed page back: WebKit starts a new web process for it.
    webkit_web_view_reload(view_.get());
}

void WebKitWebViewAdapter::stopLoading() {
    gate_.stop();
    webkit_web_view_stop_loading(view_.get());
}

void WebKitWebViewAdapter::timedLoadExpired() {
    const LoadGate::Expiry expiry = gate_.timeoutExpired();
    webkit_web_view_stop_loading(view_.get());
    // WebKit reports the stop as a cancelled load, but only later (or never, if the web process
    // hangs): the failure is announced now and WebKit's own report then finds nothing loading.
    // A load stopped before WebKit started it (a web process slow to launch) is dropped
    // without a word, and the tab, which heard no start, hears nothing.
    if (expiry == LoadGate::Expiry::Failed) {
        sequencer_.loadFailed(LoadFailure{LoadFailureKind::TimedOut, startedUri_, {}});
    }
}

// Reading the page

// A load to a port WebKit refuses (1, 9, 25, …) does not fail either: WebKit commits an empty
// about:blank in its place, which then reads as a page without address or title.
std::optional<std::string> WebKitWebViewAdapter::url() const {
    // A view that has shown nothing yet answers with the address it was asked to load, so a
    // restored tab saved before its page commits keeps its address.
    if (!committedUri_) {
        return requestedUri_;
    }
    if (committedUri_ == "about:blank") {
        return std::nullopt;
    }
    return committedUri_;
}

std::optional<FaviconImage> WebKitWebViewAdapter::favicon() const {
    return faviconOf(view_.get());
}

std::optional<std::string> WebKitWebViewAdapter::title() const {
    // WebKit resets the title to empty at each commit and has no "no title": empty is none,
    // unless the page was found to have an empty title element.
    if (auto title = nonEmpty(webkit_web_view_get_title(view_.get()))) {
        return title;
    }
    if (hasEmptyTitle_) {
        return std::string();
    }
    return fileTitleOf(view_.get(), committedUri_);
}

// There are no can-go-back properties to observe; the back-forward list is current by the time
// a navigation finishes, which is when these are read.
bool WebKitWebViewAdapter::canGoBack() const {
    return webkit_web_view_can_go_back(view_.get());
}

bool WebKitWebViewAdapter::canGoForward() const {
    return webkit_web_view_can_go_forward(view_.get());
}

double WebKitWebViewAdapter::estimatedProgress() const {
    return webkit_web_view_get_estimated_load_progress(view_.get());
}

double WebKitWebViewAdapter::pageZoom() const {
    return webkit_web_view_get_zoom_level(view_.get());
}

void WebKitWebViewAdapter::setPageZoom(double zoom) {
    webkit_web_view_set_zoom_level(view_.get(), zoom);
}

void WebKitWebViewAdapter::find(std::string_view text) {
    auto* controller = webkit_web_view_get_find_controller(view_.get());
    if (text.empty()) {
        webkit_find_controller_search_finish(controller);
        return;
    }
    webkit_find_controller_search(
        controller, std::string(text).c_str(),
        WEBKIT_FIND_OPTIONS_CASE_INSENSITIVE | WEBKIT_FIND_OPTIONS_WRAP_AROUND, G_MAXUINT);
}

// Page content

void WebKitWebViewAdapter::removeAllContentRuleLists() {
    webkit_user_content_manager_remove_all_filters(
        webkit_web_view_get_user_content_manager(view_.get()));
}

void WebKitWebViewAdapter::addContentRuleList(const ContentRuleList& list) {
    if (const auto* compiled = dynamic_cast<const WebKitContentRuleList*>(&list)) {
        webkit_user_content_manager_add_filter(
            webkit_web_view_get_user_content_manager(view_.get()), compiled->filter());
    }
}

void WebKitWebViewAdapter::removeAllUserScripts() {
    webkit_user_content_manager_remove_all_scripts(
        webkit_web_view_get_user_content_manager(view_.get()));
}

void WebKitWebViewAdapter::addUserScript(const UserScript& script) {
    auto* userScript =
        webkit_user_script_new(script.source.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                               WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
    webkit_user_content_manager_add_script(webkit_web_view_get_user_content_manager(view_.get()),
                                           userScript);
    webkit_user_script_unref(userScript);
}

// Engine events

void WebKitWebViewAdapter::notePageWillLoad() {
    // Load events are the main frame's: during a load the view's address is the one it loads.
    if (const char* uri = webkit_web_view_get_uri(view_.get()); uri != nullptr && *uri != '\0') {
        delegate_.pageWillLoad(uri);
    }
}

void WebKitWebViewAdapter::onLoadChanged(WebKitWebView*, int event, WebKitWebViewAdapter* self) {
    switch (static_cast<WebKitLoadEvent>(event)) {
    case WEBKIT_LOAD_STARTED:
        self->startedUri_ = webkit_web_view_get_uri(self->view_.get()) != nullptr
                                ? webkit_web_view_get_uri(self->view_.get())
                                : "";
        self->notePageWillLoad();
        self->hasEmptyTitle_ = false;
        ++self->titleQuery_;
        self->gate_.loadStarted();
        self->sequencer_.loadStarted();
        break;
    case WEBKIT_LOAD_REDIRECTED:
        self->notePageWillLoad();
        break;
    case WEBKIT_LOAD_COMMITTED:
        self->hasEmptyTitle_ = false;
        ++self->titleQuery_;
        self->noteCommittedUri();
        // A port WebKit will not connect to (1, 9, 25, ...) fails no load: an empty about:blank
        // commits in its place.
        if (self->committedUri_ == "about:blank" &&
            (g_str_has_prefix(self->startedUri_.c_str(), "http://") ||
             g_str_has_prefix(self->startedUri_.c_str(), "https://"))) {
            self->sequencer_.loadFailed(
                LoadFailure{LoadFailureKind::PortBlocked, self->startedUri_, {}});
        }
        break;
    case WEBKIT_LOAD_FINISHED:
        // Also sent after every load-failed; the sequencer ignores that one.
        if (self->sequencer_.isLoading()) {
            self->noteCommittedUri();
        }
        if (self->title()) {
            self->sequencer_.loadFinished(LoadEventSequencer::Title::Known);
        } else if (self->showingTitlelessHTML_ && !self->url()) {
            self->sequencer_.loadFinished(LoadEventSequencer::Title::Absent);
        } else {
            self->sequencer_.loadFinished(LoadEventSequencer::Title::Pending);
            self->askForTitleElement();
        }
        self->gate_.loadEnded();
        break;
    }
}

int WebKitWebViewAdapter::onLoadFailed(WebKitWebView*, int, char* failingUri, GError* error,
                                       WebKitWebViewAdapter* self) {
    // The tab shows why, naming the address that failed; a user's stop and a load that became
    // a download are no failures to show.
    self->sequencer_.loadFailed(
        loadFailureFor(error, failingUri != nullptr ? failingUri : self->startedUri_));
    self->gate_.loadEnded();
    // Handled: WebKit would otherwise replace the page with its own error page.
    return TRUE;
}

void WebKitWebViewAdapter::onLoadingChanged(WebKitWebView* view, GParamSpec*,
                                            WebKitWebViewAdapter* self) {
    // The first load ended without a finish or a failure (dropped before it began): nothing
    // stands in the way of the held one any more.
    if (!webkit_web_view_is_loading(view)) {
        self->gate_.loadingStopped();
        // Back or Forward within one document (to or from a fragment) reads as loading while
        // the URI changes, and sends no load events: its address is taken once it is over.
        if (!self->sequencer_.isLoading()) {
            self->noteCommittedUri();
        }
    }
}

void WebKitWebViewAdapter::onTitleChanged(WebKitWebView*, GParamSpec*, WebKitWebViewAdapter* self) {
    self->sequencer_.titleChanged(self->title().has_value());
}

void WebKitWebViewAdapter::onUriChanged(WebKitWebView* view, GParamSpec*,
                                        WebKitWebViewAdapter* self) {
    // While a load is under way the URI already names what is being loaded (it changes at the
    // request, before the navigation is even decided). Outside a load it follows same-page
    // navigations (fragments, pushState) and a stopped load's return to the page shown. After
    // a web process crash it becomes empty, which is ignored so the page can be reloaded.
    if (!webkit_web_view_is_loading(view)) {
        self->noteCommittedUri();
    }
}

void WebKitWebViewAdapter::onFaviconChanged(WebKitWebView*, GParamSpec*,
                                            WebKitWebViewAdapter* self) {
    self->delegate_.faviconDidChange();
}

void WebKitWebViewAdapter::noteCommittedUri() {
    auto uri = nonEmpty(webkit_web_view_get_uri(view_.get()));
    if (uri && uri != committedUri_) {
        committedUri_ = std::move(uri);
        delegate_.urlDidChange();
    }
}

void WebKitWebViewAdapter::onProgressChanged(WebKitWebView*, GParamSpec*,
                                             WebKitWebViewAdapter* self) {
    // WebKit's estimate moves as the page's bytes arrive.
    self->gate_.activity();
    self->delegate_.estimatedProgressDidChange();
}

void WebKitWebViewAdapter::onResourceLoadStarted(WebKitWebView* view, WebKitWebResource* resource,
                                                 WebKitURIRequest*, WebKitWebViewAdapter* self) {
    self->gate_.activity();
    // A resource's response and its end count as arrivals too. Connected through the view, so
    // an adapter that is gone is not called.
    g_signal_connect_object(resource, "notify::response", G_CALLBACK(&onResourceEvent), view,
                            G_CONNECT_SWAPPED);
    g_signal_connect_object(resource, "finished", G_CALLBACK(&onResourceEvent), view,
                            G_CONNECT_SWAPPED);
}

void WebKitWebViewAdapter::onResourceEvent(WebKitWebView* view) {
    if (auto* self = forWebKitView(view)) {
        self->gate_.activity();
    }
}

void WebKitWebViewAdapter::askForTitleElement() {
    // WebKit reports an empty <title></title> as no title at all; the page itself can tell. (A
    // title WebKit has not passed on yet reads as itself here, not as empty.)
    static constexpr std::string_view script =
        "document.querySelector('title') !== null && document.title === ''";
    webkit_web_view_evaluate_javascript(view_.get(), script.data(), gssize(script.size()), nullptr,
                                        nullptr, nullptr, &onTitleElementAnswer,
                                        GUINT_TO_POINTER(titleQuery_));
}

void WebKitWebViewAdapter::onTitleElementAnswer(GObject* view, GAsyncResult* result, void* query) {
    GError* error = nullptr;
    JSCValue* answer =
        webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &error);
    const bool hasTitleElement = answer != nullptr && jsc_value_to_boolean(answer);
    g_clear_object(&answer);
    g_clear_error(&error);
    // The view outlives the call (the call holds it); the adapter may be gone.
    auto* self = forWebKitView(WEBKIT_WEB_VIEW(view));
    if (self == nullptr || GPOINTER_TO_UINT(query) != self->titleQuery_ || !hasTitleElement ||
        nonEmpty(webkit_web_view_get_title(WEBKIT_WEB_VIEW(view)))) {
        return;
    }
    self->hasEmptyTitle_ = true;
    self->sequencer_.titleChanged(true);
}

int WebKitWebViewAdapter::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, int type,
                                         WebKitWebViewAdapter* self) {
    switch (static_cast<WebKitPolicyDecisionType>(type)) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION: {
        auto* action = webkit_navigation_policy_decision_get_navigation_action(
            WEBKIT_NAVIGATION_POLICY_DECISION(decision));
        NavigationAction navigation;
        navigation.url =
            nonEmpty(webkit_uri_request_get_uri(webkit_navigation_action_get_request(action)));
        if (navigation.url) {
            self->engine_.noteOrigin(navigation.url->c_str());
        }
        navigation.isLinkClick = webkit_navigation_action_get_navigation_type(action) ==
                                 WEBKIT_NAVIGATION_TYPE_LINK_CLICKED;
        navigation.mouseButton = webkit_navigation_action_get_mouse_button(action);
        navigation.controlKey =
            (webkit_navigation_action_get_modifiers(action) & GDK_CONTROL_MASK) != 0;
        if (static_cast<WebKitPolicyDecisionType>(type) ==
                WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION &&
            !(navigation.isLinkClick && (navigation.mouseButton == 2 || navigation.controlKey))) {
            // A new window's page is decided in the new tab's own view, once it has one.
            webkit_policy_decision_use(decision);
            return TRUE;
        }
        // WebKitGTK does not say whether a link has a download attribute: when such a click
        // is allowed, WebKit downloads it by itself and the download arrives through the
        // network session's download-started.
        navigation.shouldPerformDownload = false;
        switch (self->delegate_.decidePolicy(navigation)) {
        case NavigationActionPolicy::Cancel:
            webkit_policy_decision_ignore(decision);
            break;
        case NavigationActionPolicy::Allow:
            webkit_policy_decision_use(decision);
            break;
        case NavigationActionPolicy::Download:
            webkit_policy_decision_download(decision);
            break;
        }
        return TRUE;
    }
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE: {
        auto* responseDecision = WEBKIT_RESPONSE_POLICY_DECISION(decision);
        NavigationResponse response;
        // A file the server sends as an attachment is one to save, whatever its type.
        response.canShowMimeType =
            webkit_response_policy_decision_is_mime_type_supported(responseDecision) &&
            !isAttachment(webkit_response_policy_decision_get_response(responseDecision));
        // Left to WebKit, a type it cannot show is dropped, not downloaded.
        switch (self->delegate_.decidePolicy(response)) {
        case NavigationResponsePolicy::Allow:
            webkit_policy_decision_use(decision);
            break;
        case NavigationResponsePolicy::Download:
            webkit_policy_decision_download(decision);
            break;
        }
        return TRUE;
    }
    }
    return FALSE;
}

std::string WebKitWebViewAdapter::currentHost() const {
    // The same key the browser state files the site's rule under.
    const std::optional<Url> url = committedUri_ ? Url::fromEngine(*committedUri_) : std::nullopt;
    return url ? siteRuleKey(*url).value_or(std::string()) : std::string();
}

void WebKitWebViewAdapter::onWebProcessTerminated(WebKitWebView*, int, WebKitWebViewAdapter* self) {
    // A crash, a kill or too much memory: the page is gone without a load event. What was
    // loading has failed; the tab keeps its title and address and can reload.
    self->gate_.forgetTimedLoad();
    self->sequencer_.processTerminated();
    if (!self->restartingProcess_) {
        self->delegate_.webProcessDidTerminate();
    }
}

void WebKitWebViewAdapter::onResponsiveChanged(WebKitWebView* view, GParamSpec*,
                                               WebKitWebViewAdapter* self) {
    self->delegate_.webProcessResponsivenessDidChange(
        webkit_web_view_get_is_web_process_responsive(view));
}

GtkWidget* WebKitWebViewAdapter::onCreate(WebKitWebView*, WebKitNavigationAction* action,
                                          WebKitWebViewAdapter* self) {
    // WebKit asks only for a click's target=_blank or window.open, or for a script's
    // window.open while the page handles a click: pages may not open windows by themselves.
    WebKitNewWebViewRequest request(*self, action);
    if (!self->delegate_.createWebViewForNewTab(request) || request.made() == nullptr) {
        return nullptr;
    }
    // The new tab owns its view; WebKit loads the page into it.
    return request.made()->widget();
}

int WebKitWebViewAdapter::onContextMenu(WebKitWebView*, WebKitContextMenu* menu,
                                        WebKitHitTestResult* hit, WebKitWebViewAdapter* self) {
    const char* link = webkit_hit_test_result_get_link_uri(hit);
    if (link == nullptr) {
        return FALSE;
    }
    // The browser has tabs, not windows: WebKit's "Open Link in New Window" becomes ours.
    int position = 0;
    for (GList* item = webkit_context_menu_get_items(menu); item != nullptr;
         item = item->next, ++position) {
        auto* entry = static_cast<WebKitContextMenuItem*>(item->data);
        if (webkit_context_menu_item_get_stock_action(entry) ==
            WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK_IN_NEW_WINDOW) {
            webkit_context_menu_remove(menu, entry);
            webkit_context_menu_insert(menu,
                                       webkit_context_menu_item_new_from_gaction(
                                           G_ACTION(self->openLinkAction_.get()),
                                           "Open Link in New Tab", g_variant_new_string(link)),
                                       position);
            break;
        }
    }
    return FALSE;
}

void WebKitWebViewAdapter::onOpenLinkInNewTab(GSimpleAction*, GVariant* link,
                                              WebKitWebViewAdapter* self) {
    if (link != nullptr && g_variant_is_of_type(link, G_VARIANT_TYPE_STRING)) {
        self->delegate_.openLinkInNewTab(g_variant_get_string(link, nullptr));
    }
}

int WebKitWebViewAdapter::onLoadFailedWithTlsErrors(WebKitWebView*, char* failingUri,
                                                    GTlsCertificate*, unsigned errors,
                                                    WebKitWebViewAdapter* self) {
    // Nothing of the page arrived: the connection ended at the certificate, and there is no
    // way past it. The load fails for the tab, and the error page takes the failing address,
    // so the address field and back and forward stay with it.
    self->sequencer_.loadFailed(std::nullopt);
    const std::optional<Url> url = Url::fromEngine(failingUri != nullptr ? failingUri : "");
    std::string html =
        certificateErrorPageHTML(url ? url->host().value_or("") : std::string(),
                                 certificateProblem(static_cast<GTlsCertificateFlags>(errors)));
    // WebKit ends the failed load right after this signal; the error page follows it.
    self->errorPageTimer_.start(std::chrono::milliseconds(0), [self, html = std::move(html),
                                                               uri = std::string(failingUri)] {
        self->showingTitlelessHTML_ = false;
        webkit_web_view_load_alternate_html(self->view_.get(), html.c_str(), uri.c_str(), nullptr);
    });
    self->gate_.loadEnded();
    return TRUE;
}

int WebKitWebViewAdapter::onAuthenticate(WebKitWebView*, WebKitAuthenticationRequest* request,
                                         WebKitWebViewAdapter* self) {
    auto reply = std::make_shared<AnswerOnce<std::optional<Credentials>>>(replyTo(request));
    const AuthenticationPrompter& prompter = self->engine_.authenticationPrompter();
    if (!prompter) {
        (*reply)(std::nullopt);
        return TRUE;
    }
    const char* realm = webkit_authentication_request_get_realm(request);
    const char* host = webkit_authentication_request_get_host(request);
    AuthenticationQuestion question{toLowerAscii(host != nullptr ? host : ""),
                                    realm != nullptr ? realm : "", self->widget()};
    prompter(question,
             [reply](std::optional<Credentials> credentials) { (*reply)(std::move(credentials)); });
    return TRUE;
}

// Full screen and printing

// WebKit itself makes the window full screen and back; the browser only hides and restores
// its chrome around the page.
int WebKitWebViewAdapter::onEnterFullscreen(WebKitWebView*, WebKitWebViewAdapter* self) {
    self->delegate_.pageDidChangeFullscreen(true);
    return FALSE;
}

int WebKitWebViewAdapter::onLeaveFullscreen(WebKitWebView*, WebKitWebViewAdapter* self) {
    self->delegate_.pageDidChangeFullscreen(false);
    return FALSE;
}

namespace {

void runPrintDialog(WebKitPrintOperation* operation, GtkWidget* view) {
    GtkRoot* root = gtk_widget_get_root(view);
    webkit_print_operation_run_dialog(operation, GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr);
}

} // namespace

void WebKitWebViewAdapter::print() {
    auto operation =
        GObjectRef<WebKitPrintOperation>::adopt(webkit_print_operation_new(view_.get()));
    runPrintDialog(operation.get(), widget());
}

int WebKitWebViewAdapter::onPrintRequested(WebKitWebView*, WebKitPrintOperation* operation,
                                           WebKitWebViewAdapter* self) {
    // window.print(): the same dialog as the browser's own Print, over the window of the page.
    runPrintDialog(operation, self->widget());
    return TRUE;
}

} // namespace ovel
