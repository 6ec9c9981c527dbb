#pragma once

#include "records/RecordsJson.h"
#include "state/BrowserState.h"
#include "support/ProcessBrowser.h"
#include "support/ProcessBrowserDriver.h"

#include <chrono>
#include <optional>
#include <string>

namespace ovel::test {

// A fresh store whose one profile starts on `session`.
inline void seedSession(ProcessBrowser& browser, const SessionStore& session) {
    const std::string profileID = "5A3C8E1F-1111-4222-8333-444455556666";
    writeStoredBlob(browser.settingsFile(), std::string(BrowserState::profilesKey),
                    encodeProfiles({{profileID, "Default"}}));
    writeStoredBlob(browser.settingsFile(),
                    BrowserState::profileKey(BrowserState::sessionKeyBase, profileID),
                    encodeSession(session));
}

// The session the store holds for its first profile; none before the browser has written one.
inline std::optional<SessionStore> storedSession(const ProcessBrowser& browser) {
    auto profiles = readStoredValue(browser.settingsFile(), std::string(BrowserState::profilesKey));
    auto list = profiles ? decodeProfiles(*profiles) : std::nullopt;
    if (!list || list->empty()) {
        return std::nullopt;
    }
    auto blob =
        readStoredValue(browser.settingsFile(),
                        BrowserState::profileKey(BrowserState::sessionKeyBase, list->front().id));
    return blob ? decodeSession(*blob) : std::nullopt;
}

inline std::size_t storedTabCount(const ProcessBrowser& browser) {
    auto session = storedSession(browser);
    return session ? session->tabs.size() : std::size_t{0};
}

// Clicks into a text field, replaces what it holds with `text` and presses Return.
inline bool enterText(const ProcessBrowserDriver& driver, const std::string& fieldName,
                      const std::string& text) {
    auto field = driver.extents("text", fieldName);
    return field && driver.clickAt(field->x + 40, field->y + field->height / 2) &&
           driver.keys("ctrl+a") && driver.type(text) && driver.keys("Return");
}

// Clicks the tab of that title in the strip, near its leading edge (clear of its close button).
inline bool clickTab(const ProcessBrowserDriver& driver, const std::string& title, int button = 1) {
    auto tab = driver.extents("page tab", title);
    return tab && driver.clickAt(tab->x + 20, tab->y + tab->height / 2, button);
}

} // namespace ovel::test
