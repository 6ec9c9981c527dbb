#pragma once

#include "support/BrowserFixture.h"
#include "support/TestEnvironment.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

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

    // The first descendant of `root` named `name` that is not a label (a label beside a control
    // often carries the control's name); null when there is none.
    static GtkWidget* findControl(GtkWidget* root, const std::string& name);
    // The same, failing the test when there is none.
    static GtkWidget* named(GtkWidget* root, const std::string& name) {
        GtkWidget* widget = findControl(root, name);
        EXPECT_NE(widget, nullptr) << "no control named " << name;
        return widget;
    }

    // Clicks the button named `name` under `root` as its "clicked" signal (a button's own
    // activation clicks only after a pressed-look delay); false when there is no such button.
    static bool click(GtkWidget* root, const std::string& name);

    // Adds the CSS file data/`file` of the source tree to the display, as the browser does.
    static void loadCss(const std::string& file);

    // The first descendant of `root` (itself included) whose accessible label (given with
    // setAccessibleLabel), button label or label text is `name`; null when there is none.
    static GtkWidget* findByName(GtkWidget* root, const std::string& name);

    // `root` and its descendants for which `matches` holds, in tree order.
    static std::vector<GtkWidget*> widgetsWhere(GtkWidget* root,
                                                const std::function<bool(GtkWidget*)>& matches);

    GtkWindow* window_ = nullptr;
};

} // namespace ovel::test
