#include "app/StartupProbe.h"

#include "state/BrowserState.h"
#include "web/BrowserTab.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace ovel {

std::unique_ptr<StartupProbe> StartupProbe::fromEnvironment(BrowserState& state, GtkWindow* window,
                                                            GApplication* application) {
    if (std::getenv("OVEL_STARTUP_PROBE") == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<StartupProbe>(new StartupProbe(state, window, application));
}

StartupProbe::StartupProbe(BrowserState& state, GtkWindow* window, GApplication* application)
    : state_(state), window_(window), application_(application) {
    connection_.add(state_.tabChanged.connect([this](const BrowserTab&, TabFields) { check(); }));
    check();
}

StartupProbe::~StartupProbe() = default;

void StartupProbe::check() {
    const auto tab = state_.selectedTab();
    if (!tab || waitingForFrame_) {
        return;
    }
    if (tab->isLoading.get()) {
        sawLoading_ = true;
    } else if (sawLoading_) {
        waitForFrame();
    }
}

void StartupProbe::waitForFrame() {
    connection_.disconnectAll();
    GdkFrameClock* frameClock = gtk_widget_get_frame_clock(GTK_WIDGET(window_));
    if (frameClock == nullptr) {
        return;
    }
    waitingForFrame_ = true;
    signals_.connect(frameClock, "after-paint", [this](GdkFrameClock*) {
        std::printf("ovel-web: first page frame\n");
        std::fflush(stdout);
        // "stay" keeps the browser running for measurements after start-up.
        if (std::string_view(std::getenv("OVEL_STARTUP_PROBE")) != "stay") {
            g_application_quit(application_);
        }
        // Last: this handler goes with it.
        signals_.disconnectAll();
    });
    gtk_widget_queue_draw(GTK_WIDGET(window_));
}

} // namespace ovel
