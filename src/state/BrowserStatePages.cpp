// Typed addresses, internal pages, the start page, zoom and find: what happens in the
// selected tab.

#include "state/BrowserState.h"

#include "web/AddressResolution.h"
#include "web/BrowserTab.h"

#include <algorithm>

namespace ovel {

namespace {

constexpr double minimumZoom = 0.75;
constexpr double maximumZoom = 2.0;

} // namespace

void BrowserState::openURL(std::string_view text) {
    const std::string typed = trimmed(text);
    if (typed.empty()) {
        return;
    }
    if (openInternalPageIfNeeded(typed)) {
        return;
    }
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    // The address field follows the page once its navigation finishes.
    if (std::optional<Url> url = webURLForTypedText(typed)) {
        tab->load(*url);
        return;
    }
    if (std::optional<Url> search = queryURL(searchEngine.get(), typed)) {
        tab->load(*search);
    }
    persistSession();
}

bool BrowserState::openInternalPageIfNeeded(std::string_view text) {
    const std::optional<InternalRoute> route = internalRouteFor(text);
    const auto tab = selectedTab();
    if (!route || !tab) {
        return false;
    }
    if (route->showsStartPage) {
        tab->loadStartPage(theme.get());
    }
    tab->displayAddress.set(std::string(route->canonicalAddress));
    tab->title.set(std::string(route->title));
    addressText.set(std::string(route->canonicalAddress));
    persistSession();
    return true;
}

void BrowserState::openHome() {
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    tab->loadStartPage(theme.get());
    addressText.set("");
    persistSession();
}

void BrowserState::refreshStartPagesForTheme() {
    for (const auto& tab : tabs.get()) {
        const auto& address = tab->displayAddress.get();
        // A start page has no address of its own. An internal page opened over one (settings,
        // where the theme is chosen) also leaves the web view without one, but it is not the
        // start page that the user sees, and they stay where they are.
        const bool showsStartPage =
            address ? toLowerAscii(*address) == "ovel://newtab" : !tab->webView().url().has_value();
        if (showsStartPage) {
            tab->loadStartPage(theme.get());
        }
    }
}

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
    tab->webView().setPageZoom(zoom);
}

void BrowserState::resetZoom() {
    if (const auto tab = selectedTab()) {
        tab->webView().setPageZoom(BrowserTab::defaultPageZoom);
    }
}

void BrowserState::runFind() {
    const std::string text = trimmed(findText.get());
    const auto tab = selectedTab();
    if (text.empty() || !tab) {
        return;
    }
    tab->webView().find(text);
}

} // namespace ovel
