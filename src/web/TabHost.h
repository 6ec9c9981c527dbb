#pragma once

#include "records/Records.h"
#include "web/WebView.h"

#include <string_view>

namespace ovel {

class BrowserTab;
class Url;

// What a tab tells its owner and asks of it. The tab holds its host weakly and calls it, inside
// one operation of their shared notices, only while the host is alive; a call that concerns one
// tab is handed that tab, so the host keeps no reference to any.
class TabHost {
public:
    virtual ~TabHost() = default;

    // The tab's page finished loading: its address, title and history entry are final.
    virtual void tabDidFinishPage(BrowserTab& tab) = 0;
    // The tab's load failed: it shows why, and keeps the address that failed.
    virtual void tabDidFailLoad(BrowserTab& tab) = 0;
    // The tab's page moved within itself (a fragment, history.pushState): a new address, no load.
    virtual void tabDidNavigateInPage(BrowserTab& tab) = 0;
    // What the tab was loading became a download: the page on show stays, and so does its
    // address.
    virtual void tabLoadBecameDownload(BrowserTab& tab) = 0;
    // One of the tab's downloads started or ended.
    virtual void tabDidReportDownload(const DownloadEvent& event) = 0;
    // The page went to an internal address (ovel:// or chrome://): true when the host shows it
    // natively, which cancels the navigation.
    virtual bool tabRequestsInternalPage(std::string_view address) = 0;
    // The tab is about to navigate to `url`: what that site's rules give the page is set now.
    virtual void tabWillNavigate(BrowserTab& tab, const Url& url) = 0;
    // The tab's page is about to be replaced by the one at `url`: what that site's rules give
    // the page's requests is set now.
    virtual void tabWillLoadPage(BrowserTab& tab, const Url& url) = 0;
    // `host` is lower-cased; Prompt leaves the question to the user.
    virtual PermissionDecision tabRequestsMediaCapture(std::string_view host,
                                                       MediaCaptureType type) = 0;
    // Location and notifications.
    virtual PermissionDecision tabRequestsSitePermission(std::string_view host,
                                                         SitePermissionKind kind) = 0;
    // The page asked for a window of its own: true when a new tab took the engine's view.
    virtual bool tabRequestsNewWebView(BrowserTab& opener, NewWebViewRequest& request) = 0;
    // The user asked for a link in a tab of its own, behind this one.
    virtual void tabRequestsBackgroundTab(BrowserTab& opener, const Url& url) = 0;
    // The page entered or left full screen.
    virtual void tabDidChangeFullscreen(BrowserTab& tab, bool fullscreen) = 0;
};

} // namespace ovel
