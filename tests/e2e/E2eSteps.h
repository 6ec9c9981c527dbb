#pragma once

#include "records/RecordsJson.h"
#include "state/BrowserState.h"
#include "support/ProcessBrowser.h"
#include "support/ProcessBrowserDriver.h"

#include <chrono>
#include <optional>
#include <string>

namespace ovel::test {

inline constexpr const char* seededProfileID = "5A3C8E1F-1111-4222-8333-444455556666";

// A fresh store that already names its one profile, so a test can seed that profile's data.
inline void seedProfile(ProcessBrowser& browser) {
    writeStoredBlob(browser.settingsFile(), std::string(BrowserState::profilesKey),
                    encodeProfiles({{seededProfileID, "Default"}}));
}

inline void seedProfileBlob(ProcessBrowser& browser, std::string_view keyBase,
                            const std::string& blob) {
    writeStoredBlob(browser.settingsFile(), BrowserState::profileKey(keyBase, seededProfileID),
                    blob);
}

inline std::optional<std::string> storedProfileBlob(const ProcessBrowser& browser,
                                                    std::string_view keyBase) {
    return readStoredValue(browser.settingsFile(),
                           BrowserState::profileKey(keyBase, seededProfileID));
}

inline std::optional<SessionStore> storedSession(const ProcessBrowser& browser) {
    auto blob = storedProfileBlob(browser, BrowserState::sessionKeyBase);
    return blob ? decodeSession(*blob) : std::nullopt;
}

// Clicks into a text field, replaces what it holds with `text` and presses Return.
inline bool enterText(const ProcessBrowserDriver& driver, const std::string& fieldName,
                      const std::string& text) {
    auto field = driver.extents("text", fieldName);
    return field && driver.clickAt(field->x + 40, field->y + field->height / 2) &&
           driver.keys("ctrl+a") && driver.type(text) && driver.keys("Return");
}

} // namespace ovel::test
