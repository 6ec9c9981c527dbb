#include "app/GioDesktop.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace ovel {
namespace {

fs::path makeTemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "ovel-desktop-XXXXXX").string();
    return mkdtemp(pattern.data()) ? fs::path(pattern) : fs::path();
}

class GioDesktopTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(home.empty()); }
    void TearDown() override { fs::remove_all(home); }

    const fs::path home = makeTemporaryFolder();
};

TEST_F(GioDesktopTest, DownloadsGoToTheNamedFolderElseDownloadsInHome) {
    std::ofstream(home / "file") << "in the way";
    const std::string fallback = home / "Downloads";
    const struct {
        const char* name;
        std::optional<std::string> named;
        std::string expected;
    } cases[] = {
        {"none named", std::nullopt, fallback},
        {"home itself", home.string(), fallback},
        {"home with a slash", home.string() + "/", fallback},
        {"own folder, made with its parents", home / "Incoming" / "New", home / "Incoming" / "New"},
        {"named folder cannot be made", home / "file" / "sub", fallback},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(fallback);
        const auto folder =
            GioDesktop::downloadsFolderFor(c.named ? c.named->c_str() : nullptr, home.string());
        EXPECT_EQ(folder, c.expected);
        EXPECT_TRUE(fs::is_directory(c.expected));
    }

    fs::remove_all(fallback);
    std::ofstream(fallback) << "a file where the folder should be";
    EXPECT_EQ(GioDesktop::downloadsFolderFor(nullptr, home.string()), std::nullopt);
}

TEST_F(GioDesktopTest, FileExistsForAnythingAtThePathEvenADanglingLink) {
    std::ofstream(home / "file") << "x";
    fs::create_directory(home / "folder");
    fs::create_symlink(home / "gone", home / "dangling");
    const struct {
        std::string path;
        bool exists;
    } cases[] = {
        {home / "file", true},
        {home / "folder", true},
        {home / "dangling", true},
        {home / "gone", false},
        {home / "file" / "below", false},
        {(home / "file").string() + "\0suffix"s, false},
        {"", false},
    };
    const GioDesktop desktop;
    for (const auto& c : cases) {
        EXPECT_EQ(desktop.fileExists(c.path), c.exists) << c.path;
    }
}

// GLib reads $HOME and user-dirs.dirs once per process, so each case runs in a new process.
[[noreturn]] void exitZeroWhenDownloadsFolderIs(const char* userDirs, const char* expectedName) {
    const fs::path home = makeTemporaryFolder();
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home / ".config").c_str(), 1);
    if (userDirs) {
        fs::create_directories(home / ".config");
        std::ofstream(home / ".config" / "user-dirs.dirs") << userDirs;
    }
    const auto folder = GioDesktop().downloadsFolder();
    const std::string expected = home / expectedName;
    const bool right = folder == expected && fs::is_directory(expected);
    if (!right) {
        std::fprintf(stderr, "got %s, expected %s\n", folder ? folder->c_str() : "none",
                     expected.c_str());
    }
    fs::remove_all(home);
    std::_Exit(right ? 0 : 1);
}

TEST(GioDesktopInFreshProcess, DownloadsFolderFollowsUserDirs) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const struct {
        const char* userDirs;
        const char* expectedName;
    } cases[] = {
        {nullptr, "Downloads"},
        {"XDG_DOWNLOAD_DIR=\"$HOME/\"\n", "Downloads"},
        {"XDG_DOWNLOAD_DIR=\"$HOME/Incoming\"\n", "Incoming"},
    };
    for (const auto& c : cases) {
        EXPECT_EXIT(exitZeroWhenDownloadsFolderIs(c.userDirs, c.expectedName),
                    ::testing::ExitedWithCode(0), "")
            << (c.userDirs ? c.userDirs : "no user-dirs.dirs");
    }
}

} // namespace
} // namespace ovel
