#pragma once

namespace ovel {

class Clock;
class Desktop;
class MainQueue;
class SettingsStore;
class UuidSource;
class WebEngine;

// The platform services the browser's logic runs on. The composition root owns them and keeps
// them alive longer than the state and every tab.
struct BrowserServices {
    SettingsStore& settings;
    WebEngine& engine;
    MainQueue& mainQueue;
    Clock& clock;
    UuidSource& uuids;
    Desktop& desktop;
};

} // namespace ovel
