#include "support/RecordingWebViewDelegate.h"

namespace ovel::test {

void RecordingWebViewDelegate::didFinishNavigation() {
    if (view == nullptr) {
        events.push_back("finish");
        return;
    }
    const auto title = view->title();
    const auto url = view->url();
    events.push_back("finish '" + title.value_or("-") + "' " + url.value_or("-"));
}

bool RecordingWebViewDelegate::isLoading() const {
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        if (*event == "start") {
            return true;
        }
        if (event->starts_with("finish") || *event == "fail") {
            return false;
        }
    }
    return false;
}

std::size_t RecordingWebViewDelegate::count(const std::string& eventPrefix) const {
    std::size_t n = 0;
    for (const auto& event : events) {
        n += event.starts_with(eventPrefix) ? 1 : 0;
    }
    return n;
}

bool RecordingWebViewDelegate::createWebViewForNewTab(NewWebViewRequest& request) {
    newWindowRequests.push_back(request.url().value_or(""));
    if (newWindowDelegate == nullptr || newWindowView) {
        return false;
    }
    newWindowView = request.createWebView(*newWindowDelegate);
    return newWindowView != nullptr;
}

} // namespace ovel::test
