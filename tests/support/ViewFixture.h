#pragma once

#include "gutil/GObjectRef.h"
#include "support/BrowserFixture.h"
#include "support/GtkWait.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

namespace ovel::test {

// Stand-ins for what the theme style sheet gives the window: its named colours and font design;
// and the theme the state names, whose colours the orbs take.
struct TestTheme {
    const char* name;
    const char* css;
    BrowserTheme theme;
};
inline constexpr TestTheme nightTheme{"night", R"(
@define-color ovel_accent rgba(255,255,255,0.85);
@define-color ovel_gradient_start rgba(0,0,0,0.94);
@define-color ovel_gradient_end rgba(128,128,128,0.7);
.ovel-design-font { font-family: Quicksand; font-weight: 600; })",
                                      BrowserTheme::Midnight};
inline constexpr TestTheme sunriseTheme{"sunrise", R"(
@define-color ovel_accent rgb(255,199,158);
@define-color ovel_gradient_start rgb(97,46,26);
@define-color ovel_gradient_end rgb(237,135,82);
.ovel-design-font { font-family: 'Noto Serif'; })",
                                        BrowserTheme::Sunrise};
inline constexpr TestTheme testThemes[] = {nightTheme, sunriseTheme};

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
        useTheme(nullptr);
        runMainLoopFor(std::chrono::milliseconds(0));
    }

    // Shows `child` alone in a window of the given size and waits until it is drawn.
    GtkWindow* show(GtkWidget* child, int width = 1200, int height = 780);

    // Saves what `widget` shows as a PNG under build/artifacts/ (named `name`.png) and returns
    // the path, or an empty string when it could not be drawn.
    static std::string saveScreenshot(GtkWidget* widget, const std::string& name);

    // Puts `css` (a theme's, followed by `extra`) on the display in place of the last one given;
    // null takes it away.
    void useTheme(const char* css, const std::string& extra = {});
    void useTheme(const TestTheme& theme) {
        useTheme(theme.css);
        state->setTheme(theme.theme);
    }

    // The first descendant of `root` named `name` that is not a label (a label beside a control
    // often carries the control's name); null when there is none.
    static GtkWidget* findControl(GtkWidget* root, const std::string& name);

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
    GObjectRef<GtkCssProvider> themeCss_;
};

} // namespace ovel::test
