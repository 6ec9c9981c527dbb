#pragma once

#include "gutil/GSignalConnections.h"
#include "web/Connections.h"

#include <gio/gio.h>
#include <gtk/gtk.h>

#include <memory>

namespace ovel {

class BrowserState;

// Start-up measurement: when OVEL_STARTUP_PROBE is set, waits for the selected tab's first
// page to finish loading, then for the next frame the window draws, prints
// "ovel-web: first page frame" on standard output and quits (or, when the variable is "stay",
// keeps running). The benchmarks in bench/ time the launch up to that line.
class StartupProbe {
public:
    static std::unique_ptr<StartupProbe> fromEnvironment(BrowserState& state, GtkWindow* window,
                                                         GApplication* application);
    ~StartupProbe();

    StartupProbe(const StartupProbe&) = delete;
    StartupProbe& operator=(const StartupProbe&) = delete;

private:
    StartupProbe(BrowserState& state, GtkWindow* window, GApplication* application);
    void check();
    void waitForFrame();

    BrowserState& state_;
    GtkWindow* window_;
    GApplication* application_;
    Connections connection_;
    bool sawLoading_ = false;
    bool waitingForFrame_ = false;
    GSignalConnections signals_;
};

} // namespace ovel
