#include "support/ProcessBrowser.h"

#include "app/SqliteSettingsStore.h"

#include <glib/gstdio.h>
#include <sqlite3.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <vector>

#ifndef OVEL_WEB_BINARY
#define OVEL_WEB_BINARY "build/ovel-web"
#endif

namespace ovel::test {

ProcessBrowser::ProcessBrowser() {
    g_autoptr(GError) error = nullptr;
    g_autofree char* root = g_dir_make_tmp("ovel-e2e-XXXXXX", &error);
    root_ = root != nullptr ? root : "/tmp";
    home_ = root_ + "/home";
    configHome_ = root_ + "/config";
    for (const std::string& folder : {home_, configHome_, root_ + "/data", root_ + "/cache"}) {
        std::filesystem::create_directories(folder);
    }
    // Starting the private bus unsets DISPLAY in this process; the browser still needs it.
    if (const char* display = g_getenv("DISPLAY")) {
        display_ = display;
    }
    bus_ = g_test_dbus_new(G_TEST_DBUS_NONE);
    // The accessibility bus is started on demand through the session bus.
    g_test_dbus_add_service_dir(bus_, "/usr/share/dbus-1/services");
    g_test_dbus_up(bus_);
}

ProcessBrowser::~ProcessBrowser() {
    if (isRunning()) {
        quit(std::chrono::seconds(5));
    }
    g_test_dbus_down(bus_);
    g_object_unref(bus_);
    // Put back for the next browser this process starts.
    if (!display_.empty()) {
        g_setenv("DISPLAY", display_.c_str(), TRUE);
    }
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::vector<std::string> ProcessBrowser::environment() const {
    std::vector<std::string> environment;
    for (char** entry = g_get_environ(); entry && *entry; ++entry) {
        environment.emplace_back(*entry);
    }
    auto setVariable = [&](const std::string& name, const std::string& value) {
        std::erase_if(environment, [&](const std::string& e) { return e.starts_with(name + "="); });
        environment.push_back(name + "=" + value);
    };
    if (!display_.empty()) {
        setVariable("DISPLAY", display_);
    }
    setVariable("HOME", home_);
    setVariable("XDG_CONFIG_HOME", configHome_);
    setVariable("XDG_DATA_HOME", root_ + "/data");
    setVariable("XDG_CACHE_HOME", root_ + "/cache");
    setVariable("DBUS_SESSION_BUS_ADDRESS", g_test_dbus_get_bus_address(bus_));
    // Every run starts with an empty cache: left to find the system's ad and tracker lists, the
    // browser would spend each one compiling them in the background.
    if (std::getenv("OVEL_FILTER_LISTS") == nullptr) {
        setVariable("OVEL_FILTER_LISTS", "");
    }
    // Driven from outside through its accessibility tree, as a screen reader would.
    for (const std::string name : {"NO_AT_BRIDGE", "GTK_A11Y"}) {
        std::erase_if(environment, [&](const std::string& e) { return e.starts_with(name + "="); });
    }
    return environment;
}

namespace {

// argv or envp for g_spawn: pointers into `strings`, ended by null.
std::vector<char*> spawnList(std::vector<std::string>& strings) {
    std::vector<char*> list;
    for (std::string& entry : strings) {
        list.push_back(entry.data());
    }
    list.push_back(nullptr);
    return list;
}

} // namespace

std::optional<int> ProcessBrowser::runAgain(const std::vector<std::string>& arguments) {
    std::vector<std::string> environment = this->environment();
    std::vector<std::string> command{OVEL_WEB_BINARY};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<char*> envp = spawnList(environment);
    std::vector<char*> argv = spawnList(command);
    int status = 0;
    g_autoptr(GError) error = nullptr;
    if (!g_spawn_sync(nullptr, argv.data(), envp.data(), G_SPAWN_DEFAULT, nullptr, nullptr, nullptr,
                      nullptr, &status, &error)) {
        return std::nullopt;
    }
    return g_spawn_check_wait_status(status, nullptr) ? 0 : status;
}

bool ProcessBrowser::launch() {
    std::vector<std::string> environment = this->environment();
    std::vector<char*> envp = spawnList(environment);
    std::string binary = OVEL_WEB_BINARY;
    char* argv[] = {binary.data(), nullptr};
    g_autoptr(GError) error = nullptr;
    if (!g_spawn_async(nullptr, argv, envp.data(), G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr,
                       &pid_, &error)) {
        return false;
    }
    exited_ = false;
    g_child_watch_add(
        pid_,
        +[](GPid pid, int status, gpointer self) {
            auto* browser = static_cast<ProcessBrowser*>(self);
            browser->exited_ = true;
            browser->exitStatus_ = status;
            g_spawn_close_pid(pid);
        },
        this);
    return true;
}

std::string ProcessBrowser::busAddress() const {
    return g_test_dbus_get_bus_address(bus_);
}

std::optional<int> ProcessBrowser::quit(std::chrono::milliseconds limit) {
    if (!isRunning()) {
        return exitStatus_;
    }
    g_autoptr(GError) error = nullptr;
    g_autoptr(GDBusConnection) bus = g_dbus_connection_new_for_address_sync(
        g_test_dbus_get_bus_address(bus_),
        GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (bus != nullptr) {
        g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
            bus, "org.ovel.Web", "/org/ovel/Web", "org.gtk.Actions", "Activate",
            g_variant_new("(sava{sv})", "quit", nullptr, nullptr), nullptr, G_DBUS_CALL_FLAGS_NONE,
            5000, nullptr, nullptr);
    }
    if (waitUntil([this] { return exited_; }, limit)) {
        return exitStatus_;
    }
    kill(pid_, SIGKILL);
    waitUntil([this] { return exited_; }, std::chrono::seconds(5));
    return std::nullopt;
}

bool ProcessBrowser::waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const gint64 deadline = g_get_monotonic_time() + limit.count() * 1000;
    while (!done()) {
        if (g_get_monotonic_time() > deadline) {
            return false;
        }
        if (!g_main_context_iteration(nullptr, FALSE)) {
            g_usleep(10'000);
        }
    }
    return true;
}

std::optional<std::string> readStoredValue(const std::string& settingsFile,
                                           const std::string& key) {
    sqlite3* db = nullptr;
    std::optional<std::string> value;
    if (sqlite3_open_v2(settingsFile.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(db, 2000);
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db, "SELECT value FROM settings WHERE key = ?1", -1, &statement,
                               nullptr) == SQLITE_OK) {
            sqlite3_bind_text(statement, 1, key.data(), static_cast<int>(key.size()),
                              SQLITE_TRANSIENT);
            if (sqlite3_step(statement) == SQLITE_ROW) {
                const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, 0));
                value = std::string(bytes != nullptr ? bytes : "",
                                    static_cast<std::size_t>(sqlite3_column_bytes(statement, 0)));
            }
        }
        sqlite3_finalize(statement);
    }
    sqlite3_close(db);
    return value;
}

void writeStoredBlob(const std::string& settingsFile, const std::string& key,
                     const std::string& blob) {
    SqliteSettingsStore::open(settingsFile)->setData(key, blob);
}

} // namespace ovel::test
