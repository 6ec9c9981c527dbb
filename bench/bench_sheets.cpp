// What the sheets cost a person waiting for them: from the state asking for a sheet (or a key
// typed in its search field) to the first frame that shows the result, with 100 tabs and 30
// saved workspaces, in a real window under the cairo renderer. Run under Xvfb.

#include "gutil/AccessibleLabel.h"
#include "pages/CommandPaletteSheet.h"
#include "pages/SheetHost.h"
#include "pages/TabOverviewSheet.h"
#include "state/BrowserState.h"
#include "support/BrowserFixture.h"

#include "WindowFrames.h"

#include <benchmark/benchmark.h>
#include <gtk/gtk.h>

#include <chrono>
#include <memory>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

// The browser's state on fakes with 100 tabs of distinct pages and 30 workspaces, in a window
// with the sheets' layer over its content.
struct SheetBench {
    SheetBench() {
        state = ovel::BrowserState::create(fakes.services());
        for (int i = 0; i < 30; ++i) {
            state->createWorkspaceSnapshot("Workspace " + std::to_string(i));
        }
        for (int i = 0; i < 100; ++i) {
            if (i > 0) {
                state->newTab();
            }
            fakes.viewOf(*state->tabs.get().back())
                .simulateNavigation("https://site" + std::to_string(i) + ".example/page",
                                    "Page " + std::to_string(i) + " about something");
        }
        window = GTK_WINDOW(gtk_window_new());
        gtk_window_set_default_size(window, 1200, 780);
        GtkWidget* overlay = gtk_overlay_new();
        GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        gtk_overlay_set_child(GTK_OVERLAY(overlay), content);
        host = std::make_unique<ovel::SheetHost>(content);
        gtk_overlay_add_overlay(GTK_OVERLAY(overlay), host->widget());
        palette = std::make_unique<ovel::CommandPaletteSheet>(*state, *host);
        overview = std::make_unique<ovel::TabOverviewSheet>(*state, *host);
        gtk_window_set_child(window, overlay);
        gtk_window_present(window);
        while (!gtk_widget_get_mapped(GTK_WIDGET(window))) {
            g_main_context_iteration(nullptr, TRUE);
        }
        waitForFrame();
    }
    ~SheetBench() {
        overview.reset();
        palette.reset();
        host.reset();
        gtk_window_destroy(window);
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }

    void waitForFrame() { ovel::bench::waitForFrame(window); }

    // Seconds from `change` to the frame that follows it.
    template <typename Change> double timeToFrame(Change change) {
        const auto start = Clock::now();
        change();
        waitForFrame();
        return std::chrono::duration<double>(Clock::now() - start).count();
    }

    static GtkWidget* field(GtkWidget* root, const char* name) {
        const char* label = ovel::accessibleLabel(root);
        if (label != nullptr && std::string(label) == name) {
            return root;
        }
        for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
             child = gtk_widget_get_next_sibling(child)) {
            if (GtkWidget* found = field(child, name)) {
                return found;
            }
        }
        return nullptr;
    }

    ovel::test::FakeServices fakes;
    std::shared_ptr<ovel::BrowserState> state;
    GtkWindow* window = nullptr;
    std::unique_ptr<ovel::SheetHost> host;
    std::unique_ptr<ovel::CommandPaletteSheet> palette;
    std::unique_ptr<ovel::TabOverviewSheet> overview;
};

void BM_PaletteOpenToFirstFrame(benchmark::State& run) {
    SheetBench bench;
    for (auto _ : run) {
        run.SetIterationTime(bench.timeToFrame([&] { bench.state->setShowCommandPalette(true); }));
        bench.state->setShowCommandPalette(false);
        bench.waitForFrame();
    }
}

// The first opening builds a card for every tab.
void BM_OverviewFirstOpenToFirstFrame(benchmark::State& run) {
    SheetBench bench;
    for (auto _ : run) {
        bench.overview = std::make_unique<ovel::TabOverviewSheet>(*bench.state, *bench.host);
        run.SetIterationTime(bench.timeToFrame([&] { bench.state->setShowTabOverview(true); }));
        bench.state->setShowTabOverview(false);
        bench.waitForFrame();
    }
}

// Later openings find their cards made.
void BM_OverviewReopenToFirstFrame(benchmark::State& run) {
    SheetBench bench;
    bench.state->setShowTabOverview(true);
    bench.state->setShowTabOverview(false);
    bench.waitForFrame();
    for (auto _ : run) {
        run.SetIterationTime(bench.timeToFrame([&] { bench.state->setShowTabOverview(true); }));
        bench.state->setShowTabOverview(false);
        bench.waitForFrame();
    }
}

// One key in a search field: the query grows from "s" to "si", or shrinks back.
void keystrokes(benchmark::State& run, bool palette) {
    SheetBench bench;
    GtkWidget* field;
    if (palette) {
        bench.state->setShowCommandPalette(true);
        field = SheetBench::field(bench.palette->widget(), "Type a command, tab, or workspace");
    } else {
        bench.state->setShowTabOverview(true);
        field = SheetBench::field(bench.overview->widget(), "Search tabs by title or host");
    }
    gtk_editable_set_text(GTK_EDITABLE(field), "s");
    bench.waitForFrame();
    bool longer = true;
    for (auto _ : run) {
        run.SetIterationTime(bench.timeToFrame(
            [&] { gtk_editable_set_text(GTK_EDITABLE(field), longer ? "si" : "s"); }));
        longer = !longer;
    }
}
void BM_PaletteKeystrokeToFirstFrame(benchmark::State& run) {
    keystrokes(run, true);
}
void BM_OverviewKeystrokeToFirstFrame(benchmark::State& run) {
    keystrokes(run, false);
}

#define SHEET_BENCHMARK(name)                                                                      \
    BENCHMARK(name)                                                                                \
        ->UseManualTime()                                                                          \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Iterations(20)                                                                           \
        ->Repetitions(5)                                                                           \
        ->ReportAggregatesOnly(true)
SHEET_BENCHMARK(BM_PaletteOpenToFirstFrame);
SHEET_BENCHMARK(BM_OverviewFirstOpenToFirstFrame);
SHEET_BENCHMARK(BM_OverviewReopenToFirstFrame);
SHEET_BENCHMARK(BM_PaletteKeystrokeToFirstFrame);
SHEET_BENCHMARK(BM_OverviewKeystrokeToFirstFrame);

} // namespace

int main(int argc, char** argv) {
    if (!gtk_init_check()) {
        std::fprintf(stderr, "no display: run under Xvfb\n");
        return 1;
    }
    // The midnight theme's colours, as the theme style sheet names them.
    GtkCssProvider* colours = gtk_css_provider_new();
    gtk_css_provider_load_from_data(colours,
                                    "@define-color ovel_accent rgba(255,255,255,0.85);"
                                    "@define-color ovel_gradient_start rgba(0,0,0,0.94);"
                                    "@define-color ovel_gradient_end rgba(128,128,128,0.7);",
                                    -1);
    GtkCssProvider* css = gtk_css_provider_new();
    gtk_css_provider_load_from_path(css, OVEL_SOURCE_DIR "/data/sheets.css");
    for (GtkCssProvider* provider : {colours, css}) {
        gtk_style_context_add_provider_for_display(gdk_display_get_default(),
                                                   GTK_STYLE_PROVIDER(provider),
                                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
        g_object_unref(provider);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
