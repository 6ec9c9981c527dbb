#include "web/BrowserTab.h"
#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

// A tab as the state makes it, driven from the engine's side through its fake web view.
class BrowserTabTest : public LaunchedBrowser {
protected:
    BrowserTab& tab() { return *state->selectedTab(); }
    FakeWebView& view() { return viewOf(tab()); }
};

using BrowserTabNavigation = BrowserTabTest;

TEST_F(BrowserTabNavigation, ProgressIsReadWhenTheMainQueueRunsAndNeverAfterTheTabIsGone) {
    view().simulateProgress(0.3);
    view().progress = 0.7;
    EXPECT_EQ(tab().loadingProgress.get(), 0.0) << "nothing happens before the queue runs";
    mainQueue.drain();
    EXPECT_EQ(tab().loadingProgress.get(), 0.7);

    state->newTab();
    viewAt(0).simulateProgress(0.9);
    state->closeTab(0);
    EXPECT_EQ(engine.liveViewCount(), 1) << "the tab owns its web view";
    EXPECT_EQ(mainQueue.drain(), 1);
}

// The person keeps their place: the address that failed stays the tab's, in the field, the
// title and the session, and nothing of it enters history.
TEST_F(BrowserTabNavigation, AFailedLoadKeepsItsAddressAndRecordsNoVisit) {
    const std::string failing = "http://127.0.0.1:9/x";
    showPage(0, "https://a.test/", "A");
    view().engineState = "A and before";
    view().simulateFailure(LoadFailure{LoadFailureKind::PortBlocked, failing, {}});
    EXPECT_EQ(tab().url(), failing);
    EXPECT_EQ(tab().title.get(), "127.0.0.1");
    EXPECT_EQ(state->addressText.get(), failing);
    EXPECT_TRUE(tab().canGoBack.get()) << "the page before it is one Back away";
    EXPECT_EQ(state->historyEntries->size(), 1u);
    const auto session = decodeSession(store.data(key(BrowserState::sessionKeyBase)).value());
    EXPECT_EQ(session->tabs.at(0).url, failing);
    EXPECT_EQ(session->tabs.at(0).sessionState, "A and before");

    state->reload();
    EXPECT_EQ(view().loadRequests.back().url, failing) << "Try Again asks for it again";
    EXPECT_FALSE(tab().loadFailure->has_value());

    view().simulateFailure(LoadFailure{LoadFailureKind::ConnectionRefused, failing, {}});
    state->goBack();
    EXPECT_EQ(view().goBackCount, 0) << "the web view still shows the page before";
    EXPECT_EQ(state->addressText.get(), "https://a.test/");
    EXPECT_EQ(tab().title.get(), "A");

    view().simulateFailure(std::nullopt);
    EXPECT_EQ(tab().url(), "https://a.test/") << "a stop or a download is no failure to show";
    EXPECT_EQ(state->historyEntries->size(), 1u);
}

// Fragments and pushState: the address moves with the page, without a load.
TEST_F(BrowserTabNavigation, InPageNavigationUpdatesTheAddressAndTheSession) {
    showPage(0, "https://a.test/doc", "Doc");
    view().simulateInPageNavigation("https://a.test/doc#part-2");
    EXPECT_EQ(state->addressText.get(), "https://a.test/doc#part-2");
    const auto session = decodeSession(store.data(key(BrowserState::sessionKeyBase)).value());
    EXPECT_EQ(session->tabs.at(0).url, "https://a.test/doc#part-2");
}

TEST_F(BrowserTabNavigation, ATypedAddressThatBecomesADownloadLeavesThePageAddress) {
    showPage(0, "https://a.test/", "A");
    state->setAddressText("https://a.test/file.zip");
    state->openURL("https://a.test/file.zip");
    auto download = view().simulateDownload("file.zip");
    mainQueue.drain();
    EXPECT_EQ(state->addressText.get(), "https://a.test/");
}

} // namespace
} // namespace ovel::test
