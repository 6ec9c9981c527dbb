#include "chrome/ChromeStyle.h"
#include "chrome/ThemeCss.h"
#include "gutil/IconNames.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <string>
#include <vector>

namespace ovel {
namespace {

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

} // namespace
} // namespace ovel
