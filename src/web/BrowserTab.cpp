#include "web/BrowserTab.h"

#include "web/Desktop.h"
#include "web/DownloadNaming.h"
#include "web/MainQueue.h"
#include "web/StartPage.h"
#include "web/UuidSource.h"
#include "web/WebEngine.h"

#include <algorithm>
#include <utility>

namespace ovel {

std::shared_ptr<BrowserTab> BrowserTab::create(const BrowserServices& services,
                                               std::shared_ptr<NoticeQueue> notices,
                                               NewWebViewRequest* adopting) {
    return std::shared_ptr<BrowserTab>(new BrowserTab(services, std::move(notices), adopting));
}

BrowserTab::BrowserTab(const BrowserServices& services, std::shared_ptr<NoticeQueue> notices,
                       NewWebViewRequest* adopting)
    : services_(services), notices_(std::move(notices)), id_(services.uuids.makeUuid()),
      webView_(adopting != nullptr ? adopting->createWebView(*this)
                                   : services.engine.createWebView(*this)) {}

BrowserTab::~BrowserTab() {
    notices_->cancel(this);
}

void BrowserTab::noteChanged(TabFields fields) {
    const bool queued = !pendingChanges_.empty();
    pendingChanges_.add(fields);
    // Outside an operation this announces at once, so the fields are noted first.
    if (!queued) {
        notices_->enqueue(this, [this] { changed.emit(std::exchange(pendingChanges_, {})); });
    }
}

std::optional<std::string> BrowserTab::url() const {
    if (const auto& failure = loadFailure.get()) {
        return failure->url;
    }
    return webView_->url();
}

std::optional<Url> BrowserTab::webViewUrl() const {
    const auto address = url();
    return address ? Url::fromEngine(*address) : std::nullopt;
}

void BrowserTab::load(const Url& url) {
    load(url, std::nullopt);
}

void BrowserTab::load(const Url& url, const std::optional<std::string>& sessionState) {
    displayAddress.set(std::nullopt);
    clearPageTrouble();
    httpFallback_.reset();
    const LoadRequest request{url.absoluteString()};
    if (sessionState && webView_->restoreSessionState(*sessionState, request)) {
        sessionState_ = sessionState;
        return;
    }
    webView_->load(request);
}

void BrowserTab::loadStartPage(BrowserTheme theme) {
    displayAddress.set(std::nullopt);
    clearPageTrouble();
    httpFallback_.reset();
    webView_->loadHTMLString(startPageHTML(theme));
}

void BrowserTab::dismissFailure() {
    clearFailure();
    title.set(webView_->title().value_or(std::string(untitledTitle)));
}

bool BrowserTab::showsPageBehindFailure() const {
    const auto& failure = loadFailure.get();
    const auto shown = webView_->url();
    return failure && shown && *shown != failure->url;
}

void BrowserTab::captureSessionState() {
    sessionState_ = webView_->sessionState();
}

void BrowserTab::reload() {
    clearPageTrouble();
    webView_->reload();
}

void BrowserTab::clearPageTrouble() {
    hasCrashed.set(false);
    isUnresponsive.set(false);
    clearFailure();
}

void BrowserTab::clearFailure() {
    if (loadFailure.get()) {
        loadFailure.set(std::nullopt);
        noteChanged(TabField::Url);
        canGoBack.set(webView_->canGoBack());
        canGoForward.set(webView_->canGoForward());
    }
}

void BrowserTab::showInternalPage(std::string_view address, std::string_view pageTitle) {
    clearFailure();
    displayAddress.set(std::string(address));
    title.set(std::string(pageTitle));
}

// Each engine event is one operation: what it changes, here and through the host, is announced
// together when it ends.

void BrowserTab::didStartProvisionalNavigation() {
    NoticeQueue::Group group(*notices_);
    // A new page is on its way, in a new process if the last one died.
    hasCrashed.set(false);
    clearFailure();
    isLoading.set(true);
}

void BrowserTab::pageWillLoad(std::string_view url) {
    NoticeQueue::Group group(*notices_);
    const auto host = host_.lock();
    if (const std::optional<Url> page = Url::fromEngine(url); page && host) {
        host->tabWillLoadPage(*this, *page);
    }
}

void BrowserTab::urlDidChange() {
    NoticeQueue::Group group(*notices_);
    noteChanged(TabField::Url);
    // Outside a load the page moved within itself (a fragment, history.pushState), or a stopped
    // load left the page as it was: the new address is the page's, and is kept.
    if (isLoading.get() || loadFailure.get()) {
        return;
    }
    captureSessionState();
    if (const auto host = host_.lock()) {
        host->tabDidNavigateInPage(*this);
    }
}

void BrowserTab::didFinishNavigation() {
    NoticeQueue::Group group(*notices_);
    title.set(webView_->title().value_or(std::string(untitledTitle)));
    canGoBack.set(webView_->canGoBack());
    canGoForward.set(webView_->canGoForward());
    isLoading.set(false);
    captureSessionState();
    if (const auto host = host_.lock()) {
        host->tabDidFinishPage(*this);
    }
}

void BrowserTab::didFailNavigation(const std::optional<LoadFailure>& failure) {
    NoticeQueue::Group group(*notices_);
    isLoading.set(false);
    if (!failure) {
        return;
    }
    // The tab goes on naming the address that failed; the page behind it, if any, is one Back
    // away.
    loadFailure.set(failure);
    noteChanged(TabField::Url);
    const std::optional<Url> failed = Url::fromEngine(failure->url);
    const std::optional<std::string> failedHost = failed ? failed->host() : std::nullopt;
    title.set(failedHost && !failedHost->empty() ? *failedHost : failure->url);
    canGoBack.set(webView_->canGoBack() || showsPageBehindFailure());
    canGoForward.set(webView_->canGoForward());
    captureSessionState();
    if (const auto host = host_.lock()) {
        host->tabDidFailLoad(*this);
    }
}

void BrowserTab::faviconDidChange() {
    NoticeQueue::Group group(*notices_);
    favicon.set(webView_->favicon());
}

void BrowserTab::estimatedProgressDidChange() {
    // Read the engine's estimate when the task runs, not when it was posted.
    postToSelf([](BrowserTab& tab) { tab.loadingProgress.set(tab.webView_->estimatedProgress()); });
}

NavigationActionPolicy BrowserTab::decidePolicy(const NavigationAction& action) {
    NoticeQueue::Group group(*notices_);
    const std::optional<Url> url = action.url ? Url::fromEngine(*action.url) : std::nullopt;
    // A middle click or a Ctrl+click on a link leaves this page where it is and opens the link
    // behind it. Internal addresses open in place, as they do from the address field.
    const bool wantsBackgroundTab =
        action.isLinkClick && (action.mouseButton == 2 || action.controlKey);
    const bool internal = url && (url->scheme() == "chrome" || url->scheme() == "ovel");
    const auto host = host_.lock();
    if (wantsBackgroundTab && url && !internal && host) {
        host->tabRequestsBackgroundTab(*this, *url);
        return NavigationActionPolicy::Cancel;
    }
    if (url && host) {
        host->tabWillNavigate(*this, *url);
    }
    if (internal && host && host->tabRequestsInternalPage(url->absoluteString())) {
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
    // A transfer that ended without a word (abandoned for want of a folder) is gone by now.
    std::erase_if(transfers_, [](const Transfer& transfer) { return transfer.download.expired(); });
    transfers_.push_back(Transfer{download.get(), download, std::nullopt, {}, std::nullopt, false});
    download->setDelegate(weak_from_this());
    postToSelf([](BrowserTab& tab) {
        tab.lastDownloadMessage.set("Starting download...");
        // What was typed became a file, and the page stays: so does its address.
        if (const auto host = tab.host_.lock()) {
            host->tabLoadBecameDownload(tab);
        }
    });
}

PermissionDecision BrowserTab::decideMediaCapturePermission(std::string_view host,
                                                            MediaCaptureType type) {
    NoticeQueue::Group group(*notices_);
    const auto tabHost = host_.lock();
    return tabHost ? tabHost->tabRequestsMediaCapture(toLowerAscii(host), type)
                   : PermissionDecision::Prompt;
}

PermissionDecision BrowserTab::decideSitePermission(std::string_view host,
                                                    SitePermissionKind kind) {
    NoticeQueue::Group group(*notices_);
    const auto tabHost = host_.lock();
    return tabHost ? tabHost->tabRequestsSitePermission(toLowerAscii(host), kind)
                   : PermissionDecision::Prompt;
}

bool BrowserTab::createWebViewForNewTab(NewWebViewRequest& request) {
    NoticeQueue::Group group(*notices_);
    const auto host = host_.lock();
    return host ? host->tabRequestsNewWebView(*this, request) : false;
}

void BrowserTab::openLinkInNewTab(std::string_view url) {
    NoticeQueue::Group group(*notices_);
    const std::optional<Url> link = Url::fromEngine(url);
    if (const auto host = host_.lock(); link && host) {
        host->tabRequestsBackgroundTab(*this, *link);
    }
}

void BrowserTab::webProcessDidTerminate() {
    NoticeQueue::Group group(*notices_);
    isUnresponsive.set(false);
    hasCrashed.set(true);
    isLoading.set(false);
}

void BrowserTab::webProcessResponsivenessDidChange(bool responsive) {
    NoticeQueue::Group group(*notices_);
    isUnresponsive.set(!responsive && !hasCrashed.get());
}

std::string BrowserTab::desktopNotificationID(std::uint64_t id) const {
    return "page-" + id_ + "-" + std::to_string(id);
}

// A page's notifications go straight to the desktop, labelled with this tab so that activating
// one brings the tab forward.
void BrowserTab::pageDidShowNotification(const PageNotification& notification) {
    services_.desktop.showNotification(DesktopNotification{
        desktopNotificationID(notification.id), notification.title, notification.body, id_});
}

void BrowserTab::pageDidCloseNotification(std::uint64_t id) {
    services_.desktop.withdrawNotification(desktopNotificationID(id));
}

void BrowserTab::pageDidChangeFullscreen(bool fullscreen) {
    NoticeQueue::Group group(*notices_);
    if (const auto host = host_.lock()) {
        host->tabDidChangeFullscreen(*this, fullscreen);
    }
}

std::optional<std::string> BrowserTab::decideDestination(Download& download,
                                                         std::string_view suggestedFilename) {
    const std::optional<std::string> folder = services_.desktop.downloadsFolder();
    if (!folder) {
        return std::nullopt;
    }
    Desktop& desktop = services_.desktop;
    std::string destination =
        uniqueDownloadURL(*folder, suggestedFilename,
                          [&desktop](std::string_view path) { return desktop.fileExists(path); });
    const std::string fileName = destination.substr(destination.rfind('/') + 1);
    Transfer* transfer = transferFor(download);
    if (transfer == nullptr) {
        transfers_.push_back(Transfer{&download, {}, std::nullopt, {}, std::nullopt, false});
        transfer = &transfers_.back();
    }
    // The page the tab shows as the download starts, not the address of the file.
    transfer->id = services_.uuids.makeUuid();
    transfer->fileName = fileName;
    transfer->sourceURL = webView_->url();
    postToSelf([event = DownloadEvent{*transfer->id, fileName, transfer->sourceURL, destination,
                                      DownloadStatus::Started, 0.08}](BrowserTab& tab) {
        tab.lastDownloadMessage.set("Downloading " + event.fileName);
        tab.reportDownload(event);
    });
    return destination;
}

void BrowserTab::downloadDidFinish(Download& download) {
    endTransfer(download, DownloadStatus::Finished, "Download finished");
}

void BrowserTab::downloadDidFail(Download& download, std::string_view errorMessage) {
    const Transfer* transfer = transferFor(download);
    if (transfer != nullptr && transfer->cancelled) {
        // The engine reports a cancel as a failure; the user asked for it.
        endTransfer(download, DownloadStatus::Cancelled, "Download cancelled");
        return;
    }
    endTransfer(download, DownloadStatus::Failed, "Download failed: " + std::string(errorMessage));
}

bool BrowserTab::cancelDownload(const Uuid& id) {
    for (Transfer& transfer : transfers_) {
        if (transfer.id == id && !transfer.cancelled) {
            if (auto download = transfer.download.lock()) {
                transfer.cancelled = true;
                download->cancel();
                return true;
            }
        }
    }
    return false;
}

BrowserTab::Transfer* BrowserTab::transferFor(const Download& download) {
    auto it = std::find_if(transfers_.begin(), transfers_.end(),
                           [&](const Transfer& transfer) { return transfer.key == &download; });
    return it == transfers_.end() ? nullptr : &*it;
}

void BrowserTab::endTransfer(Download& download, DownloadStatus status, std::string message) {
    auto it = std::find_if(transfers_.begin(), transfers_.end(),
                           [&](const Transfer& transfer) { return transfer.key == &download; });
    if (it == transfers_.end() || !it->id) {
        return;
    }
    const double progress = status == DownloadStatus::Finished ? 1.0 : 0.0;
    DownloadEvent event{*it->id, it->fileName, it->sourceURL, std::nullopt, status, progress};
    transfers_.erase(it);
    postToSelf([event = std::move(event), message = std::move(message)](BrowserTab& tab) {
        tab.lastDownloadMessage.set(message);
        tab.reportDownload(event);
    });
}

void BrowserTab::reportDownload(const DownloadEvent& event) {
    if (const auto host = host_.lock()) {
        host->tabDidReportDownload(event);
    }
}

void BrowserTab::postToSelf(std::function<void(BrowserTab&)> task) {
    services_.mainQueue.post([weakTab = weak_from_this(), task = std::move(task)] {
        if (auto tab = weakTab.lock()) {
            NoticeQueue::Group group(*tab->notices_);
            task(*tab);
        }
    });
}

} // namespace ovel
