#pragma once

#include <string>
#include <string_view>

namespace ovel {

// Where the browser keeps its files, in the user's XDG folders, each under "ovel-web".
struct AppPaths {
    std::string settingsFile;
    std::string websiteDataFolder;
    std::string websiteCacheFolder;
    std::string contentFiltersFolder;

    // From $XDG_CONFIG_HOME, $XDG_DATA_HOME and $XDG_CACHE_HOME, with their usual defaults.
    static AppPaths forCurrentUser();
    static AppPaths under(std::string_view configHome, std::string_view dataHome,
                          std::string_view cacheHome);
};

} // namespace ovel
