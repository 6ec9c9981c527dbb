#pragma once

namespace ovel {

class Clock;
class Desktop;
class FilterListSource;
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
    // The published ad and tracker lists; without them the blocker has its built-in rules.
    FilterListSource* filterLists = nullptr;
};

} // namespace ovel
