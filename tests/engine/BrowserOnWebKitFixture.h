#pragma once

#include "FreshEngine.h"
#include "TestPages.h"
#include "app/GlibMainQueue.h"
#include "records/MemorySettingsStore.h"
#include "state/BrowserState.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"
#include "support/TestEnvironment.h"
#include "web/BrowserTab.h"
#include "webkit/WebKitEngine.h"
#include "webkit/WebKitWebViewAdapter.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovel::test {

// The browser's state and tabs on the real engine: WebKit, the GLib main queue and the real file
// system, with fresh folders (Downloads among them) and a
// loopback server per test. The window shows the selected tab. A derived fixture that wants the
// browser to start from stored settings writes them into `settings` before calling SetUp().
class BrowserOnWebKit : public ::testing::Test {
protected:
    void SetUp() override {
        engine = freshEngine(environment);
        desktop.downloads = environment.home() + "/Downloads";
        std::filesystem::create_directories(*desktop.downloads);
        window = gtk_window_new();
        gtk_window_set_default_size(GTK_WINDOW(window), 800, 600);
        start();
        gtk_window_present(GTK_WINDOW(window));
        // The finished compilation of the rule list reloads the selected tab: both it and the
        // first start page are done before the test begins.
        ASSERT_TRUE(waitUntil([&] { return state->hasAdBlockList() && isIdle(tab()); }));
        watchTab();
    }

    void TearDown() override {
        connections.disconnectAll();
        state.reset();
        gtk_window_destroy(GTK_WINDOW(window));
        engine.reset();
    }

    // Quits and starts the browser again on the same settings, as at the next launch.
    void relaunch() {
        connections.disconnectAll();
        state.reset();
        start();
    }

    // Starts the browser on the settings, its selected tab shown in the window.
    void start() {
        state = BrowserState::create(
            BrowserServices{settings, *engine, mainQueue, clock, uuids, desktop, filterLists});
        showSelectedTab();
        connections.add(
            state->selectionChanged.connect([this](const SelectionChange&) { showSelectedTab(); }));
    }

    BrowserTab& tab() { return *state->tabs.get().at(std::size_t(state->selectedIndex.get())); }

    static WebKitWebView* webKitView(const BrowserTab& tab) {
        return WEBKIT_WEB_VIEW(WebKitWebViewAdapter::widgetOf(tab.webView()));
    }
    // The engine side of a tab, for tests that ask of it what no operation of the state does.
    static WebView& webViewOf(BrowserTab& tab) { return const_cast<WebView&>(tab.webView()); }

    // WebKit counts a load as under way from the call that asks for it, so a reload just asked
    // for is never mistaken for one finished.
    static bool isIdle(BrowserTab& tab) {
        return !webkit_web_view_is_loading(webKitView(tab)) && !tab.isLoading.get();
    }
    static bool waitUntilIdle(BrowserTab& tab) {
        return waitUntil([&] { return isIdle(tab); });
    }
    // A load that replaces one not yet started leaves a moment in between when nothing is
    // loading: after a new tab's start page, wait for the address instead.
    static bool waitUntilShowing(BrowserTab& tab, const std::string& url) {
        return waitUntil([&] { return isIdle(tab) && tab.webView().url() == url; });
    }

    void showSelectedTab() {
        const auto selected = state->selectedTab();
        GtkWidget* widget =
            selected ? WebKitWebViewAdapter::widgetOf(selected->webView()) : nullptr;
        if (widget != gtk_window_get_child(GTK_WINDOW(window))) {
            gtk_window_set_child(GTK_WINDOW(window), widget);
        }
    }

    // Logs the first tab's loading flag, title and back/forward availability as they change.
    void watchTab() {
        BrowserTab& watched = tab();
        connections.add(watched.changed.connect([this, &watched](TabFields fields) {
            if (fields.has(TabField::Title)) {
                log.push_back("title " + watched.title.get());
            }
            if (fields.has(TabField::BackForward)) {
                log.push_back(watched.canGoBack.get() ? "can go back" : "cannot go back");
            }
            if (fields.has(TabField::Loading)) {
                log.push_back(watched.isLoading.get() ? "loading" : "loaded");
            }
        }));
    }

    std::string takeLog() { return joined(std::exchange(log, {})); }

    bool waitUntilLoaded() {
        return waitUntil([&] { return !log.empty() && log.back() == "loaded"; });
    }

    // Opens `url` in the selected tab and waits for its load; the log is empty afterwards.
    bool openAndWait(const std::string& url) {
        state->openURL(url);
        const bool loaded = waitUntilLoaded();
        const std::string events = takeLog();
        if (!loaded) {
            ADD_FAILURE() << url << " did not load: " << events;
        }
        return loaded;
    }

    std::string history() const {
        std::vector<std::string> entries;
        for (const auto& entry : state->historyEntries.get()) {
            entries.push_back(entry.title + " " + entry.url);
        }
        return joined(entries);
    }

    TestEnvironment environment;
    LoopbackServer server;
    MemorySettingsStore settings;
    std::unique_ptr<WebKitEngine> engine;
    GlibMainQueue mainQueue;
    FakeClock clock;
    SequentialUuidSource uuids;
    FakeDesktop desktop;
    // The published lists, when a test sets them before SetUp().
    FilterListSource* filterLists = nullptr;
    std::shared_ptr<BrowserState> state;
    GtkWidget* window = nullptr;
    std::vector<std::string> log;
    Connections connections;
};

} // namespace ovel::test
