// Typed addresses, links handed over from outside, internal pages and the start page: what
// the selected tab loads or shows.

#include "state/BrowserState.h"

#include "web/AddressResolution.h"

namespace ovel {

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
    if (std::optional<TypedAddress> address = typedAddressFor(typed)) {
        if (address->httpFallback &&
            plainHttpHosts_.contains(hostAndPort(*address->httpFallback))) {
            tab->load(*address->httpFallback);
        } else {
            tab->load(address->url);
            tab->httpFallback_ = std::move(address->httpFallback);
        }
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

} // namespace ovel
