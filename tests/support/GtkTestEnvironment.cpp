#include "support/GtkTestEnvironment.h"

#include <glib.h>

#include <filesystem>
#include <stdexcept>

namespace ovel::test {

GtkTestEnvironment::GtkTestEnvironment() {
    GError* error = nullptr;
    char* root = g_dir_make_tmp("ovel-test-XXXXXX", &error);
    if (root == nullptr) {
        const std::string message = error->message;
        g_error_free(error);
        throw std::runtime_error("temporary folder: " + message);
    }
    root_ = root;
    g_free(root);

    const std::map<std::string, std::string> variables{{"HOME", home()},
                                                       {"XDG_DATA_HOME", dataHome()},
                                                       {"XDG_CACHE_HOME", cacheHome()},
                                                       {"XDG_CONFIG_HOME", configHome()}};
    for (const auto& [name, path] : variables) {
        std::filesystem::create_directories(path);
        const char* old = g_getenv(name.c_str());
        savedVariables_[name] = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        g_setenv(name.c_str(), path.c_str(), TRUE);
    }
}

GtkTestEnvironment::~GtkTestEnvironment() {
    for (const auto& [name, value] : savedVariables_) {
        if (value) {
            g_setenv(name.c_str(), value->c_str(), TRUE);
        } else {
            g_unsetenv(name.c_str());
        }
    }
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

} // namespace ovel::test
