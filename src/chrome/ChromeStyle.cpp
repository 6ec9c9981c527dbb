#include "chrome/ChromeStyle.h"

#include "chrome/ThemeCss.h"

#include <adwaita.h>

#include <string>

// Generated from data/ovel-web.gresource.xml.
extern "C" void ovel_resources_register_resource(void);

namespace ovel {

namespace {

void registerResourcesOnce() {
    static const bool registered = [] {
        ovel_resources_register_resource();
        return true;
    }();
    (void)registered;
}

} // namespace

ChromeStyle::ChromeStyle(GdkDisplay* display)
    : display_(display), fixed_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())),
      theme_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    registerResourcesOnce();
    // libadwaita's style sheet in its dark variant: the chrome is dark glass in every theme.
    adw_init();
    adw_style_manager_set_color_scheme(adw_style_manager_get_default(),
                                       ADW_COLOR_SCHEME_FORCE_DARK);
    gtk_icon_theme_add_resource_path(gtk_icon_theme_get_for_display(display_),
                                     "/org/ovel/Web/chrome/icons");
    // The fixed style of every view, in one provider.
    std::string css;
    for (const char* sheet : {"chrome.css", "tab-strip-toolbar.css", "internal-pages.css",
                              "sheets.css", "page-trouble.css", "fullscreen.css"}) {
        const std::string path = std::string("/org/ovel/Web/chrome/") + sheet;
        if (GBytes* bytes =
                g_resources_lookup_data(path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr)) {
            gsize size = 0;
            const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
            css.append(data, size).push_back('\n');
            g_bytes_unref(bytes);
        }
    }
    gtk_css_provider_load_from_data(fixed_.get(), css.c_str(), static_cast<gssize>(css.size()));
    gtk_style_context_add_provider_for_display(display_, GTK_STYLE_PROVIDER(fixed_.get()),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    gtk_style_context_add_provider_for_display(display_, GTK_STYLE_PROVIDER(theme_.get()),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

ChromeStyle::~ChromeStyle() {
    gtk_style_context_remove_provider_for_display(display_, GTK_STYLE_PROVIDER(theme_.get()));
    gtk_style_context_remove_provider_for_display(display_, GTK_STYLE_PROVIDER(fixed_.get()));
}

void ChromeStyle::applyTheme(BrowserTheme theme) {
    if (hasTheme_ && theme == appliedTheme_) {
        return;
    }
    hasTheme_ = true;
    appliedTheme_ = theme;
    const std::string css = themeCss(themeColors(theme));
    gtk_css_provider_load_from_data(theme_.get(), css.c_str(), static_cast<gssize>(css.size()));
}

} // namespace ovel
