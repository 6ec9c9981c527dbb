#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ovel::test {

// The built browser run as a separate process, as a user would start it: its own temporary
// HOME and XDG folders, its own private session bus, the test's display.
class ProcessBrowser {
public:
    ProcessBrowser();
    ~ProcessBrowser();

    ProcessBrowser(const ProcessBrowser&) = delete;
    ProcessBrowser& operator=(const ProcessBrowser&) = delete;

    const std::string& home() const { return home_; }
    std::string settingsFile() const { return configHome_ + "/ovel-web/settings.sqlite3"; }
    std::string configHome() const { return configHome_; }
    // The browser's private session bus and the display it shows on.
    std::string busAddress() const;
    const std::string& display() const { return display_; }

    // Starts build/ovel-web; false when it could not be spawned.
    bool launch();
    // Runs build/ovel-web once more with `arguments`, in the same environment, as a user would
    // from a terminal while the browser runs; waits for it to exit and returns its exit status.
    std::optional<int> runAgain(const std::vector<std::string>& arguments);
    // Asks the running browser to quit through its "app.quit" action and waits for it to exit.
    // Returns its exit status, or none when it had to be killed.
    std::optional<int> quit(std::chrono::milliseconds limit = std::chrono::seconds(20));
    bool isRunning() const { return pid_ != 0 && !exited_; }
    // The browser's process id; 0 before it is launched.
    GPid pid() const { return pid_; }

    // Spins the default main context until `done` holds or `limit` passes.
    static bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);

private:
    std::vector<std::string> environment() const;

    std::string root_;
    std::string home_;
    std::string configHome_;
    std::string display_;
    GTestDBus* bus_ = nullptr;
    GPid pid_ = 0;
    bool exited_ = false;
    int exitStatus_ = 0;
};

// Reads a key of a settings file the way the browser stores it, without changing the file.
std::optional<std::string> readStoredValue(const std::string& settingsFile, const std::string& key);

// Writes blobs (and strings) into a settings file before a launch.
void writeStoredBlob(const std::string& settingsFile, const std::string& key,
                     const std::string& blob);

} // namespace ovel::test
