#include "support/FakeWebView.h"

namespace ovel::test {

void FakeWebView::load(const LoadRequest& request) {
    loadRequests.push_back(request);
    // As the engine's view does: until a page commits it reports the address asked for.
    if (!committed) {
        currentUrl = request.url;
    }
}

void FakeWebView::loadHTMLString(std::string_view html) {
    htmlLoads.emplace_back(html);
    committed = true;
    // Generated HTML has no URL; the engine reports it as finished like any page.
    if (currentUrl) {
        currentUrl.reset();
        delegate_.urlDidChange();
    }
}

void FakeWebView::simulateNavigation(const std::string& url, std::optional<std::string> pageTitle) {
    delegate_.decidePolicy(NavigationAction{url, false});
    delegate_.pageWillLoad(url);
    delegate_.didStartProvisionalNavigation();
    committed = true;
    currentUrl = url;
    delegate_.urlDidChange();
    currentTitle = std::move(pageTitle);
    delegate_.didFinishNavigation();
}

bool FakeWebView::restoreSessionState(std::string_view state, const LoadRequest& request) {
    if (state == "unreadable") {
        return false;
    }
    restoredStates.emplace_back(state);
    engineState = std::string(state);
    load(request);
    return true;
}

void FakeWebView::simulateFailure(std::optional<LoadFailure> failure) {
    delegate_.didStartProvisionalNavigation();
    delegate_.didFailNavigation(failure);
}

void FakeWebView::simulateInPageNavigation(const std::string& url) {
    currentUrl = url;
    delegate_.urlDidChange();
}

void FakeWebView::simulateFavicon(std::optional<FaviconImage> image) {
    icon = std::move(image);
    delegate_.faviconDidChange();
}

void FakeWebView::simulateProgress(double value) {
    progress = value;
    delegate_.estimatedProgressDidChange();
}

std::shared_ptr<FakeDownload> FakeWebView::simulateDownload(std::string_view suggestedFilename) {
    auto download = std::make_shared<FakeDownload>();
    delegate_.navigationDidBecomeDownload(download);
    download->respond(suggestedFilename);
    return download;
}

} // namespace ovel::test
