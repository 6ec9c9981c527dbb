#pragma once

#include "web/Published.h"
#include "records/Records.h"
#include "web/BrowserServices.h"
#include "web/Download.h"
#include "web/FaviconFetcher.h"
#include "web/Url.h"
#include "web/WebView.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovel {

// One tab: owns its web view, publishes what the chrome shows of it, and reports what the rest
// of the browser must learn through callbacks that its owner installs. It holds no reference to
// the browser state.
class BrowserTab final : public WebViewDelegate,
                         public DownloadDelegate,
                         public std::enable_shared_from_this<BrowserTab> {
public:
    static constexpr std::string_view newTabTitle = "New Tab";
    static constexpr std::string_view untitledTitle = "Untitled";
    static constexpr double defaultPageZoom = 1.1;

    // With `startPage` the tab at once shows the start page of the first theme.
    static std::shared_ptr<BrowserTab> create(const BrowserServices& services, bool startPage);
    ~BrowserTab() override;

    BrowserTab(const BrowserTab&) = delete;
    BrowserTab& operator=(const BrowserTab&) = delete;

    const Uuid& id() const { return id_; }
    WebView& webView() { return *webView_; }
    const WebView& webView() const { return *webView_; }
    // The web view's URL as the engine reports it; none for the start page.
    std::optional<Url> webViewUrl() const;

    // Fires after any published field below changes.
    sigc::signal<void()> changed;

    Published<std::string> title{changed, std::string(newTabTitle)};
    Published<std::optional<FaviconImage>> favicon{changed};
    Published<bool> isPinned{changed, false};
    Published<bool> canGoBack{changed, false};
    Published<bool> canGoForward{changed, false};
    Published<double> loadingProgress{changed, 0.0};
    Published<bool> isLoading{changed, false};
    Published<std::optional<std::string>> lastDownloadMessage{changed};
    // Set while the tab shows an internal page: its ovel:// address.
    Published<std::optional<std::string>> displayAddress{changed};

    // Installed once by the browser state; each holds the state (and the tab) weakly.
    std::function<void(WebView&)> onPageUpdate;
    std::function<void(const DownloadEvent&)> onDownloadEvent;
    std::function<bool(const std::string&)> onInternalURLRequest;
    std::function<void(const Url&)> onNavigationRequest;
    std::function<PermissionDecision(std::string_view host, MediaCaptureType)>
        onMediaPermissionRequest;
    // Location and notification requests from the engine.
    std::function<PermissionDecision(std::string_view host, SitePermissionKind)>
        onSitePermissionRequest;

    // Leaves any internal page and loads `url` with the 60-second time-out.
    void load(const Url& url);
    void loadStartPage(BrowserTheme theme);
    // Stops the transfer of this tab's download `id`; false when the tab has no such transfer
    // under way. Its end is then reported as cancelled.
    bool cancelDownload(const Uuid& id);

    // WebViewDelegate
    void didStartProvisionalNavigation() override;
    void didFinishNavigation() override;
    void didFailNavigation() override;
    void estimatedProgressDidChange() override;
    NavigationActionPolicy decidePolicy(const NavigationAction& action) override;
    NavigationResponsePolicy decidePolicy(const NavigationResponse& response) override;
    void navigationDidBecomeDownload(std::shared_ptr<Download> download) override;
    PermissionDecision decideMediaCapturePermission(std::string_view host,
                                                    MediaCaptureType type) override;
    PermissionDecision decideSitePermission(std::string_view host,
                                            SitePermissionKind kind) override;

    // DownloadDelegate
    std::optional<std::string> decideDestination(Download& download,
                                                 std::string_view suggestedFilename) override;
    void downloadDidFinish(Download& download) override;
    void downloadDidFail(Download& download, std::string_view errorMessage) override;

private:
    explicit BrowserTab(const BrowserServices& services);

    // One transfer this tab started, from the engine's hand-over to its end: each keeps its own
    // identity, name and source, however many run at once.
    struct Transfer {
        const Download* key = nullptr;
        std::weak_ptr<Download> download;
        std::optional<Uuid> id; // none until its destination is chosen
        std::string fileName;
        std::optional<std::string> sourceURL;
        bool cancelled = false;
    };
    Transfer* transferFor(const Download& download);
    // Reports the end of `download` under its own identity and forgets it.
    void endTransfer(Download& download, DownloadStatus status, std::string message);

    void fetchFavicon();
    // Runs `task` on the main queue later, only if this tab still exists then.
    void postToSelf(std::function<void(BrowserTab&)> task);

    BrowserServices services_;
    Uuid id_;
    std::vector<Transfer> transfers_;
    // Declared last so it goes first: the view never calls back into a half-destroyed tab.
    std::unique_ptr<WebView> webView_;
};

} // namespace ovel
