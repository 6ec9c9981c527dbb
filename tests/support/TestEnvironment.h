#pragma once

// What a test that touches the file system or runs GLib's main loop needs: fresh folders, file
// contents, and waits that always end.

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace ovel::test {

using namespace std::chrono_literals;

// A new, empty folder under the system's temporary folder, removed with everything in it when
// the object goes.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

// The bytes of a file; "(missing)" when it cannot be read.
std::string readFile(const std::filesystem::path& file);
void writeFile(const std::filesystem::path& file, std::string_view bytes);

// Fresh, empty folders for one test: HOME and the XDG data, cache and config homes point into a
// temporary folder while the object lives; afterwards the variables are restored.
//
// GLib reads the XDG variables once per process (g_get_user_data_dir() and friends cache
// them), so code under test takes these paths as arguments rather than asking GLib.
class TestEnvironment {
public:
    TestEnvironment();
    ~TestEnvironment();

    std::string home() const { return root_ / "home"; }
    std::string dataHome() const { return root_ / "data"; }
    std::string cacheHome() const { return root_ / "cache"; }
    std::string configHome() const { return root_ / "config"; }

private:
    TemporaryFolder root_;
    std::map<std::string, std::optional<std::string>> savedVariables_;
};

// Runs the default GLib main context until `condition` holds or `timeout` has passed; true
// when the condition held. Every wait in a test has a limit.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout = 15s);

// Runs the default main context for `duration`, for tests that check that something does not
// happen.
void runMainLoopFor(std::chrono::milliseconds duration);

} // namespace ovel::test
