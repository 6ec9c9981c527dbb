#include "app/GioDesktop.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <fstream>

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace ovel {
namespace {

class GioDesktopTest : public ::testing::Test {
protected:
    test::TemporaryFolder folder;
    const fs::path& home = folder.path();
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

} // namespace
} // namespace ovel
