// Zooming, finding and printing the selected tab's page.

#include "state/BrowserState.h"

namespace ovel {

namespace {

constexpr double minimumZoom = 0.75;
constexpr double maximumZoom = 2.0;

} // namespace

void BrowserState::adjustZoom(double change) {
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    double zoom = tab->webView().pageZoom() + change;
    if (zoom <= minimumZoom) {
        zoom = minimumZoom;
    }
    if (zoom > maximumZoom) {
        zoom = maximumZoom;
    }
    tab->mutableWebView().setPageZoom(zoom);
}

void BrowserState::resetZoom() {
    if (const auto tab = selectedTab()) {
        tab->mutableWebView().setPageZoom(BrowserTab::defaultPageZoom);
    }
}

void BrowserState::runFind() {
    const std::string text = trimmed(findText.get());
    const auto tab = selectedTab();
    if (text.empty() || !tab) {
        return;
    }
    tab->mutableWebView().find(text);
}

bool BrowserState::canPrintPage() const {
    // An internal page is drawn by the browser in place of the web view, which holds nothing
    // the user sees.
    const auto tab = selectedTab();
    return tab && !tab->displayAddress.get();
}

void BrowserState::printPage() {
    if (canPrintPage()) {
        selectedTab()->mutableWebView().print();
    }
}

} // namespace ovel
