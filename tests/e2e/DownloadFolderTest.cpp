#include "e2e/E2eSteps.h"
#include "support/LoopbackServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace ovel::test {
namespace {

using namespace std::chrono_literals;

std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream contents;
    contents << stream.rdbuf();
    return contents.str();
}

// Bytes no text conversion would leave alone.
std::string binaryBody() {
    std::string body;
    for (int i = 0; i < 4096; ++i) {
        body.push_back(char(i * 7 % 256));
    }
    return body;
}

// The browser, launched with a stored session whose one tab shows an attachment, saves the
// file whole into the folder the desktop's user-dirs.dirs names (how that file is read, and
// what happens without a usable entry, is GioDesktop's unit test).
TEST(DownloadFolder, TheFolderUserDirsNamesIsUsed) {
    LoopbackServer server;
    const std::string body = binaryBody();
    server.serveAttachment("/get", "report.bin", body);
    ProcessBrowser browser;
    std::ofstream(browser.configHome() + "/user-dirs.dirs")
        << "XDG_DOWNLOAD_DIR=\"$HOME/Incoming\"\n";
    seedSession(browser, {0, {{server.url("/get")}}});
    ASSERT_TRUE(browser.launch());

    const fs::path saved = fs::path(browser.home()) / "Incoming" / "report.bin";
    // The engine writes to a partial file and renames it when the transfer is complete.
    EXPECT_TRUE(ProcessBrowser::waitUntil(
        [&] { return fs::exists(saved) && contentsOf(saved).size() == body.size(); }, 60s))
        << "requests of the file: " << server.requestCount("/get");
    EXPECT_EQ(contentsOf(saved), body);
    EXPECT_FALSE(fs::exists(fs::path(browser.home()) / "report.bin"));
    EXPECT_TRUE(browser.isRunning());
    EXPECT_EQ(browser.quit(), 0);
}

} // namespace
} // namespace ovel::test
