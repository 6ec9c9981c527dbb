#pragma once

// The core's platform and engine interfaces, faked: small, honest, and driven by the test.

#include "records/MemorySettingsStore.h"
#include "web/Clock.h"
#include "web/Desktop.h"
#include "web/Download.h"
#include "web/MainQueue.h"
#include "web/UuidSource.h"
#include "web/WebEngine.h"
#include "web/WebView.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ovel::test {

// A clock that stands still until the test moves it.
class FakeClock : public Clock {
public:
    Date now() const override { return current; }
    void advance(double seconds) { current.secondsSince2001 += seconds; }

    Date current{800'000'000.0};
};

// Predictable UUIDs: 00000000-0000-4000-8000-000000000001, …02, …
class SequentialUuidSource : public UuidSource {
public:
    Uuid makeUuid() override;

    unsigned long long count = 0;
};

// Keeps posted tasks until the test drains them, so tests decide when "later" is.
class ManualMainQueue : public MainQueue {
public:
    void post(std::function<void()> task) override { tasks_.push_back(std::move(task)); }
    // Runs tasks, including those posted while draining, until none is left; returns how many.
    int drain();

private:
    std::deque<std::function<void()>> tasks_;
};

// The real file system's files, a Downloads folder the test chooses, and notifications and
// reveals written down instead of shown.
class FakeDesktop : public Desktop {
public:
    std::optional<std::string> downloadsFolder() override { return downloads; }
    bool fileExists(std::string_view path) const override;
    void revealFile(std::string_view path) override { revealed.emplace_back(path); }
    void showNotification(const DesktopNotification& notification) override {
        shownNotifications.push_back(notification);
    }
    void withdrawNotification(std::string_view id) override {
        withdrawnNotifications.emplace_back(id);
    }

    std::optional<std::string> downloads = std::string("/home/user/Downloads");
    std::vector<std::string> revealed;
    std::vector<DesktopNotification> shownNotifications;
    std::vector<std::string> withdrawnNotifications;
};

// A memory store that logs every write, in order, as "set KEY" or "remove KEY", and every
// blob read as "read KEY".
class RecordingSettingsStore : public MemorySettingsStore {
public:
    std::optional<std::string> data(std::string_view key) const override;
    void setString(std::string_view key, std::string_view value) override;
    void setBoolean(std::string_view key, bool value) override;
    void setData(std::string_view key, std::string_view bytes) override;
    void remove(std::string_view key) override;

    // Entries that start with `prefix` ("set ", "read ovel.session"), in order.
    std::vector<std::string> entries(std::string_view prefix) const;

    mutable std::vector<std::string> log;
};

// A transfer of the engine that the test ends, with the reports the engine would send.
class FakeDownload : public Download {
public:
    void setDelegate(std::weak_ptr<DownloadDelegate> delegate) override {
        delegate_ = std::move(delegate);
    }
    // Only counted: the engine reports the end of a cancelled transfer as a failure, later.
    void cancel() override { ++cancelCount; }

    // The response arrived: where to save it, as the delegate answers.
    std::optional<std::string> respond(std::string_view suggestedFilename);
    void finish();
    void fail(std::string_view message);

    int cancelCount = 0;

private:
    std::weak_ptr<DownloadDelegate> delegate_;
};

// A web view that records what it is asked to do and replays engine events in the order the
// real engine sends them.
class FakeWebView : public WebView {
public:
    explicit FakeWebView(WebViewDelegate& delegate) : delegate_(delegate) {}

    void load(const LoadRequest& request) override;
    void loadHTMLString(std::string_view html) override;
    void goBack() override { ++goBackCount; }
    void goForward() override { ++goForwardCount; }
    void reload() override { ++reloadCount; }
    void stopLoading() override {}

    std::optional<std::string> url() const override { return currentUrl; }
    std::optional<std::string> title() const override { return currentTitle; }
    bool canGoBack() const override { return backAvailable; }
    bool canGoForward() const override { return forwardAvailable; }
    double estimatedProgress() const override { return progress; }
    std::optional<FaviconImage> favicon() const override { return icon; }
    std::optional<std::string> sessionState() const override { return engineState; }
    // A state reading "unreadable" is one the engine cannot read.
    bool restoreSessionState(std::string_view state, const LoadRequest& request) override;
    double pageZoom() const override { return zoom; }
    void setPageZoom(double value) override { zoom = value; }
    void find(std::string_view text) override { findRequests.emplace_back(text); }

    void removeAllContentRuleLists() override { attachedRuleLists.clear(); }
    void addContentRuleList(const ContentRuleList& list) override {
        attachedRuleLists.push_back(list.identifier());
    }
    void removeAllUserScripts() override { userScripts.clear(); }
    void addUserScript(const UserScript& script) override { userScripts.push_back(script.source); }
    void print() override { ++printCount; }

    // A whole successful navigation to `url`: policy, provisional start, commit, finish.
    void simulateNavigation(const std::string& url, std::optional<std::string> pageTitle);
    // A load that starts and fails: with `failure` shown, or ended without a word.
    void simulateFailure(std::optional<LoadFailure> failure = std::nullopt);
    // The page moves within itself: a fragment, history.pushState.
    void simulateInPageNavigation(const std::string& url);
    void simulateFavicon(std::optional<FaviconImage> image);
    void simulateProgress(double value);
    // The page's navigation became a download, whose response asks at once where to save it.
    // The engine keeps a transfer alive while it runs: here, whoever holds the result.
    std::shared_ptr<FakeDownload> simulateDownload(std::string_view suggestedFilename);

    WebViewDelegate& delegate() { return delegate_; }

    std::vector<LoadRequest> loadRequests;
    std::vector<std::string> htmlLoads;
    std::vector<std::string> restoredStates;
    std::vector<std::string> findRequests;
    std::vector<std::string> attachedRuleLists;
    std::vector<std::string> userScripts;
    int goBackCount = 0;
    int goForwardCount = 0;
    int reloadCount = 0;
    int printCount = 0;

    std::optional<std::string> currentUrl;
    bool committed = false;
    std::optional<std::string> currentTitle;
    bool backAvailable = false;
    bool forwardAvailable = false;
    double progress = 0;
    double zoom = 1.1;
    std::optional<FaviconImage> icon;
    std::optional<std::string> engineState;

private:
    WebViewDelegate& delegate_;
};

// Makes fake web views and keeps a compile request pending until the test completes it.
class FakeWebEngine : public WebEngine {
public:
    std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) override;
    bool compileContentRuleList(std::string_view identifier, std::string_view json,
                                CompletionHandler completion) override;
    // The store answers at once, from `storedLists`.
    bool loadContentRuleList(std::string_view identifier, CompletionHandler completion) override;
    bool fetchContentRuleListIdentifiers(IdentifiersHandler completion) override;
    void removeContentRuleList(std::string_view identifier) override;
    void setNotificationPermissions(const NotificationPermissions& permissions) override {
        notificationPermissions = permissions;
    }

    // Answers the oldest pending compilation, with a list (kept in the store) or (failed) with
    // none.
    void finishCompilation(bool succeeded);

    // Every view made so far, in creation order; a destroyed view's entry is null. A deque, so
    // the slots the views clear on destruction never move.
    std::deque<FakeWebView*> views;
    int liveViewCount() const;

    // The compilation asked for last.
    std::string compiledIdentifier;
    struct Compilation {
        std::string identifier;
        CompletionHandler completion;
    };
    std::deque<Compilation> pendingCompilations;
    std::set<std::string> storedLists;
    NotificationPermissions notificationPermissions;
};

} // namespace ovel::test
