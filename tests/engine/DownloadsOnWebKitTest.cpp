#include "BrowserOnWebKitFixture.h"

#include <libsoup/soup.h>

#include <filesystem>
#include <map>

namespace fs = std::filesystem;

namespace ovel::test {
namespace {

// Everything below `folder`, by path relative to it, with each file's contents.
std::map<std::string, std::string> treeOf(const fs::path& folder) {
    std::map<std::string, std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = fs::relative(entry.path(), folder).string();
        tree[path] = entry.is_symlink()        ? "(link)"
                     : entry.is_regular_file() ? readFile(entry.path())
                                               : "(folder)";
    }
    return tree;
}

class DownloadsOnWebKit : public BrowserOnWebKit {
protected:
    void SetUp() override {
        BrowserOnWebKit::SetUp();
        downloads = *desktop.downloads;
        server.serveHtml("/a", "<html><head><title>Page A</title></head><body>A</body></html>");
        connections.add(tab().changed.connect([this](TabFields fields) {
            if (fields.has(TabField::DownloadMessage)) {
                messages.push_back(tab().lastDownloadMessage.get().value_or("(none)"));
            }
        }));
        connections.add(state->downloads.changed().connect([this](const auto& list) {
            if (!list.empty()) {
                entries.push_back(std::string(list[0].statusLabel()) + " " + list[0].fileName);
            }
        }));
    }

    // Waits until the list holds `count` entries and the newest has finished or failed.
    bool waitForDownloadEnd(std::size_t count) {
        return waitUntil([&] {
            const auto& list = state->downloads.get();
            return list.size() == count && (list[0].status == DownloadStatus::Finished ||
                                            list[0].status == DownloadStatus::Failed);
        });
    }

    fs::path downloads;
    std::vector<std::string> messages;
    std::vector<std::string> entries;
};

TEST_F(DownloadsOnWebKit, TransferBrokenOffEndsFailedWithTheEnginesMessage) {
    // The engine's own description of the failure, heard beside the browser.
    std::string engineMessage;
    const gulong handler = g_signal_connect(
        engine->networkSession(), "download-started",
        G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download, std::string* message) {
            g_signal_connect(download, "failed",
                             G_CALLBACK(+[](WebKitDownload*, GError* error, std::string* text) {
                                 *text = error->message;
                             }),
                             message);
        }),
        &engineMessage);
    server.serveBrokenBody("/cut.bin", "application/octet-stream", std::string(5000, 'x'), 1000000);
    ASSERT_TRUE(openAndWait(server.url("/a")));

    state->openURL(server.url("/cut.bin"));
    ASSERT_TRUE(waitForDownloadEnd(1)) << joined(entries);
    // WebKit follows "failed" with "finished"; the entry must stay failed.
    runMainLoopFor(500ms);
    g_signal_handler_disconnect(engine->networkSession(), handler);
    ASSERT_FALSE(engineMessage.empty());
    EXPECT_EQ(tab().lastDownloadMessage.get(), "Download failed: " + engineMessage);
    EXPECT_EQ(joined(entries), "Downloading cut.bin | Failed cut.bin");
    const DownloadRecord& record = state->downloads.get()[0];
    EXPECT_EQ(record.progress, 0.0);
    EXPECT_EQ(record.destinationPath, (downloads / "cut.bin").string());
    // Nothing in the folder may pass for the whole file.
    const auto left = treeOf(downloads);
    for (const auto& [name, contents] : left) {
        EXPECT_LT(contents.size(), 1000000u) << name;
    }
    EXPECT_EQ(tab().title.get(), "Page A");
    EXPECT_FALSE(tab().isLoading.get());
}

// Responses whose first part is sent at once and whose rest waits until the test releases it,
// so that transfers overlap for as long as a test needs.
class HeldAttachments {
public:
    HeldAttachments(LoopbackServer& server, std::string fileName) : fileName_(std::move(fileName)) {
        for (const char* path : {"/one", "/two"}) {
            server.handle(path, [this, path](SoupServerMessage* message,
                                             const LoopbackServer::Request&) {
                auto* headers = soup_server_message_get_response_headers(message);
                soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
                soup_message_headers_set_content_type(headers, "application/octet-stream", nullptr);
                soup_message_headers_append(headers, "Content-Disposition",
                                            ("attachment; filename=" + fileName_).c_str());
                soup_server_message_set_status(message, 200, nullptr);
                // Large enough that the engine starts writing the file before the end. A
                // chunked body not yet complete keeps the response open.
                const std::string head = std::string(path) + std::string(100000, '.');
                soup_message_body_append(soup_server_message_get_response_body(message),
                                         SOUP_MEMORY_COPY, head.data(), head.size());
                held_.push_back(SOUP_SERVER_MESSAGE(g_object_ref(message)));
            });
        }
    }
    ~HeldAttachments() { release(); }

    void release() {
        for (auto* message : held_) {
            auto* body = soup_server_message_get_response_body(message);
            soup_message_body_append(body, SOUP_MEMORY_STATIC, "end", 3);
            soup_message_body_complete(body);
            // The server stopped writing when it ran out of body; this sets it going again.
            soup_server_message_unpause(message);
            g_object_unref(message);
        }
        held_.clear();
    }

private:
    std::string fileName_;
    std::vector<SoupServerMessage*> held_;
};

// The engine creates the destination as soon as it is chosen, so a second download of the same
// name, chosen while the first still runs, finds the name taken. Both run in one tab, and each
// ends in its own entry.
TEST_F(DownloadsOnWebKit, OverlappingDownloadsOfOneTabKeepBothFilesAndEntries) {
    HeldAttachments attachments(server, "same.bin");
    state->openURL(server.url("/one"));
    ASSERT_TRUE(waitUntil([&] { return state->downloads.get().size() == 1; }));
    state->openURL(server.url("/two"));
    ASSERT_TRUE(waitUntil([&] { return state->downloads.get().size() == 2; }));
    EXPECT_EQ(state->downloads.get()[1].status, DownloadStatus::Started)
        << "the first transfer still runs when the second chooses its name";
    attachments.release();
    ASSERT_TRUE(waitUntil([&] {
        const auto& list = state->downloads.get();
        return list[0].status != DownloadStatus::Started &&
               list[1].status != DownloadStatus::Started;
    })) << joined(entries);
    const auto& list = state->downloads.get();
    EXPECT_EQ(std::string(list[0].statusLabel()) + " " + list[0].fileName + ", " +
                  std::string(list[1].statusLabel()) + " " + list[1].fileName,
              "Finished same-1.bin, Finished same.bin");
    const auto files = treeOf(downloads);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files.at("same.bin"), "/one" + std::string(100000, '.') + "end");
    EXPECT_EQ(files.at("same-1.bin"), "/two" + std::string(100000, '.') + "end");
}

TEST_F(DownloadsOnWebKit, CancelStopsTheTransferAndLeavesNoFile) {
    HeldAttachments attachments(server, "partial.bin");
    ASSERT_TRUE(openAndWait(server.url("/a")));
    state->openURL(server.url("/one"));
    ASSERT_TRUE(waitUntil([&] {
        return state->downloads->size() == 1 && fs::exists(downloads / "partial.bin.wkdownload");
    })) << joined(entries);
    state->cancelDownload(state->downloads->front());
    attachments.release();
    runMainLoopFor(1000ms);
    EXPECT_EQ(state->downloads->front().statusLabel(), "Cancelled") << joined(entries);
    EXPECT_EQ(tab().lastDownloadMessage.get(), "Download cancelled");
    EXPECT_EQ(joined(entries).find("Failed"), std::string::npos) << joined(entries);
    EXPECT_EQ(joined(entries).find("Finished"), std::string::npos) << joined(entries);
    EXPECT_TRUE(treeOf(downloads).empty());
}

TEST_F(DownloadsOnWebKit, AttachmentsWhatTheEngineCannotShowAndMarkedLinksAreSaved) {
    server.serveAttachment("/get", "report.txt", "the report", "text/plain");
    server.serve("/file.bin", {200, "application/x-ovel-test", "0123456789", {}});
    server.serve("/file.txt", {200, "text/plain", "linked", {}});
    server.serveHtml("/links", titled("Links", "<a id=link download href='/file.txt'>f</a>"));
    ASSERT_TRUE(openAndWait(server.url("/links")));

    state->openURL(server.url("/get"));
    ASSERT_TRUE(waitForDownloadEnd(1)) << joined(entries);
    EXPECT_TRUE(waitUntil([&] { return messages.size() == 3; })) << joined(messages);
    EXPECT_EQ(joined(messages),
              "Starting download... | Downloading report.txt | Download finished");
    const DownloadRecord first = state->downloads.get()[0];
    EXPECT_EQ(first.destinationPath, (downloads / "report.txt").string());
    EXPECT_EQ(first.sourceURL, server.url("/links")) << "the page the tab showed, not the file";
    EXPECT_EQ(first.progress, 1.0);

    state->openURL(server.url("/file.bin"));
    ASSERT_TRUE(waitForDownloadEnd(2)) << joined(entries);
    runScript(webKitView(tab()), "document.getElementById('link').click(); return 1;");
    ASSERT_TRUE(waitForDownloadEnd(3)) << joined(entries);
    EXPECT_EQ(joined(entries), "Downloading report.txt | Finished report.txt | Downloading "
                               "file.bin | Finished file.bin | Downloading file.txt | Finished "
                               "file.txt");
    const std::map<std::string, std::string> saved{
        {"file.bin", "0123456789"}, {"file.txt", "linked"}, {"report.txt", "the report"}};
    EXPECT_EQ(treeOf(downloads), saved);
    // The navigations that became downloads leave the page as it was.
    EXPECT_EQ(tab().title.get(), "Links");
    EXPECT_EQ(state->addressText.get(), server.url("/links"));

    // Without a Downloads folder a download is dropped without a word.
    desktop.downloads.reset();
    state->openURL(server.url("/file.bin"));
    runMainLoopFor(1000ms);
    EXPECT_EQ(state->downloads->size(), 3u);
    EXPECT_EQ(treeOf(downloads), saved);
}

} // namespace
} // namespace ovel::test
