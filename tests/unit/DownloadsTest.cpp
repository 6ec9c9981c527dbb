#include "support/BrowserFixture.h"
#include "web/DownloadNaming.h"

#include <set>

namespace ovel::test {
namespace {

class DownloadNaming : public ::testing::Test {
protected:
    std::string unique(std::string_view suggested) {
        return uniqueDownloadURL("/dl", suggested, [this](std::string_view path) {
            return taken.count(std::string(path)) > 0;
        });
    }
    std::set<std::string> taken;
};

TEST_F(DownloadNaming, NumbersGoBeforeTheLastExtension) {
    taken = {"/dl/report.pdf", "/dl/report-1.pdf", "/dl/README", "/dl/archive.tar.gz", "/dl/a.zip"};
    EXPECT_EQ(unique("report.pdf"), "/dl/report-2.pdf");
    EXPECT_EQ(unique("README"), "/dl/README-1");
    EXPECT_EQ(unique("archive.tar.gz"), "/dl/archive.tar-1.gz");
    EXPECT_EQ(unique("a.zip"), "/dl/a-1.zip");
    taken.insert("/dl/a-1.zip");
    EXPECT_EQ(unique("a.zip"), "/dl/a-2.zip");
    EXPECT_EQ(unique("fresh.txt"), "/dl/fresh.txt");
}

TEST_F(DownloadNaming, HostileNamesStayInsideTheFolder) {
    const std::string longName(300, 'x');
    // Continuation bytes with no first byte are invalid UTF-8; the cap cuts them where it falls.
    const std::string stray(300, '\x80');
    // Suggested names and the destinations they must get.
    const std::pair<std::string, std::string> cases[] = {
        {"..", "/dl/download"},
        {"a/../..", "/dl/download"},
        {"/etc/passwd", "/dl/passwd"},
        {"", "/dl/download"},
        {"...", "/dl/download"},
        {"evil\x01\nname\x7F.txt", "/dl/evilname.txt"},
        {"..\\..\\windows.ini", "/dl/windows.ini"},
        {longName + ".pdf", "/dl/" + std::string(maxDownloadFileNameBytes - 4, 'x') + ".pdf"},
        {" . ", "/dl/download"},
        {stray, "/dl/" + std::string(maxDownloadFileNameBytes, '\x80')},
        {"." + stray, "/dl/." + std::string(maxDownloadFileNameBytes - 1, '\x80')},
        {".." + stray, "/dl/.." + std::string(maxDownloadFileNameBytes - 2, '\x80')},
        {stray + ".pdf", "/dl/" + std::string(maxDownloadFileNameBytes - 4, '\x80') + ".pdf"},
        {std::string(300, '.') + std::string(40, 'x'), "/dl/download"},
    };
    for (const auto& [suggested, expected] : cases) {
        EXPECT_EQ(unique(suggested), expected) << suggested;
    }
    taken = {"/dl/" + std::string(maxDownloadFileNameBytes - 4, 'x') + ".pdf"};
    const std::string numbered = unique(longName + ".pdf");
    EXPECT_EQ(numbered.substr(numbered.size() - 6), "-1.pdf");
    EXPECT_EQ(numbered.size() - 4, maxDownloadFileNameBytes)
        << "the number fits inside the byte cap";
    // A multi-byte character is never cut in half by the cap.
    std::string accents;
    for (int i = 0; i < 200; ++i) {
        accents += "é";
    }
    const std::string capped = safeDownloadFileName(accents);
    EXPECT_LE(capped.size(), maxDownloadFileNameBytes);
    EXPECT_EQ(capped.size() % 2, 0u);
}

using DownloadsList = LaunchedBrowser;

TEST_F(DownloadsList, EventsFoldIntoTwentyFiveNewestEntries) {
    std::vector<std::shared_ptr<FakeDownload>> transfers;
    for (int i = 1; i <= 26; ++i) {
        transfers.push_back(viewAt(0).simulateDownload("D" + std::to_string(i) + ".bin"));
    }
    EXPECT_TRUE(state->downloads->empty()) << "events are applied on the main queue";
    mainQueue.drain();
    ASSERT_EQ(state->downloads->size(), 25u);
    EXPECT_EQ(state->downloads->front().fileName, "D26.bin");
    EXPECT_EQ(state->downloads->back().fileName, "D2.bin");

    transfers[25]->finish();
    transfers[0]->fail("Gone");
    mainQueue.drain();
    EXPECT_EQ(state->downloads->front().fileName, "D1.bin") << "an unknown id makes a new entry";
    EXPECT_EQ(state->downloads.get()[1].status, DownloadStatus::Finished);
}

TEST_F(DownloadsList, ListOperationsChangeOnlyTheEntry) {
    showPage(0, "https://src.test/", "Source");
    const auto transferA = viewAt(0).simulateDownload("A.bin");
    const auto transferB = viewAt(0).simulateDownload("B.bin");
    transferB->finish();
    mainQueue.drain();
    const DownloadRecord a = state->downloads.get()[1];
    const DownloadRecord b = state->downloads.get()[0];
    EXPECT_EQ(b.destinationPath, "/home/user/Downloads/B.bin")
        << "finishing keeps the path of the start";

    state->pauseDownload(a);
    EXPECT_EQ(state->downloads.get()[1].progress, 0.08);
    state->pauseDownload(b);
    EXPECT_EQ(state->downloads.get()[0].progress, 0.5);
    EXPECT_EQ(state->downloads.get()[0].status, DownloadStatus::Paused);
    state->resumeDownload(b);
    EXPECT_EQ(state->downloads.get()[0].status, DownloadStatus::Started);
    state->cancelDownload(a);
    EXPECT_EQ(state->downloads.get()[1].status, DownloadStatus::Cancelled);
    EXPECT_EQ(state->downloads.get()[1].progress, 0.0);
    EXPECT_EQ(transferA->cancelCount, 1) << "the transfer stops too";
    transferA->fail("Cancelled by the user");
    mainQueue.drain();
    EXPECT_EQ(state->downloads.get()[1].status, DownloadStatus::Cancelled)
        << "the engine's failure report of a cancel reads as cancelled";

    state->openDownload(state->downloads.get()[0]);
    EXPECT_EQ(desktop.revealed, std::vector<std::string>{"/home/user/Downloads/B.bin"});
    state->retryDownload(state->downloads.get()[0]);
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://src.test/");
}

} // namespace
} // namespace ovel::test
