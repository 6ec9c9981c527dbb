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
// answers policy and permission questions as the test sets them.
class RecordingWebViewDelegate : public WebViewDelegate {
public:
    // When set, a finish is logged with the title and URL the view reports at that moment:
    // "finish 'Title' http://…" (none shows as -).
    WebView* view = nullptr;

    std::vector<std::string> events;
    int progressChanges = 0;
    int urlChanges = 0;
    std::vector<NavigationAction> actions;
    std::vector<NavigationResponse> responses;
    std::vector<std::shared_ptr<Download>> downloads;
    std::vector<std::pair<std::string, MediaCaptureType>> mediaRequests;
    std::vector<std::pair<std::string, SitePermissionKind>> siteRequests;

    NavigationActionPolicy actionPolicy = NavigationActionPolicy::Allow;
    // None: download exactly what the engine cannot show.
    std::optional<NavigationResponsePolicy> responsePolicy;
    PermissionDecision mediaDecision = PermissionDecision::Prompt;
    PermissionDecision siteDecision = PermissionDecision::Prompt;
    // Given to each download at once, as a tab does.
    std::shared_ptr<DownloadDelegate> downloadDelegate;

    bool isLoading() const;
    std::size_t count(const std::string& eventPrefix) const;

    void didStartProvisionalNavigation() override { events.push_back("start"); }
    void didFinishNavigation() override;
    void didFailNavigation() override { events.push_back("fail"); }
    void estimatedProgressDidChange() override { ++progressChanges; }
    void urlDidChange() override { ++urlChanges; }
    NavigationActionPolicy decidePolicy(const NavigationAction& action) override {
        actions.push_back(action);
        return actionPolicy;
    }
    NavigationResponsePolicy decidePolicy(const NavigationResponse& response) override;
    void navigationDidBecomeDownload(std::shared_ptr<Download> download) override {
        if (downloadDelegate) {
            download->setDelegate(downloadDelegate);
        }
        downloads.push_back(std::move(download));
    }
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
};

} // namespace ovel::test
