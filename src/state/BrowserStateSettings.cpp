// The settings the user chooses and the panels and sheets the user shows or hides.

#include "state/BrowserState.h"

namespace ovel {

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

} // namespace ovel
