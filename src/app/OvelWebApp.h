#pragma once

#include "gutil/GObjectRef.h"
#include "gutil/GSignalConnections.h"

#include <gtk/gtk.h>

#include <memory>

namespace ovel {

// The application: owns the platform services, the one BrowserState and the one window.
// A second launch while one runs presents the running window.
class OvelWebApp {
public:
    static constexpr const char* applicationID = "org.ovel.Web";

    OvelWebApp();
    ~OvelWebApp();

    OvelWebApp(const OvelWebApp&) = delete;
    OvelWebApp& operator=(const OvelWebApp&) = delete;

    int run(int argc, char** argv);

private:
    struct Parts;

    void startup();
    void activate();
    void shutdown();

    GObjectRef<GtkApplication> application_;
    std::unique_ptr<Parts> parts_;
    GSignalConnections signals_;
};

} // namespace ovel
