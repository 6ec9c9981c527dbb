#include "app/AppPaths.h"

#include <glib.h>

namespace ovel {

namespace {

constexpr std::string_view appFolder = "ovel-web";

std::string join(std::string_view home, std::string_view name) {
    std::string path(home);
    path += '/';
    path += appFolder;
    path += '/';
    path += name;
    return path;
}

} // namespace

AppPaths AppPaths::forCurrentUser() {
    return under(g_get_user_config_dir(), g_get_user_data_dir(), g_get_user_cache_dir());
}

AppPaths AppPaths::under(std::string_view configHome, std::string_view dataHome,
                         std::string_view cacheHome) {
    return AppPaths{
        .settingsFile = join(configHome, "settings.sqlite3"),
        .websiteDataFolder = join(dataHome, "website-data"),
        .websiteCacheFolder = join(cacheHome, "website-cache"),
        .contentFiltersFolder = join(cacheHome, "content-filters"),
    };
}

} // namespace ovel
