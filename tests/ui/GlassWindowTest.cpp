#include "chrome/AnimatedOrbs.h"
#include "chrome/ChromeStyle.h"
#include "chrome/ThemeCss.h"
#include "gutil/IconNames.h"
#include "support/GtkWait.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <string>
#include <vector>

namespace ovel {
namespace {

using namespace std::chrono_literals;
using test::runMainLoopFor;
using test::waitUntil;

// Every parse error a provider reports.
std::vector<std::string> parseErrors(GtkCssProvider* provider, const auto& load) {
    std::vector<std::string> errors;
    const gulong handler =
        g_signal_connect(provider, "parsing-error",
                         G_CALLBACK(+[](GtkCssProvider*, GtkCssSection* section,
                                        const GError* error, std::vector<std::string>* found) {
                             char* where = gtk_css_section_to_string(section);
                             found->push_back(std::string(where) + ": " + error->message);
                             g_free(where);
                         }),
                         &errors);
    load(provider);
    g_signal_handler_disconnect(provider, handler);
    return errors;
}

TEST(ChromeStyle, StyleSheetsParseAndEveryIconIsFound) {
    ChromeStyle style(gdk_display_get_default());
    GtkCssProvider* provider = gtk_css_provider_new();
    EXPECT_EQ(parseErrors(provider,
                          [](GtkCssProvider* p) {
                              gtk_css_provider_load_from_resource(
                                  p, "/org/ovel/Web/chrome/chrome.css");
                          }),
              std::vector<std::string>{});
    for (BrowserTheme theme : allThemes) {
        const std::string css = themeCss(themeColors(theme));
        EXPECT_EQ(parseErrors(provider,
                              [&css](GtkCssProvider* p) {
                                  gtk_css_provider_load_from_data(p, css.c_str(), -1);
                              }),
                  std::vector<std::string>{})
            << rawValue(theme);
    }
    g_object_unref(provider);

    // The named icons come from the Adwaita theme, or from our resources for the one it keeps
    // only among its legacy icons.
    GtkIconTheme* icons = gtk_icon_theme_get_for_display(gdk_display_get_default());
    for (const auto& [symbol, icon] : iconNames) {
        EXPECT_TRUE(gtk_icon_theme_has_icon(icons, std::string(icon).c_str()))
            << symbol << " -> " << icon;
    }
    EXPECT_EQ(iconName("no.such.symbol"), "image-missing");
}

class AnimatedOrbsTest : public ::testing::Test {
protected:
    AnimatedOrbsTest() : window_(GTK_WINDOW(gtk_window_new())) {
        gtk_window_set_default_size(window_, 600, 400);
        gtk_window_set_child(window_, orbs_.widget());
    }
    ~AnimatedOrbsTest() override {
        setAnimations(true);
        gtk_window_destroy(window_);
    }

    static void setAnimations(bool enabled) {
        g_object_set(gtk_settings_get_default(), "gtk-enable-animations", enabled, nullptr);
    }

    AnimatedOrbs orbs_;
    GtkWindow* window_;
};

TEST_F(AnimatedOrbsTest, BreathesOnlyWhileShownAndAnimationsAreAllowed) {
    orbs_.setBreathe(true);
    EXPECT_FALSE(orbs_.isTicking()) << "no clock before the window is shown";

    gtk_window_present(window_);
    ASSERT_TRUE(waitUntil([&] { return orbs_.spread() > 0.0; }, 5s));
    EXPECT_GT(orbs_.framesDrawn(), 0u);

    gtk_widget_set_visible(GTK_WIDGET(window_), FALSE);
    EXPECT_FALSE(orbs_.isTicking()) << "the clock stops with the window hidden";
    const double hiddenAt = orbs_.spread();
    gtk_widget_set_visible(GTK_WIDGET(window_), TRUE);
    ASSERT_TRUE(waitUntil([&] { return orbs_.spread() != hiddenAt; }, 5s))
        << "and goes on when it is shown again";

    setAnimations(false);
    EXPECT_FALSE(orbs_.isTicking());
    EXPECT_EQ(orbs_.spread(), 0.0) << "the orbs rest when the desktop asks for no animations";
    runMainLoopFor(200ms);
    EXPECT_EQ(orbs_.spread(), 0.0);

    setAnimations(true);
    EXPECT_TRUE(orbs_.isTicking());
    orbs_.setBreathe(false);
    EXPECT_FALSE(orbs_.isTicking());
    EXPECT_EQ(orbs_.spread(), 0.0);
}

} // namespace
} // namespace ovel
