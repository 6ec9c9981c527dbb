// What the history page costs with a full history (500 entries): opening it to its first drawn
// frame, and one more visit while it is on show (the list hears one insert and one removal and
// redraws). Needs a display: run under Xvfb.

#include "pages/OvelHistoryPageNative.h"
#include "support/BrowserFixture.h"

#include <benchmark/benchmark.h>
#include <gtk/gtk.h>

#include <memory>
#include <string>

namespace {

using ovel::test::FakeServices;

std::string pageUrl(int n) {
    return "https://www.example-news.org/2026/11/articles/story-" + std::to_string(n) + ".html";
}

// A browser on fakes whose history is full, and a window to show pages in.
struct FullHistory {
    FullHistory() {
        state = ovel::BrowserState::create(services.services());
        for (int i = 0; i < 500; ++i) {
            visit("Story number " + std::to_string(i));
        }
        window = GTK_WINDOW(gtk_window_new());
        gtk_window_set_default_size(window, 1200, 780);
        gtk_window_present(window);
        while (!gtk_widget_get_mapped(GTK_WIDGET(window))) {
            g_main_context_iteration(nullptr, TRUE);
        }
    }
    ~FullHistory() { gtk_window_destroy(window); }

    void visit(const std::string& title) {
        FakeServices::viewOf(*state->selectedTab()).simulateNavigation(pageUrl(visits++), title);
    }

    // Runs the main loop until the window has painted a frame.
    void waitForFrame() {
        GdkFrameClock* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window));
        bool painted = false;
        const gulong handler = g_signal_connect_swapped(
            clock, "after-paint", G_CALLBACK(+[](bool* done) { *done = true; }), &painted);
        gtk_widget_queue_draw(GTK_WIDGET(window));
        while (!painted) {
            g_main_context_iteration(nullptr, TRUE);
        }
        g_signal_handler_disconnect(clock, handler);
    }

    FakeServices services;
    std::shared_ptr<ovel::BrowserState> state;
    GtkWindow* window = nullptr;
    int visits = 0;
};

FullHistory& fullHistory() {
    static FullHistory history;
    return history;
}

void BM_OpenHistoryPageToFirstFrame(benchmark::State& bench) {
    FullHistory& history = fullHistory();
    for (auto _ : bench) {
        auto page = std::make_unique<ovel::OvelHistoryPageNative>(*history.state);
        gtk_window_set_child(history.window, page->widget());
        history.waitForFrame();
        bench.PauseTiming();
        gtk_window_set_child(history.window, nullptr);
        page.reset();
        bench.ResumeTiming();
    }
}
BENCHMARK(BM_OpenHistoryPageToFirstFrame)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

void BM_OneMoreVisitWhileShown(benchmark::State& bench) {
    FullHistory& history = fullHistory();
    ovel::OvelHistoryPageNative page(*history.state);
    gtk_window_set_child(history.window, page.widget());
    history.waitForFrame();
    for (auto _ : bench) {
        history.visit("One more story");
        history.waitForFrame();
    }
    gtk_window_set_child(history.window, nullptr);
}
BENCHMARK(BM_OneMoreVisitWhileShown)
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(100)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// The same visit with no page on show: what the browser state does anyway (recording the visit,
// saving the history), to tell the page's own share.
void BM_OneMoreVisitWithoutPage(benchmark::State& bench) {
    FullHistory& history = fullHistory();
    GtkWidget* blank = gtk_label_new("");
    gtk_window_set_child(history.window, blank);
    history.waitForFrame();
    for (auto _ : bench) {
        history.visit("One more story");
        history.waitForFrame();
    }
    gtk_window_set_child(history.window, nullptr);
}
BENCHMARK(BM_OneMoreVisitWithoutPage)
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(100)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

} // namespace

int main(int argc, char** argv) {
    gtk_init();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
