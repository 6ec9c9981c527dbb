#pragma once

#include "state/BrowserState.h"
#include "support/Fakes.h"
#include "web/BrowserTab.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace ovel::test {

// Every platform service, faked, for tests of the core.
struct FakeServices {
    BrowserServices services() {
        return BrowserServices{store, engine, mainQueue, clock, uuids, desktop};
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

    // Starts on an empty store with tabs T1..Tn, tab N showing https://tN.test/ titled "TN", the
    // last one selected.
    BrowserState& launchWithTabs(int count) {
        launchFresh();
        for (int i = 1; i <= count; ++i) {
            if (i > 1) {
                state->newTab();
            }
            showPage(i - 1, "https://t" + std::to_string(i) + ".test/", "T" + std::to_string(i));
        }
        return *state;
    }

    // The strip by the tabs' titles, as "T1p T2 [T3]": p marks a pinned tab, brackets the
    // selected one. A tab whose page has not come yet shows the address it asked for, or "new".
    std::string strip() const {
        std::string text;
        for (std::size_t i = 0; i < state->tabs->size(); ++i) {
            const BrowserTab& tab = *state->tabs.get()[i];
            const FakeWebView& view = viewOf(tab);
            std::string name = view.committed               ? tab.title.get()
                               : !view.loadRequests.empty() ? view.loadRequests.back().url
                                                            : "new";
            name += tab.isPinned.get() ? "p" : "";
            if (static_cast<int>(i) == state->selectedIndex.get()) {
                name = "[" + name + "]";
            }
            text += (i ? " " : "") + name;
        }
        return text;
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

// A browser already started on an empty store.
class LaunchedBrowser : public BrowserFixture {
protected:
    void SetUp() override { launch(); }
};

} // namespace ovel::test
