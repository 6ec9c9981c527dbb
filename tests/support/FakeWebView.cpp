#include "support/FakeWebView.h"

namespace ovel::test {

void FakeWebView::load(const LoadRequest& request) {
    loadRequests.push_back(request);
}

void FakeWebView::loadHTMLString(std::string_view html) {
    htmlLoads.emplace_back(html);
    // Generated HTML has no URL; the engine reports it as finished like any page.
    currentUrl.reset();
}

void FakeWebView::simulateNavigation(const std::string& url, std::optional<std::string> pageTitle) {
    delegate_.decidePolicy(NavigationAction{url, false});
    delegate_.didStartProvisionalNavigation();
    currentUrl = url;
    currentTitle = std::move(pageTitle);
    delegate_.didFinishNavigation();
}

void FakeWebView::simulateFailure() {
    delegate_.didStartProvisionalNavigation();
    delegate_.didFailNavigation();
}

void FakeWebView::simulateProgress(double value) {
    progress = value;
    delegate_.estimatedProgressDidChange();
}

} // namespace ovel::test
