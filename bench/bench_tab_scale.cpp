// What one tab operation costs the UI thread with 100 tabs open: the operation, every view's
// reaction (the tab strip, the toolbar, the page area, the tab overview open over it) and the
// frame that shows the result, counted in the thread's own CPU time so that waiting for the
// frame clock is left out. The window is the browser's real glass window on the browser state
// with fake web views (a label stands for each page). Run under Xvfb:
//   xvfb-run -a -s "-screen 0 1600x1000x24" build/bench/bench_tab_scale

#include "chrome/BrowserRootView.h"
#include "chrome/ChromeStyle.h"
#include "pages/SheetHost.h"
#include "pages/TabOverviewSheet.h"
#include "state/BrowserState.h"
#include "support/BrowserFixture.h"

#include "WindowFrames.h"

#include <benchmark/benchmark.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

struct TabScaleBench {
    explicit TabScaleBench(bool overviewShown) {
        state = ovel::BrowserState::create(fakes.services());
        for (int i = 0; i < 100; ++i) {
            if (i > 0) {
                state->newTab();
            }
            fakes.viewOf(*state->tabs.get().back())
                .simulateNavigation("https://site" + std::to_string(i) + ".example/page",
                                    "Page " + std::to_string(i) + " about something");
        }
        style = std::make_unique<ovel::ChromeStyle>(gdk_display_get_default());
        style->applyTheme(state->theme.get());
        root = std::make_unique<ovel::BrowserRootView>(
            *state,
            [this](const ovel::BrowserTab& tab) {
                GtkWidget*& page = pages[&tab];
                if (page == nullptr) {
                    page = GTK_WIDGET(g_object_ref_sink(gtk_label_new("page")));
                }
                return page;
            },
            nullptr);
        sheets = std::make_unique<ovel::SheetHost>(root->card());
        gtk_overlay_add_overlay(root->overlay(), sheets->widget());
        overview = std::make_unique<ovel::TabOverviewSheet>(*state, *sheets);
        window = GTK_WINDOW(gtk_window_new());
        gtk_widget_add_css_class(GTK_WIDGET(window), "ovel-window");
        gtk_window_set_default_size(window, 1200, 780);
        gtk_window_set_child(window, root->widget());
        gtk_window_present(window);
        while (!gtk_widget_get_mapped(GTK_WIDGET(window))) {
            g_main_context_iteration(nullptr, TRUE);
        }
        state->setShowTabOverview(overviewShown);
        waitForFrame();
    }
    ~TabScaleBench() {
        gtk_window_destroy(window);
        overview.reset();
        sheets.reset();
        root.reset();
        for (auto& [tab, page] : pages) {
            g_object_unref(page);
        }
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }

    void waitForFrame() { ovel::bench::waitForFrame(window); }

    // The UI thread's CPU seconds from `change` to the frame after it.
    template <typename Change> double cost(Change change) {
        const double start = threadSeconds();
        change();
        waitForFrame();
        return threadSeconds() - start;
    }

    ovel::test::FakeServices fakes;
    std::shared_ptr<ovel::BrowserState> state;
    std::unique_ptr<ovel::ChromeStyle> style;
    std::map<const ovel::BrowserTab*, GtkWidget*> pages;
    std::unique_ptr<ovel::BrowserRootView> root;
    std::unique_ptr<ovel::SheetHost> sheets;
    std::unique_ptr<ovel::TabOverviewSheet> overview;
    GtkWindow* window = nullptr;
};

// Each case times `samples` operations and reports the median, the 99th percentile and the
// worst in milliseconds of UI-thread CPU time.
constexpr int samples = 200;

void report(benchmark::State& run, std::vector<double> seconds) {
    std::sort(seconds.begin(), seconds.end());
    const auto at = [&](double fraction) {
        return 1000 * seconds[static_cast<std::size_t>(fraction * (seconds.size() - 1))];
    };
    run.counters["median_ms"] = at(0.5);
    run.counters["p99_ms"] = at(0.99);
    run.counters["max_ms"] = 1000 * seconds.back();
}

// A new tab at the end, then (not counted) closed again.
void BM_NewTab(benchmark::State& run, bool overviewShown) {
    TabScaleBench bench(overviewShown);
    for (auto _ : run) {
        std::vector<double> seconds;
        for (int i = 0; i < samples; ++i) {
            seconds.push_back(bench.cost([&] { bench.state->newTab(); }));
            bench.state->closeTab(static_cast<int>(bench.state->tabs->size()) - 1);
            bench.waitForFrame();
        }
        report(run, seconds);
    }
}

// A tab in the middle closed, then (not counted) reopened in its place.
void BM_CloseTab(benchmark::State& run, bool overviewShown) {
    TabScaleBench bench(overviewShown);
    for (auto _ : run) {
        std::vector<double> seconds;
        for (int i = 0; i < samples; ++i) {
            seconds.push_back(bench.cost([&] { bench.state->closeTab(50); }));
            bench.state->reopenLastClosedTab();
            bench.waitForFrame();
        }
        report(run, seconds);
    }
}

// Switching between two tabs far apart in the strip.
void BM_SwitchTab(benchmark::State& run, bool overviewShown) {
    TabScaleBench bench(overviewShown);
    for (auto _ : run) {
        std::vector<double> seconds;
        for (int i = 0; i < samples; ++i) {
            seconds.push_back(bench.cost([&] { bench.state->selectTab(i % 2 == 0 ? 5 : 95); }));
        }
        report(run, seconds);
    }
}

#define TAB_BENCHMARK(name, overview)                                                              \
    BENCHMARK_CAPTURE(name, overview, overview)->Iterations(1)->Unit(benchmark::kMillisecond)
TAB_BENCHMARK(BM_NewTab, false);
TAB_BENCHMARK(BM_CloseTab, false);
TAB_BENCHMARK(BM_SwitchTab, false);
TAB_BENCHMARK(BM_NewTab, true);
TAB_BENCHMARK(BM_CloseTab, true);
TAB_BENCHMARK(BM_SwitchTab, true);

} // namespace

int main(int argc, char** argv) {
    if (!gtk_init_check()) {
        std::fprintf(stderr, "no display: run under Xvfb\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
