#pragma once

#include "support/BrowserFixture.h"
#include "support/GtkWait.h"

#include <gtk/gtk.h>

#include <string>

namespace ovel::test {

// A browser state on fakes and a real window to put a view in: for tests of views with real
// widgets under Xvfb.
class ViewFixture : public BrowserFixture {
protected:
    void SetUp() override { launch(); }
    void TearDown() override {
        if (window_ != nullptr) {
            gtk_window_destroy(window_);
            window_ = nullptr;
        }
        runMainLoopFor(std::chrono::milliseconds(0));
    }

    // Shows `child` alone in a window of the given size and waits until it is drawn.
    GtkWindow* show(GtkWidget* child, int width = 1200, int height = 780);

    // Saves what `widget` shows as a PNG under build/artifacts/ (named `name`.png) and returns
    // the path, or an empty string when it could not be drawn.
    static std::string saveScreenshot(GtkWidget* widget, const std::string& name);

    // Adds the CSS file data/`file` of the source tree to the display, as the browser does.
    static void loadCss(const std::string& file);

    // The first descendant of `root` (itself included) whose accessible label (given with
    // setAccessibleLabel), button label or label text is `name`; null when there is none.
    static GtkWidget* findByName(GtkWidget* root, const std::string& name);

    GtkWindow* window_ = nullptr;
};

} // namespace ovel::test
