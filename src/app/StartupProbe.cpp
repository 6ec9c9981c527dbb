#include "app/StartupProbe.h"

#include "state/BrowserState.h"
#include "web/BrowserTab.h"

#include <cstdio>
#include <cstdlib>

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
    connection_ = state_.tabChanged.connect([this](const BrowserTab&, TabFields) { check(); });
    check();
}

StartupProbe::~StartupProbe() {
    connection_.disconnect();
    if (paintHandler_ != 0) {
        g_signal_handler_disconnect(frameClock_, paintHandler_);
    }
}

void StartupProbe::check() {
    const auto tab = state_.selectedTab();
    if (!tab || paintHandler_ != 0) {
        return;
    }
    if (tab->isLoading.get()) {
        sawLoading_ = true;
    } else if (sawLoading_) {
        waitForFrame();
    }
}

void StartupProbe::waitForFrame() {
    connection_.disconnect();
    frameClock_ = gtk_widget_get_frame_clock(GTK_WIDGET(window_));
    if (frameClock_ == nullptr) {
        return;
    }
    paintHandler_ = g_signal_connect_swapped(
        frameClock_, "after-paint", G_CALLBACK(+[](StartupProbe* probe) {
            std::printf("ovel-web: first page frame\n");
            std::fflush(stdout);
            g_signal_handler_disconnect(probe->frameClock_, probe->paintHandler_);
            probe->paintHandler_ = 0;
            g_application_quit(probe->application_);
        }),
        this);
    gtk_widget_queue_draw(GTK_WIDGET(window_));
}

} // namespace ovel
