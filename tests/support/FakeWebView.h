#pragma once

#include "support/FakeDownload.h"
#include "web/WebEngine.h"
#include "web/WebView.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ovel::test {

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
    void stopLoading() override { ++stopCount; }

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
    int stopCount = 0;
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

} // namespace ovel::test
