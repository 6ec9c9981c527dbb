#pragma once

#include <map>
#include <optional>
#include <string>

namespace ovel::test {

// Fresh, empty folders for one test: HOME and the XDG data, cache and config homes point into a
// new temporary folder while the object lives; afterwards the variables are restored and the
// folder is removed.
//
// GLib reads the XDG variables once per process (g_get_user_data_dir() and friends cache
// them), so code under test takes these paths as arguments rather than asking GLib.
class GtkTestEnvironment {
public:
    GtkTestEnvironment();
    ~GtkTestEnvironment();

    GtkTestEnvironment(const GtkTestEnvironment&) = delete;
    GtkTestEnvironment& operator=(const GtkTestEnvironment&) = delete;

    const std::string& root() const { return root_; }
    std::string home() const { return root_ + "/home"; }
    std::string dataHome() const { return root_ + "/data"; }
    std::string cacheHome() const { return root_ + "/cache"; }
    std::string configHome() const { return root_ + "/config"; }

private:
    std::string root_;
    std::map<std::string, std::optional<std::string>> savedVariables_;
};

} // namespace ovel::test
