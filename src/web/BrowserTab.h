#pragma once

#include "records/Records.h"
#include "web/BrowserServices.h"
#include "web/Download.h"
#include "web/Notices.h"
#include "web/Published.h"
#include "web/TabHost.h"
#include "web/Url.h"
#include "web/WebView.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovel {

// What changed in a tab, told to views once per operation.
enum class TabField : unsigned {
    Title = 1u << 0,
    Favicon = 1u << 1,
    Url = 1u << 2,
    Loading = 1u << 3,
    Progress = 1u << 4,
    BackForward = 1u << 5,
    Pinned = 1u << 6,
    DisplayAddress = 1u << 7,
    DownloadMessage = 1u << 8,
    // The page's process crashed or stopped answering.
    Crashed = 1u << 9,
    // The last load failed, or the failure it left is gone.
    Failure = 1u << 10,
};

class TabFields {
public:
    TabFields() = default;
    TabFields(TabField field) : bits_(static_cast<unsigned>(field)) {}

    bool has(TabField field) const { return (bits_ & static_cast<unsigned>(field)) != 0; }
    bool empty() const { return bits_ == 0; }
    void add(TabFields fields) { bits_ |= fields.bits_; }
    bool operator==(const TabFields&) const = default;

private:
    unsigned bits_ = 0;
};

// One tab: owns its web view, publishes what the chrome shows of it, and reports what the rest
// of the browser must learn to the host it is bound to, which it holds weakly. Only its owner
// changes what it shows and what it loads.
class BrowserTab final : public WebViewDelegate,
                         public DownloadDelegate,
                         public std::enable_shared_from_this<BrowserTab> {
    // First, so the fields below can announce through them.
    BrowserServices services_;
    std::shared_ptr<NoticeQueue> notices_;
    TabFields pendingChanges_;

public:
    static constexpr std::string_view newTabTitle = "New Tab";
    static constexpr std::string_view untitledTitle = "Untitled";
    static constexpr double defaultPageZoom = 1.1;

    // A tab showing nothing yet; its notices join the operations of whoever shares `notices`.
    // With `adopting`, its view is the new page a site asked for, which the engine loads itself.
    static std::shared_ptr<BrowserTab> create(const BrowserServices& services,
                                              std::shared_ptr<NoticeQueue> notices,
                                              NewWebViewRequest* adopting = nullptr);
    ~BrowserTab() override;

    BrowserTab(const BrowserTab&) = delete;
    BrowserTab& operator=(const BrowserTab&) = delete;

    const Uuid& id() const { return id_; }
    const WebView& webView() const { return *webView_; }
    // The address of the page in the web view, as the engine reports it; none for the start page.
    // After a failed load, the address that failed: the person's place is kept.
    std::optional<std::string> url() const;
    // The same address, parsed (kept byte for byte as reported).
    std::optional<Url> webViewUrl() const;
    // The tab as a session, the closed-tab list or a workspace keeps it: with its back/forward
    // list as captured when its page last finished or moved.
    TabStore storedRecord() const { return TabStore{url(), isPinned.get(), sessionState_}; }

    // Which fields changed, once per operation.
    sigc::signal<void(TabFields)> changed;

    Published<std::string, BrowserTab> title{*notices_, noteOf(TabField::Title),
                                             std::string(newTabTitle)};
    Published<std::optional<FaviconImage>, BrowserTab> favicon{*notices_,
                                                               noteOf(TabField::Favicon)};
    Published<bool, BrowserTab> isPinned{*notices_, noteOf(TabField::Pinned), false};
    Published<bool, BrowserTab> canGoBack{*notices_, noteOf(TabField::BackForward), false};
    Published<bool, BrowserTab> canGoForward{*notices_, noteOf(TabField::BackForward), false};
    Published<double, BrowserTab> loadingProgress{*notices_, noteOf(TabField::Progress), 0.0};
    Published<bool, BrowserTab> isLoading{*notices_, noteOf(TabField::Loading), false};
    Published<std::optional<std::string>, BrowserTab> lastDownloadMessage{
        *notices_, noteOf(TabField::DownloadMessage)};
    // Set while the tab shows an internal page: its ovel:// address.
    Published<std::optional<std::string>, BrowserTab> displayAddress{
        *notices_, noteOf(TabField::DisplayAddress)};
    // The page's process is gone: nothing of the page is left until it is loaded again.
    Published<bool, BrowserTab> hasCrashed{*notices_, noteOf(TabField::Crashed), false};
    // The page's process has stopped answering; it may still come back by itself.
    Published<bool, BrowserTab> isUnresponsive{*notices_, noteOf(TabField::Crashed), false};
    // Why the last load failed, until the next one starts.
    Published<std::optional<LoadFailure>, BrowserTab> loadFailure{*notices_,
                                                                  noteOf(TabField::Failure)};
    // The tab this one was opened from by a link or a page's script, while the strip keeps the
    // tabs opened from one page together; none for a tab the user opened.
    const std::optional<Uuid>& openerID() const { return openerID_; }

    // The id under which the desktop shows the page's notification `id` of this tab.
    std::string desktopNotificationID(std::uint64_t id) const;

private:
    friend class BrowserState;

    BrowserTab(const BrowserServices& services, std::shared_ptr<NoticeQueue> notices,
               NewWebViewRequest* adopting);

    // Once, as the tab joins its owner.
    void bindHost(std::weak_ptr<TabHost> host) { host_ = std::move(host); }
    WebView& mutableWebView() { return *webView_; }
    // Loads the page again; a crashed or hung page comes back in a new process.
    void reload();
    void setOpener(std::optional<Uuid> id) { openerID_ = std::move(id); }
    // Leaves any internal page and loads `url` with the 60-second time-out.
    void load(const Url& url);
    // Loads `url` with the back/forward list `sessionState` held before it, when the engine can
    // read it; else as load() does.
    void load(const Url& url, const std::optional<std::string>& sessionState);
    // Leaves a failed load for the page the web view still shows.
    void dismissFailure();
    // A load failed before its page replaced the one the web view shows.
    bool showsPageBehindFailure() const;
    void loadStartPage(BrowserTheme theme);
    void setPinned(bool pinned) { isPinned.set(pinned); }
    // Shows the internal page at `address` in place of the web view.
    void showInternalPage(std::string_view address, std::string_view pageTitle);
    // Stops the transfer of this tab's download `id`; false when the tab has no such transfer
    // under way. Its end is then reported as cancelled.
    bool cancelDownload(const Uuid& id);

    // WebViewDelegate
    void didStartProvisionalNavigation() override;
    void pageWillLoad(std::string_view url) override;
    void didFinishNavigation() override;
    void didFailNavigation(const std::optional<LoadFailure>& failure) override;
    void faviconDidChange() override;
    void estimatedProgressDidChange() override;
    void urlDidChange() override;
    NavigationActionPolicy decidePolicy(const NavigationAction& action) override;
    NavigationResponsePolicy decidePolicy(const NavigationResponse& response) override;
    void navigationDidBecomeDownload(std::shared_ptr<Download> download) override;
    PermissionDecision decideMediaCapturePermission(std::string_view host,
                                                    MediaCaptureType type) override;
    PermissionDecision decideSitePermission(std::string_view host,
                                            SitePermissionKind kind) override;
    bool createWebViewForNewTab(NewWebViewRequest& request) override;
    void openLinkInNewTab(std::string_view url) override;
    void webProcessDidTerminate() override;
    void webProcessResponsivenessDidChange(bool responsive) override;
    // The page is back, or on its way back: a crash, a hang or a failed load no longer stands.
    void clearPageTrouble();
    void clearFailure();
    void pageDidShowNotification(const PageNotification& notification) override;
    void pageDidCloseNotification(std::uint64_t id) override;
    void pageDidChangeFullscreen(bool fullscreen) override;

    // DownloadDelegate
    std::optional<std::string> decideDestination(Download& download,
                                                 std::string_view suggestedFilename) override;
    void downloadDidFinish(Download& download) override;
    void downloadDidFail(Download& download, std::string_view errorMessage) override;

    std::function<void()> noteOf(TabField field) {
        return [this, field] { noteChanged(field); };
    }
    void noteChanged(TabFields fields);

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
    void reportDownload(const DownloadEvent& event);

    // Keeps the web view's back/forward list for the next save.
    void captureSessionState();
    // Runs `task` on the main queue later, only if this tab still exists then.
    void postToSelf(std::function<void(BrowserTab&)> task);

    Uuid id_;
    std::optional<Uuid> openerID_;
    std::weak_ptr<TabHost> host_;
    std::vector<Transfer> transfers_;
    std::optional<std::string> sessionState_;
    // A typed address tried over https first: where to go when that connection cannot be made.
    std::optional<Url> httpFallback_;
    // Declared last so it goes first: the view never calls back into a half-destroyed tab.
    std::unique_ptr<WebView> webView_;
};

} // namespace ovel
