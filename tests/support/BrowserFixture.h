#pragma once

#include "state/BrowserState.h"
#include "support/FakeClock.h"
#include "support/FakeDesktop.h"
#include "support/FakeFaviconFetcher.h"
#include "support/FakeWebEngine.h"
#include "support/ManualMainQueue.h"
#include "support/RecordingSettingsStore.h"
#include "support/SequentialUuidSource.h"
#include "web/BrowserTab.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace ovel::test {

// Every platform service, faked, for tests of the core.
struct FakeServices {
    BrowserServices services() {
        return BrowserServices{store, engine, mainQueue, clock, uuids, favicons, desktop};
    }
    // The fake behind a tab: tests drive the engine's side of it.
    static FakeWebView& viewOf(const BrowserTab& tab) {
        return const_cast<FakeWebView&>(dynamic_cast<const FakeWebView&>(tab.webView()));
    }

    RecordingSettingsStore store;
    FakeWebEngine engine;
    ManualMainQueue mainQueue;
    FakeClock clock;
    SequentialUuidSource uuids;
    FakeFaviconFetcher favicons;
    FakeDesktop desktop;
};

// A browser state on fakes. The store outlives relaunches, as a real one does across runs.
class BrowserFixture : public ::testing::Test, protected FakeServices {
protected:
    // Starts (or restarts) the browser on the current store.
    BrowserState& launch() {
        state.reset();
        state = BrowserState::create(services());
        return *state;
    }

    // Starts on an empty store, as on a first run.
    BrowserState& launchFresh() {
        state.reset();
        store = RecordingSettingsStore();
        return launch();
    }

    FakeWebView& viewAt(int index) { return viewOf(*state->tabs.get().at(index)); }

    // The tab at `index` finishes a navigation to `url` titled `title`.
    void showPage(int index, const std::string& url, const std::string& title) {
        viewAt(index).simulateNavigation(url, title);
    }

    std::string profileID() const { return state->activeProfileID.get(); }
    std::string key(std::string_view base) const {
        return BrowserState::profileKey(base, profileID());
    }

    std::shared_ptr<BrowserState> state;
};

} // namespace ovel::test
