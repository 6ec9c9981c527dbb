#include "support/TestEnvironment.h"

#include <glib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>

namespace ovel::test {

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "ovel-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(missing)";
}

void writeFile(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
}

TestEnvironment::TestEnvironment() {
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

TestEnvironment::~TestEnvironment() {
    for (const auto& [name, value] : savedVariables_) {
        if (value) {
            g_setenv(name.c_str(), value->c_str(), TRUE);
        } else {
            g_unsetenv(name.c_str());
        }
    }
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    // A tick wakes the loop at least this often, so the deadline is noticed when nothing else
    // happens.
    const guint tick = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool held = condition();
    while (!held && std::chrono::steady_clock::now() < deadline) {
        g_main_context_iteration(nullptr, TRUE);
        held = condition();
    }
    g_source_remove(tick);
    return held;
}

void runMainLoopFor(std::chrono::milliseconds duration) {
    waitUntil([] { return false; }, duration);
}

} // namespace ovel::test
