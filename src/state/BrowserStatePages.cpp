// Typed addresses, internal pages, the start page, zoom and find: what happens in the selected
// tab; and the settings and panels the user switches.

#include "state/BrowserState.h"

#include "web/AddressResolution.h"

#include <algorithm>

namespace ovel {

namespace {

constexpr double minimumZoom = 0.75;
constexpr double maximumZoom = 2.0;

} // namespace

void BrowserState::openInNewTab(std::string_view address) {
    auto group = operation();
    if (auto url = Url::parse(address)) {
        addTabAndSelect(makeTab(TabStore{url->absoluteString(), false}));
    }
}

void BrowserState::setAddressText(std::string_view text) {
    auto group = operation();
    addressText.set(std::string(text));
}

void BrowserState::openURL(std::string_view text) {
    auto group = operation();
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
    auto group = operation();
    const std::optional<InternalRoute> route = internalRouteFor(text);
    const auto tab = selectedTab();
    if (!route || !tab) {
        return false;
    }
    if (route->showsStartPage) {
        tab->loadStartPage(theme.get());
    }
    tab->showInternalPage(route->canonicalAddress, route->title);
    addressText.set(std::string(route->canonicalAddress));
    persistSession();
    return true;
}

void BrowserState::openHome() {
    auto group = operation();
    const auto tab = selectedTab();
    if (!tab) {
        return;
    }
    tab->loadStartPage(theme.get());
    addressText.set("");
    persistSession();
}

void BrowserState::refreshStartPagesForTheme() {
    auto group = operation();
    for (const auto& tab : tabs.get()) {
        const auto& address = tab->displayAddress.get();
        // A start page has no address of its own. An internal page opened over one (settings,
        // where the theme is chosen) also leaves the web view without one, but it is not the
        // start page that the user sees, and they stay where they are.
        const bool showsStartPage =
            address ? toLowerAscii(*address) == "ovel://newtab" : !tab->url().has_value();
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
    tab->mutableWebView().setPageZoom(zoom);
}

void BrowserState::resetZoom() {
    if (const auto tab = selectedTab()) {
        tab->mutableWebView().setPageZoom(BrowserTab::defaultPageZoom);
    }
}

void BrowserState::setTheme(BrowserTheme value) {
    auto group = operation();
    theme.set(value);
}

void BrowserState::setSearchEngine(SearchEngine value) {
    auto group = operation();
    searchEngine.set(value);
}

void BrowserState::setSmoothAnimations(bool value) {
    auto group = operation();
    smoothAnimations.set(value);
}

void BrowserState::setAdBlockEnabled(bool value) {
    auto group = operation();
    adBlockEnabled.set(value);
}

void BrowserState::setShowSidebar(bool value) {
    auto group = operation();
    showSidebar.set(value);
}

void BrowserState::toggleSidebar() {
    setShowSidebar(!showSidebar.get());
}

void BrowserState::setShowFindBar(bool value) {
    auto group = operation();
    showFindBar.set(value);
}

void BrowserState::toggleFindBar() {
    setShowFindBar(!showFindBar.get());
}

void BrowserState::hideFindBar() {
    auto group = operation();
    showFindBar.set(false);
    findText.set("");
}

void BrowserState::setFindText(std::string_view text) {
    auto group = operation();
    findText.set(std::string(text));
}

void BrowserState::setShowTabOverview(bool value) {
    auto group = operation();
    showTabOverview.set(value);
}

void BrowserState::setShowCommandPalette(bool value) {
    auto group = operation();
    showCommandPalette.set(value);
}

void BrowserState::runFind() {
    const std::string text = trimmed(findText.get());
    const auto tab = selectedTab();
    if (text.empty() || !tab) {
        return;
    }
    tab->mutableWebView().find(text);
}

} // namespace ovel

namespace ovel {

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
