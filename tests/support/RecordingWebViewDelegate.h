#pragma once

#include "web/Download.h"
#include "web/WebView.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovel::test {

// A web view delegate that logs the navigation calls in order ("start", "finish", "fail") and
// answers permission questions as the test sets them (pages load, what cannot be shown is
// downloaded).
class RecordingWebViewDelegate : public WebViewDelegate {
public:
    // When set, a finish is logged with the title and URL the view reports at that moment:
    // "finish 'Title' http://…" (none shows as -).
    WebView* view = nullptr;

    std::vector<std::string> events;
    std::vector<std::optional<LoadFailure>> failures;
    std::vector<std::pair<std::string, MediaCaptureType>> mediaRequests;
    std::vector<std::pair<std::string, SitePermissionKind>> siteRequests;
    // Pages asked for as new windows, and links asked for in new tabs, by address.
    std::vector<std::string> newWindowRequests;
    std::vector<std::string> newTabLinks;
    // When set, a new window's request is answered with a view made for this delegate.
    WebViewDelegate* newWindowDelegate = nullptr;
    std::unique_ptr<WebView> newWindowView;

    PermissionDecision mediaDecision = PermissionDecision::Prompt;
    PermissionDecision siteDecision = PermissionDecision::Prompt;

    bool isLoading() const;
    std::size_t count(const std::string& eventPrefix) const;

    void didStartProvisionalNavigation() override { events.push_back("start"); }
    void pageWillLoad(std::string_view) override {}
    void didFinishNavigation() override;
    void didFailNavigation(const std::optional<LoadFailure>& failure) override {
        events.push_back("fail");
        failures.push_back(failure);
    }
    void faviconDidChange() override {}
    void estimatedProgressDidChange() override {}
    void urlDidChange() override {}
    NavigationActionPolicy decidePolicy(const NavigationAction& action) override {
        // Like a tab: a middle click or a Ctrl+click on a link goes to a tab behind.
        if (action.isLinkClick && (action.mouseButton == 2 || action.controlKey)) {
            newTabLinks.push_back(action.url.value_or(""));
            return NavigationActionPolicy::Cancel;
        }
        return NavigationActionPolicy::Allow;
    }
    NavigationResponsePolicy decidePolicy(const NavigationResponse& response) override {
        return response.canShowMimeType ? NavigationResponsePolicy::Allow
                                        : NavigationResponsePolicy::Download;
    }
    void navigationDidBecomeDownload(std::shared_ptr<Download>) override {}
    PermissionDecision decideMediaCapturePermission(std::string_view host,
                                                    MediaCaptureType type) override {
        mediaRequests.emplace_back(host, type);
        return mediaDecision;
    }
    PermissionDecision decideSitePermission(std::string_view host,
                                            SitePermissionKind kind) override {
        siteRequests.emplace_back(host, kind);
        return siteDecision;
    }
    bool createWebViewForNewTab(NewWebViewRequest& request) override;
    void openLinkInNewTab(std::string_view url) override { newTabLinks.emplace_back(url); }
    void webProcessDidTerminate() override { events.push_back("terminated"); }
    void webProcessResponsivenessDidChange(bool responsive) override {
        events.push_back(responsive ? "responsive" : "unresponsive");
    }
    void pageDidShowNotification(const PageNotification&) override {}
    void pageDidCloseNotification(std::uint64_t) override {}
    void pageDidChangeFullscreen(bool) override {}
};

} // namespace ovel::test
