#pragma once

#include "FreshEngine.h"
#include "TestPages.h"
#include "support/LoopbackServer.h"
#include "support/RecordingWebViewDelegate.h"
#include "support/TestEnvironment.h"
#include "webkit/WebKitEngine.h"
#include "webkit/WebKitWebViewAdapter.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <memory>
#include <optional>
#include <string>

namespace ovel::test {

// A page under test: a real WebKitWebView through the adapter, reporting to a recording
// delegate. The delegate is made first and goes last, as the tab outlives its view.
struct AdaptedPage {
    RecordingWebViewDelegate delegate;
    std::unique_ptr<WebKitWebViewAdapter> view;

    WebKitWebView* webKitView() const { return view->webKitView(); }
    std::string events() const { return joined(delegate.events); }
    // Waits until the delegate heard `outcomes` finishes and failures in all and nothing is
    // loading.
    bool waitForOutcomes(std::size_t outcomes, std::chrono::milliseconds timeout = 15s) const {
        return waitUntil(
            [&] {
                return delegate.count("finish") + delegate.count("fail") >= outcomes &&
                       !delegate.isLoading();
            },
            timeout);
    }
};

// Each test gets fresh XDG folders, its own loopback server and a fresh engine whose folders
// live in them, and a window to show its pages in.
class WebKitTest : public ::testing::Test {
protected:
    void SetUp() override {
        engine = freshEngine(environment);
        window = gtk_window_new();
        gtk_window_set_default_size(GTK_WINDOW(window), 800, 600);
        box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        gtk_window_set_child(GTK_WINDOW(window), box);
        gtk_window_present(GTK_WINDOW(window));
    }

    void TearDown() override {
        pages.clear();
        gtk_window_destroy(GTK_WINDOW(window));
        engine.reset();
    }

    // A new page shown in the window; the fixture keeps it until the test ends.
    AdaptedPage& openPage() {
        auto page = std::make_unique<AdaptedPage>();
        auto view = engine->createWebView(page->delegate);
        page->view.reset(static_cast<WebKitWebViewAdapter*>(view.release()));
        page->delegate.view = page->view.get();
        gtk_widget_set_vexpand(page->view->widget(), TRUE);
        gtk_box_append(GTK_BOX(box), page->view->widget());
        pages.push_back(std::move(page));
        return *pages.back();
    }

    TestEnvironment environment;
    LoopbackServer server;
    std::unique_ptr<WebKitEngine> engine;
    GtkWidget* window = nullptr;
    GtkWidget* box = nullptr;
    std::vector<std::unique_ptr<AdaptedPage>> pages;
};

} // namespace ovel::test
