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
namespace {

std::string titled(const std::string& title, const std::string& body = "") {
    return "<html><head><title>" + title + "</title></head><body>" + body + "</body></html>";
}

// The browser's state and tabs on the real engine: WebKit, the GLib main queue and the libsoup
// favicon fetcher, with fresh folders and a loopback server per test.
class BrowserTabOnWebKit : public ::testing::Test {
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

TEST_F(BrowserTabOnWebKit, PageLoadsDriveTheTabAndHistoryInOrder) {
    server.serveHtml("/a", titled("Page A"));
    server.serveHtml("/b", titled("Page B"));

    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page A | cannot go back | loaded");
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
    EXPECT_EQ(state->addressText.get(), server.url("/a"));
    EXPECT_TRUE(waitUntil([&] { return tab().loadingProgress.get() == 1.0; }));

    state->openURL(server.url("/b"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page B | can go back | loaded");
    EXPECT_FALSE(tab().canGoForward.get());

    tab().webView().goBack();
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Page A | cannot go back | loaded");
    EXPECT_TRUE(tab().canGoForward.get());
    EXPECT_EQ(history(), "Page A " + server.url("/a") + " | Page B " + server.url("/b") +
                             " | Page A " + server.url("/a"));
    EXPECT_EQ(state->addressText.get(), server.url("/a"));
}

TEST_F(BrowserTabOnWebKit, LateTitlesReachTheTabAndHistory) {
    server.serveHtml("/scripted",
                     "<html><body>x<script>onload = () => setTimeout(() => "
                     "document.title = 'Scripted Title', 300);</script></body></html>");
    server.serveSlowly("/deep", "text/html",
                       {"<html><body><p>" + std::string(4000, 'x') + "</p>",
                        "<title>Deep Title</title><p>end</p></body></html>"},
                       300ms);
    state->openURL(server.url("/scripted"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Scripted Title | cannot go back | loaded");
    state->openURL(server.url("/deep"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | title Deep Title | can go back | loaded");
    EXPECT_EQ(history(),
              "Deep Title " + server.url("/deep") + " | Scripted Title " + server.url("/scripted"));
}

TEST_F(BrowserTabOnWebKit, FailedLoadsOnlyStopTheLoading) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    takeLog();

    state->openURL("http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()) + "/");
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");

    // The sixty-second stop, made short.
    tab().webView().load({server.url("/never"), 400ms});
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");

    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_EQ(history(), "Page A " + server.url("/a"));
    EXPECT_EQ(tab().webViewUrl()->absoluteString(), server.url("/a"));
}

TEST_F(BrowserTabOnWebKit, TabIsReloadableAfterItsWebProcessEnds) {
    server.serveHtml("/a", titled("Page A"));
    server.serveNothing("/never");
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    takeLog();

    // Killed while loading: the load fails and the tab keeps its page.
    tab().webView().load({server.url("/never")});
    ASSERT_TRUE(waitUntil([&] { return tab().isLoading.get(); }));
    auto* view = WEBKIT_WEB_VIEW(WebKitWebViewAdapter::widgetOf(tab().webView()));
    webkit_web_view_terminate_web_process(view);
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(takeLog(), "loading | loaded");
    EXPECT_EQ(tab().title.get(), "Page A");

    tab().webView().reload();
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();
    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_EQ(tab().webViewUrl()->absoluteString(), server.url("/a"));
}

TEST_F(BrowserTabOnWebKit, FaviconIsFetchedAfterTheFinish) {
    server.serveHtml("/a", titled("Page A"));
    const auto icon = icoFile({{16, 16, icoBmpImage(16, 16, {0, 0, 255, 255})},
                               {32, 32, pngFile(32, 32, {200, 100, 50, 255})}});
    LoopbackServer::Response response;
    response.contentType = "image/x-icon";
    response.body.assign(icon.begin(), icon.end());
    server.serve("/favicon.ico", response);

    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntil([&] { return tab().favicon.get().has_value(); }));
    const auto& favicon = *tab().favicon.get();
    EXPECT_EQ(favicon.width, 32);
    EXPECT_EQ(favicon.height, 32);
    EXPECT_EQ(std::vector<std::uint8_t>(favicon.rgba.begin(), favicon.rgba.begin() + 4),
              (std::vector<std::uint8_t>{200, 100, 50, 255}));
    EXPECT_EQ(server.requestCount("/favicon.ico"), 1);
}

TEST_F(BrowserTabOnWebKit, DownloadIsSavedAndRecorded) {
    server.serveHtml("/a", titled("Page A"));
    server.serveAttachment("/get", "report.txt", "the report", "text/plain");
    state->openURL(server.url("/a"));
    ASSERT_TRUE(waitUntilLoaded()) << takeLog();

    state->openURL(server.url("/get"));
    ASSERT_TRUE(waitUntil([&] {
        return !state->downloads.get().empty() &&
               state->downloads.get()[0].status == DownloadStatus::Finished;
    }));
    const auto& record = state->downloads.get()[0];
    EXPECT_EQ(record.fileName, "report.txt");
    EXPECT_EQ(record.sourceURL, server.url("/a"));
    EXPECT_EQ(record.destinationPath, *desktop.downloads + "/report.txt");
    std::ifstream file(*desktop.downloads + "/report.txt");
    std::stringstream contents;
    contents << file.rdbuf();
    EXPECT_EQ(contents.str(), "the report");
    EXPECT_TRUE(waitUntil([&] { return tab().lastDownloadMessage.get() == "Download finished"; }))
        << tab().lastDownloadMessage.get().value_or("-");
    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_FALSE(tab().isLoading.get());
}

TEST_F(BrowserTabOnWebKit, TheBrowsersRuleListCompiles) {
    EXPECT_TRUE(waitUntil([&] { return state->hasAdBlockList(); }));
}

} // namespace
} // namespace ovel::test
