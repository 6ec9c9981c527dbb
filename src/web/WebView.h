#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

class ContentRuleList;
class Download;

struct LoadRequest {
    std::string url;
    // The engine stops a load when nothing of it has arrived for this long.
    std::chrono::milliseconds timeout{std::chrono::seconds(60)};
};

struct NavigationAction {
    std::optional<std::string> url;
    bool shouldPerformDownload = false;
    // The user clicked a link: with which mouse button (1 the primary, 2 the middle one) and
    // whether Ctrl was held.
    bool isLinkClick = false;
    unsigned mouseButton = 0;
    bool controlKey = false;
};

enum class NavigationActionPolicy { Cancel, Allow, Download };

struct NavigationResponse {
    bool canShowMimeType = true;
};

enum class NavigationResponsePolicy { Allow, Download };

// Why a page could not be loaded, in the terms the person can act on.
enum class LoadFailureKind {
    ConnectionRefused,
    HostNotFound,
    TimedOut,
    // The connection broke off, or closed before the page arrived.
    ConnectionLost,
    // The secure connection could not be set up (not a certificate the browser refused).
    SecureConnectionFailed,
    // A port the engine does not connect to (kept for other services).
    PortBlocked,
    Other,
};

struct LoadFailure {
    LoadFailureKind kind = LoadFailureKind::Other;
    // The address that failed, as it was asked for.
    std::string url;
    // The engine's own words, for a failure of no known kind.
    std::string description;
    bool operator==(const LoadFailure&) const = default;
};

// A decoded site icon: straight (non-premultiplied) RGBA, row by row.
struct FaviconImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;
    bool operator==(const FaviconImage&) const = default;
};

enum class MediaCaptureType { Camera, Microphone, CameraAndMicrophone, Other };

enum class SitePermissionKind { Location, Notifications };

enum class PermissionDecision { Prompt, Grant, Deny };

struct UserScript {
    std::string source;
    // Injected at document start into the main frame only.
};

// A notification a page shows (the Notifications API). Title and body are plain text.
struct PageNotification {
    // Unique among the notifications of the running browser.
    std::uint64_t id = 0;
    std::string title;
    std::string body;
};

// What a web view tells its owner. Every call arrives on the UI thread, in the order the
// engine sends them: provisional start, then finish or failure.
class WebView;
class WebViewDelegate;

// A page asked for a window of its own (a link with target=_blank, window.open from a click).
// The engine has the new page ready to run in the opener's process, so that window.opener works;
// whoever takes it makes the one view for it.
class NewWebViewRequest {
public:
    virtual ~NewWebViewRequest() = default;
    // The address the page asked to open; none for an empty window.
    virtual std::optional<std::string> url() const = 0;
    // The new page's view, reporting to `delegate`. Called at most once, and only while the
    // request is being decided.
    virtual std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) = 0;
};

class WebViewDelegate {
public:
    virtual ~WebViewDelegate() = default;

    virtual void didStartProvisionalNavigation() = 0;
    // The page itself (not one of its frames) starts loading from `url`, or was redirected
    // there, before any of its resources is asked for.
    virtual void pageWillLoad(std::string_view url) = 0;
    virtual void didFinishNavigation() = 0;
    // The load ended without its page: `failure` says why, or is none when there is nothing to
    // show (the user stopped it, it became a download, the page's process went away).
    virtual void didFailNavigation(const std::optional<LoadFailure>& failure) = 0;
    virtual void estimatedProgressDidChange() = 0;
    // The address of the page shown changed: a navigation committed, or the page moved within
    // itself (a fragment, history.pushState).
    virtual void urlDidChange() = 0;

    virtual NavigationActionPolicy decidePolicy(const NavigationAction& action) = 0;
    virtual NavigationResponsePolicy decidePolicy(const NavigationResponse& response) = 0;
    // The engine has another icon for the page shown, or none.
    virtual void faviconDidChange() = 0;
    // A navigation action or response became a download.
    virtual void navigationDidBecomeDownload(std::shared_ptr<Download> download) = 0;

    // `host` is lower-cased. A Prompt answer is put to the user by the engine side.
    virtual PermissionDecision decideMediaCapturePermission(std::string_view host,
                                                            MediaCaptureType type) = 0;
    virtual PermissionDecision decideSitePermission(std::string_view host,
                                                    SitePermissionKind kind) = 0;

    // The page wants a new window: true when a view was made from the request, false to refuse.
    virtual bool createWebViewForNewTab(NewWebViewRequest& request) = 0;
    // The user asked for a link in a new tab (from the page's context menu).
    virtual void openLinkInNewTab(std::string_view url) = 0;
    // The page's process is gone (crashed, killed, out of memory): nothing of it is left to show.
    virtual void webProcessDidTerminate() = 0;
    // The page's process stopped answering, or answers again.
    virtual void webProcessResponsivenessDidChange(bool responsive) = 0;
    // A page allowed to show notifications showed one, or closed one it showed.
    virtual void pageDidShowNotification(const PageNotification& notification) = 0;
    virtual void pageDidCloseNotification(std::uint64_t id) = 0;
    // The page put one of its elements in full screen (a video, requestFullscreen), or left it.
    virtual void pageDidChangeFullscreen(bool fullscreen) = 0;
};

// One page of the web engine, owned by one tab.
class WebView {
public:
    virtual ~WebView() = default;

    virtual void load(const LoadRequest& request) = 0;
    // Shows generated HTML with no base URL: afterwards the view has no URL.
    virtual void loadHTMLString(std::string_view html) = 0;
    virtual void goBack() = 0;
    virtual void goForward() = 0;
    virtual void reload() = 0;
    virtual void stopLoading() = 0;

    // None for generated HTML loaded without a base URL.
    virtual std::optional<std::string> url() const = 0;
    virtual std::optional<std::string> title() const = 0;
    virtual bool canGoBack() const = 0;
    virtual bool canGoForward() const = 0;
    virtual double estimatedProgress() const = 0;
    virtual std::optional<FaviconImage> favicon() const = 0;

    // The back/forward list as the engine keeps it, serialised; none when it has nothing to keep.
    virtual std::optional<std::string> sessionState() const = 0;
    // Takes back the list `state` holds and loads `request` as its current page: the list's own
    // current entry when that is the address asked for, else a new entry after it. False when
    // `state` cannot be read: nothing is restored and nothing is loaded.
    virtual bool restoreSessionState(std::string_view state, const LoadRequest& request) = 0;

    virtual double pageZoom() const = 0;
    virtual void setPageZoom(double zoom) = 0;
    // Forward, case-insensitive, wrapping; the engine highlights and scrolls to the match.
    virtual void find(std::string_view text) = 0;

    virtual void removeAllContentRuleLists() = 0;
    virtual void addContentRuleList(const ContentRuleList& list) = 0;
    virtual void removeAllUserScripts() = 0;
    virtual void addUserScript(const UserScript& script) = 0;

    // Asks the user how to print the page, in the print dialog of the window showing it.
    virtual void print() = 0;
};

} // namespace ovel
