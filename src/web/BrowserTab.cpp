#include "web/BrowserTab.h"

#include "web/Desktop.h"
#include "web/MainQueue.h"
#include "web/UuidSource.h"
#include "web/DownloadNaming.h"
#include "web/StartPage.h"
#include "web/WebEngine.h"

namespace ovel {

std::shared_ptr<BrowserTab> BrowserTab::create(const BrowserServices& services, bool startPage) {
    std::shared_ptr<BrowserTab> tab(new BrowserTab(services));
    if (startPage) {
        tab->loadStartPage(BrowserTheme::Midnight);
    }
    return tab;
}

BrowserTab::BrowserTab(const BrowserServices& services)
    : activeDownloadID(services.uuids.makeUuid()), services_(services),
      id_(services.uuids.makeUuid()), webView_(services.engine.createWebView(*this)) {}

BrowserTab::~BrowserTab() = default;

std::optional<Url> BrowserTab::webViewUrl() const {
    const auto url = webView_->url();
    return url ? Url::fromEngine(*url) : std::nullopt;
}

void BrowserTab::load(const Url& url) {
    displayAddress.set(std::nullopt);
    webView_->load(LoadRequest{url.absoluteString()});
}

void BrowserTab::loadStartPage(BrowserTheme theme) {
    displayAddress.set(std::nullopt);
    webView_->loadHTMLString(startPageHTML(theme));
}

void BrowserTab::didStartProvisionalNavigation() {
    isLoading.set(true);
}

void BrowserTab::didFinishNavigation() {
    title.set(webView_->title().value_or(std::string(untitledTitle)));
    canGoBack.set(webView_->canGoBack());
    canGoForward.set(webView_->canGoForward());
    isLoading.set(false);
    if (onPageUpdate) {
        onPageUpdate(*webView_);
    }
    fetchFavicon();
}

void BrowserTab::didFailNavigation() {
    isLoading.set(false);
}

void BrowserTab::estimatedProgressDidChange() {
    // Read the engine's estimate when the task runs, not when it was posted.
    postToSelf([](BrowserTab& tab) { tab.loadingProgress.set(tab.webView_->estimatedProgress()); });
}

NavigationActionPolicy BrowserTab::decidePolicy(const NavigationAction& action) {
    const std::optional<Url> url = action.url ? Url::fromEngine(*action.url) : std::nullopt;
    if (url && onNavigationRequest) {
        onNavigationRequest(*url);
    }
    if (url && (url->scheme() == "chrome" || url->scheme() == "ovel") && onInternalURLRequest &&
        onInternalURLRequest(url->absoluteString())) {
        return NavigationActionPolicy::Cancel;
    }
    return action.shouldPerformDownload ? NavigationActionPolicy::Download
                                        : NavigationActionPolicy::Allow;
}

NavigationResponsePolicy BrowserTab::decidePolicy(const NavigationResponse& response) {
    return response.canShowMimeType ? NavigationResponsePolicy::Allow
                                    : NavigationResponsePolicy::Download;
}

void BrowserTab::navigationDidBecomeDownload(std::shared_ptr<Download> download) {
    download->setDelegate(weak_from_this());
    postToSelf([](BrowserTab& tab) { tab.lastDownloadMessage.set("Starting download..."); });
}

PermissionDecision BrowserTab::decideMediaCapturePermission(std::string_view host,
                                                            MediaCaptureType type) {
    if (!onMediaPermissionRequest) {
        return PermissionDecision::Prompt;
    }
    return onMediaPermissionRequest(toLowerAscii(host), type);
}

PermissionDecision BrowserTab::decideSitePermission(std::string_view host,
                                                    SitePermissionKind kind) {
    if (!onSitePermissionRequest) {
        return PermissionDecision::Prompt;
    }
    return onSitePermissionRequest(toLowerAscii(host), kind);
}

std::optional<std::string> BrowserTab::decideDestination(std::string_view suggestedFilename) {
    const std::optional<std::string> folder = services_.desktop.downloadsFolder();
    if (!folder) {
        return std::nullopt;
    }
    Desktop& desktop = services_.desktop;
    std::string destination =
        uniqueDownloadURL(*folder, suggestedFilename,
                          [&desktop](std::string_view path) { return desktop.fileExists(path); });
    const std::string fileName = destination.substr(destination.rfind('/') + 1);
    postToSelf([destination, fileName](BrowserTab& tab) {
        tab.activeDownloadID = tab.services_.uuids.makeUuid();
        tab.activeDownloadName = fileName;
        tab.activeDownloadSourceURL = tab.webView_->url();
        tab.lastDownloadMessage.set("Downloading " + fileName);
        if (tab.onDownloadEvent) {
            tab.onDownloadEvent(DownloadEvent{tab.activeDownloadID, fileName,
                                              tab.activeDownloadSourceURL, destination,
                                              DownloadStatus::Started, 0.08});
        }
    });
    return destination;
}

void BrowserTab::downloadDidFinish() {
    postToSelf([](BrowserTab& tab) {
        tab.lastDownloadMessage.set("Download finished");
        if (tab.onDownloadEvent) {
            tab.onDownloadEvent(DownloadEvent{tab.activeDownloadID, tab.activeDownloadName,
                                              tab.activeDownloadSourceURL, std::nullopt,
                                              DownloadStatus::Finished, 1.0});
        }
    });
}

void BrowserTab::downloadDidFail(std::string_view errorMessage) {
    postToSelf([message = std::string(errorMessage)](BrowserTab& tab) {
        tab.lastDownloadMessage.set("Download failed: " + message);
        if (tab.onDownloadEvent) {
            tab.onDownloadEvent(DownloadEvent{tab.activeDownloadID, tab.activeDownloadName,
                                              tab.activeDownloadSourceURL, std::nullopt,
                                              DownloadStatus::Failed, 0.0});
        }
    });
}

void BrowserTab::fetchFavicon() {
    const std::optional<Url> pageUrl = webViewUrl();
    const std::optional<std::string> host = pageUrl ? pageUrl->host() : std::nullopt;
    if (!host) {
        return;
    }
    // Always https on the default port, whatever the page used.
    const std::optional<Url> iconUrl = Url::parse("https://" + *host + "/favicon.ico");
    if (!iconUrl) {
        return;
    }
    std::weak_ptr<BrowserTab> weakTab = weak_from_this();
    MainQueue& mainQueue = services_.mainQueue;
    services_.favicons.fetch(iconUrl->absoluteString(),
                             [weakTab, &mainQueue](std::optional<FaviconImage> image) {
                                 if (!image) {
                                     return; // the previous icon stays
                                 }
                                 mainQueue.post([weakTab, image = std::move(*image)]() mutable {
                                     if (auto tab = weakTab.lock()) {
                                         tab->favicon.set(std::move(image));
                                     }
                                 });
                             });
}

void BrowserTab::postToSelf(std::function<void(BrowserTab&)> task) {
    services_.mainQueue.post([weakTab = weak_from_this(), task = std::move(task)] {
        if (auto tab = weakTab.lock()) {
            task(*tab);
        }
    });
}

} // namespace ovel
