#pragma once

#include "app/AppPaths.h"
#include "app/GlibMainQueue.h"
#include "state/BrowserState.h"
#include "state/MemorySettingsStore.h"
#include "support/FakeClock.h"
#include "support/FakeDesktop.h"
#include "support/GtkTestEnvironment.h"
#include "support/GtkWait.h"
#include "support/IconFiles.h"
#include "support/LoopbackServer.h"
#include "support/SequentialUuidSource.h"
#include "web/BrowserTab.h"
#include "web/webkit/SoupFaviconFetcher.h"
#include "web/webkit/WebKitEngine.h"
#include "web/webkit/WebKitWebViewAdapter.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace ovel::test {

// The browser's state and tabs on the real engine: WebKit, the GLib main queue and the libsoup
// favicon fetcher, with fresh folders and a loopback server per test.
class BrowserOnWebKit : public ::testing::Test {
protected:
    void SetUp() override {
        const auto paths = AppPaths::under(environment.configHome(), environment.dataHome(),
                                           environment.cacheHome());
        engine = std::make_unique<WebKitEngine>(WebKitEngine::Folders{
            paths.websiteDataFolder, paths.websiteCacheFolder, paths.contentFiltersFolder});
        favicons.setTestOrigin("http", server.port());
        desktop.downloads = environment.home() + "/Downloads";
        std::filesystem::create_directories(*desktop.downloads);
        state = BrowserState::create(
            BrowserServices{settings, *engine, mainQueue, clock, uuids, favicons, desktop});
        window = gtk_window_new();
        gtk_window_set_default_size(GTK_WINDOW(window), 800, 600);
        gtk_window_set_child(GTK_WINDOW(window), WebKitWebViewAdapter::widgetOf(tab().webView()));
        gtk_window_present(GTK_WINDOW(window));
        // The first tab shows the start page; its load finishes before the test begins.
        EXPECT_TRUE(waitUntil([&] { return !tab().isLoading.get(); }));
        watchTab();
    }

    void TearDown() override {
        state.reset();
        gtk_window_destroy(GTK_WINDOW(window));
        engine.reset();
    }

    BrowserTab& tab() { return *state->tabs.get().at(std::size_t(state->selectedIndex.get())); }

    // Logs the tab's loading flag, title and back/forward availability as they change.
    void watchTab() {
        connections.push_back(tab().isLoading.changed().connect(
            [this] { log.push_back(tab().isLoading.get() ? "loading" : "loaded"); }));
        connections.push_back(
            tab().title.changed().connect([this] { log.push_back("title " + tab().title.get()); }));
        connections.push_back(tab().canGoBack.changed().connect(
            [this] { log.push_back(tab().canGoBack.get() ? "can go back" : "cannot go back"); }));
    }

    std::string takeLog() {
        std::string text;
        for (const auto& entry : log) {
            text += (text.empty() ? "" : " | ") + entry;
        }
        log.clear();
        return text;
    }

    bool waitUntilLoaded() {
        return waitUntil([&] { return !log.empty() && log.back() == "loaded"; });
    }

    std::string history() const {
        std::string text;
        for (const auto& entry : state->historyEntries.get()) {
            text += (text.empty() ? "" : " | ") + entry.title + " " + entry.url;
        }
        return text;
    }

    GtkTestEnvironment environment;
    LoopbackServer server;
    MemorySettingsStore settings;
    std::unique_ptr<WebKitEngine> engine;
    GlibMainQueue mainQueue;
    FakeClock clock;
    SequentialUuidSource uuids;
    SoupFaviconFetcher favicons;
    FakeDesktop desktop;
    std::shared_ptr<BrowserState> state;
    GtkWidget* window = nullptr;
    std::vector<std::string> log;
    std::vector<sigc::connection> connections;
};

} // namespace ovel::test
