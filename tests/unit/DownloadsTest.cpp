#include "support/BrowserFixture.h"
#include "web/ContentPolicies.h"
#include "web/DownloadNaming.h"
#include "web/ErrorPage.h"

#include <gtest/gtest.h>
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

constexpr auto ask = PermissionSetting::Ask;
constexpr auto allow = PermissionSetting::Allow;
constexpr auto block = PermissionSetting::Block;

using DesktopIntegration = LaunchedBrowser;

TEST_F(DesktopIntegration, TheEngineHearsTheNotificationRulesOfTheActiveProfile) {
    EXPECT_EQ(engine.notificationPermissions, NotificationPermissions{});
    // Hosts by their notification setting alone, sorted; the ones that ask are left out.
    for (const auto& [host, notifications] : {std::pair{"news.test", allow},
                                              {"cam.test", ask},
                                              {"ads.test", block},
                                              {"a.test", allow}}) {
        showPage(0, std::string("https://") + host + "/", host);
        state->setCurrentSiteRule({block, allow, block, notifications});
    }
    EXPECT_EQ(engine.notificationPermissions,
              (NotificationPermissions{{"a.test", "news.test"}, {"ads.test"}}));
    state->setCurrentSiteRule({ask, ask, ask, block});
    EXPECT_EQ(engine.notificationPermissions,
              (NotificationPermissions{{"news.test"}, {"a.test", "ads.test"}}));

    // A fresh profile has no rules: nothing stays decided for its pages.
    state->createProfile();
    EXPECT_EQ(engine.notificationPermissions, NotificationPermissions{});
}

TEST_F(DesktopIntegration, APageNotificationGoesToTheDesktopUnderItsTab) {
    state->newTab();
    const BrowserTab& second = *state->tabs.get().at(1);
    WebViewDelegate& page = viewAt(1).delegate();
    page.pageDidShowNotification({7, "<b>Mail</b>", "2 new"});
    page.pageDidShowNotification({8, "Chat", ""});
    page.pageDidCloseNotification(7);

    ASSERT_EQ(desktop.shownNotifications.size(), 2u);
    const DesktopNotification first = desktop.shownNotifications[0];
    EXPECT_EQ(first, (DesktopNotification{first.id, "<b>Mail</b>", "2 new", second.id()}));
    EXPECT_NE(first.id, desktop.shownNotifications[1].id);
    EXPECT_EQ(desktop.withdrawnNotifications, std::vector<std::string>{first.id});
    // Another tab's notification of the same number is a different one.
    viewAt(0).delegate().pageDidShowNotification({7, "Other", ""});
    EXPECT_NE(desktop.shownNotifications.back().id, first.id);
}

TEST_F(DesktopIntegration, FullScreenFollowsTheShownPageOnly) {
    state->newTab();
    struct Step {
        int tab;
        bool fullscreen;
        bool expected;
    };
    // Tab 1 is selected; tab 0 is in the background.
    const Step steps[] = {
        {0, true, false}, {1, true, true}, {0, false, false}, {1, true, true}, {1, false, false}};
    for (const Step& step : steps) {
        viewAt(step.tab).delegate().pageDidChangeFullscreen(step.fullscreen);
        EXPECT_EQ(state->pageFullscreen.get(), step.expected)
            << "tab " << step.tab << (step.fullscreen ? " enters" : " leaves");
    }
    viewAt(1).delegate().pageDidChangeFullscreen(true);
    state->selectTab(0);
    EXPECT_FALSE(state->pageFullscreen.get()) << "the page in full screen was left behind";
}

TEST(CertificateErrorPage, NamesTheHostAndTheProblemAsPlainText) {
    const std::string page =
        certificateErrorPageHTML("evil.test\"><script>x</script>", "Expired & <revoked>");
    EXPECT_NE(page.find("evil.test&quot;&gt;&lt;script&gt;x&lt;/script&gt;"), std::string::npos);
    EXPECT_NE(page.find("Expired &amp; &lt;revoked&gt;"), std::string::npos);
    EXPECT_EQ(page.find("<script>"), std::string::npos) << "nothing of the network runs";
    EXPECT_NE(page.find("Not a secure connection"), std::string::npos);
}

} // namespace
} // namespace ovel::test
