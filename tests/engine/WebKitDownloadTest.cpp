#include "WebKitTestFixture.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace ovel::test {
namespace {

class WebKitDownload : public WebKitTest {
protected:
    void SetUp() override {
        WebKitTest::SetUp();
        downloads = environment.home() + "/Downloads";
        std::filesystem::create_directories(downloads);
        recorder->folder = downloads;
        server.serveHtml("/a", "<html><head><title>Page A</title></head><body>"
                               "<a id=link download href='/file.txt'>file</a></body></html>");
    }

    // A page showing /a whose downloads report to `recorder`.
    AdaptedPage& openPageAtA() {
        auto& page = openPage();
        page.delegate.downloadDelegate = recorder;
        page.view->load({server.url("/a")});
        EXPECT_TRUE(page.waitForOutcomes(1)) << page.events();
        return page;
    }

    bool waitForDownloadEnd() {
        return waitUntil([&] {
            return std::any_of(
                recorder->events.begin(), recorder->events.end(),
                [](const std::string& e) { return e == "finish" || e.starts_with("fail"); });
        });
    }

    std::string downloadEvents() const {
        std::string text;
        for (const auto& event : recorder->events) {
            text += (text.empty() ? "" : " | ") + event;
        }
        return text;
    }

    std::string contentsOf(const std::string& name) const {
        std::ifstream file(downloads + "/" + name, std::ios::binary);
        std::ostringstream contents;
        contents << file.rdbuf();
        return file ? contents.str() : "(missing)";
    }

    std::string downloads;
    std::shared_ptr<RecordingDownloadDelegate> recorder =
        std::make_shared<RecordingDownloadDelegate>();
};

TEST_F(WebKitDownload, ResponseTheEngineCannotShowIsSaved) {
    LoopbackServer::Response binary;
    binary.contentType = "application/x-ovel-test";
    binary.body = "0123456789";
    server.serve("/file.bin", binary);
    auto& page = openPageAtA();

    page.view->load({server.url("/file.bin")});
    ASSERT_TRUE(waitUntil([&] { return page.delegate.downloads.size() == 1; })) << page.events();
    // The engine keeps the download going without anyone holding it.
    page.delegate.downloads.clear();
    ASSERT_TRUE(waitForDownloadEnd());
    EXPECT_EQ(downloadEvents(), "destination file.bin | finish");
    EXPECT_EQ(contentsOf("file.bin"), "0123456789");
    ASSERT_EQ(page.delegate.responses.size(), 2u);
    EXPECT_FALSE(page.delegate.responses[1].canShowMimeType);

    // The navigation that became a download ends quietly and leaves the page as it was.
    ASSERT_TRUE(page.waitForOutcomes(2)) << page.events();
    EXPECT_EQ(page.delegate.events.back(), "fail");
    EXPECT_EQ(page.view->url(), server.url("/a"));
    EXPECT_EQ(page.view->title(), "Page A");
}

TEST_F(WebKitDownload, AttachmentIsSavedEvenWhenItsTypeCouldBeShown) {
    server.serveAttachment("/report", "report.txt", "plain text", "text/plain");
    auto& page = openPageAtA();
    page.view->load({server.url("/report")});
    ASSERT_TRUE(waitForDownloadEnd()) << page.events();
    EXPECT_EQ(downloadEvents(), "destination report.txt | finish");
    EXPECT_EQ(contentsOf("report.txt"), "plain text");
    EXPECT_FALSE(page.delegate.responses.back().canShowMimeType);
}

TEST_F(WebKitDownload, ActionAnsweredWithDownloadIsSavedWithoutLoading) {
    server.serveHtml("/page.html", "<title>Not shown</title>");
    auto& page = openPageAtA();
    page.delegate.actionPolicy = NavigationActionPolicy::Download;
    page.view->load({server.url("/page.html")});
    ASSERT_TRUE(waitForDownloadEnd()) << page.events();
    EXPECT_EQ(downloadEvents(), "destination page.html | finish");
    EXPECT_EQ(contentsOf("page.html"), "<title>Not shown</title>");
    EXPECT_EQ(page.delegate.count("start"), 1u);
    EXPECT_EQ(page.view->url(), server.url("/a"));
}

TEST_F(WebKitDownload, LinkWithDownloadAttributeIsSaved) {
    LoopbackServer::Response text;
    text.contentType = "text/plain";
    text.body = "linked";
    server.serve("/file.txt", text);
    auto& page = openPageAtA();
    runScript(page.webKitView(), "document.getElementById('link').click(); return 1;");
    ASSERT_TRUE(waitForDownloadEnd()) << page.events();
    EXPECT_EQ(downloadEvents(), "destination file.txt | finish");
    EXPECT_EQ(contentsOf("file.txt"), "linked");
    EXPECT_EQ(page.delegate.actions.back().url, server.url("/file.txt"));
}

TEST_F(WebKitDownload, TransferCutShortIsAFailureOnly) {
    server.serveBrokenBody("/cut.bin", "application/octet-stream", std::string(5000, 'x'), 1000000);
    auto& page = openPageAtA();
    page.view->load({server.url("/cut.bin")});
    ASSERT_TRUE(waitForDownloadEnd()) << page.events();
    // WebKit follows "failed" with "finished": that one must not read as a success.
    runMainLoopFor(500ms);
    ASSERT_EQ(recorder->events.size(), 2u) << downloadEvents();
    EXPECT_EQ(recorder->events[0], "destination cut.bin");
    EXPECT_TRUE(recorder->events[1].starts_with("fail ")) << downloadEvents();
}

// Told not to overwrite, WebKit fails the download and then deletes the file that was there.
TEST_F(WebKitDownload, ExistingFileIsNeverReplaced) {
    std::ofstream(downloads + "/file.bin") << "old contents";
    LoopbackServer::Response binary;
    binary.contentType = "application/octet-stream";
    binary.body = "new contents";
    server.serve("/file.bin", binary);
    auto& page = openPageAtA();
    page.view->load({server.url("/file.bin")});
    ASSERT_TRUE(waitForDownloadEnd()) << page.events();
    runMainLoopFor(300ms);
    ASSERT_EQ(recorder->events.size(), 2u) << downloadEvents();
    EXPECT_TRUE(recorder->events[1].starts_with("fail ")) << downloadEvents();
    EXPECT_EQ(contentsOf("file.bin"), "old contents") << downloadEvents();
}

TEST_F(WebKitDownload, DownloadWithoutDestinationIsDroppedSilently) {
    recorder->folder.reset();
    LoopbackServer::Response binary;
    binary.contentType = "application/octet-stream";
    binary.body = "unwanted";
    server.serve("/file.bin", binary);
    auto& page = openPageAtA();
    page.view->load({server.url("/file.bin")});
    ASSERT_TRUE(waitUntil([&] { return !recorder->events.empty(); })) << page.events();
    runMainLoopFor(500ms);
    EXPECT_EQ(downloadEvents(), "destination file.bin");
    EXPECT_TRUE(std::filesystem::is_empty(downloads));
}

} // namespace
} // namespace ovel::test
