#include "web/BrowserTab.h"
#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

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

// A page's request for a new window, answered with a fake view from the fake engine.
TEST_F(BrowserTabNavigation, ZoomStaysInItsBoundsWithItsTabAndFindLooksForTrimmedText) {
    state->adjustZoom(+1.0);
    EXPECT_EQ(view().zoom, 2.0);
    state->newTab();
    state->adjustZoom(-1.0);
    EXPECT_EQ(view().zoom, 0.75);
    EXPECT_EQ(viewAt(0).zoom, 2.0);
    state->selectTab(0);
    state->resetZoom();
    EXPECT_EQ(viewAt(0).zoom, 1.1);
    EXPECT_EQ(viewAt(1).zoom, 0.75);

    for (const char* text : {"  NEEDLE  ", " \n ", "thimble"}) {
        state->setFindText(text);
        state->runFind();
    }
    EXPECT_EQ(view().findRequests, (std::vector<std::string>{"NEEDLE", "thimble"}));
}

class FakeNewWebViewRequest : public NewWebViewRequest {
public:
    FakeNewWebViewRequest(FakeWebEngine& engine, std::string url)
        : engine_(engine), url_(std::move(url)) {}
    std::optional<std::string> url() const override { return url_; }
    std::unique_ptr<WebView> createWebView(WebViewDelegate& delegate) override {
        ++made;
        return engine_.createWebView(delegate);
    }
    int made = 0;

private:
    FakeWebEngine& engine_;
    std::string url_;
};

class NewTabsFromPages : public BrowserFixture {
protected:
    void SetUp() override {
        launchFresh();
        // Four tabs, a, b, c, d; b is selected.
        showPage(0, "https://a.test/", "a");
        for (const char* host : {"b", "c", "d"}) {
            state->openInNewTab(std::string("https://") + host + ".test/");
            showPage(state->selectedIndex.get(), std::string("https://") + host + ".test/", host);
        }
        state->selectTab(1);
    }

    WebViewDelegate& delegateAt(int index) { return viewAt(index).delegate(); }

    void middleClick(int index, const std::string& url, unsigned button = 2, bool control = false) {
        NavigationAction click{url, false, true, button, control};
        EXPECT_EQ(delegateAt(index).decidePolicy(click), NavigationActionPolicy::Cancel);
    }
};

// A new window of the page and the context menu's link are the end-to-end tests' to place.
TEST_F(NewTabsFromPages, MiddleAndControlClickedLinksOpenBehindNextToTheirPageInOrder) {
    middleClick(1, "https://x.test/");
    EXPECT_EQ(strip(), "a [b] https://x.test/ c d");
    middleClick(1, "https://y.test/", 1, true);
    EXPECT_EQ(strip(), "a [b] https://x.test/ https://y.test/ c d");
}

TEST_F(NewTabsFromPages, AnAdoptedViewIsTheTabsOwnAndLoadsNothingOfItsOwn) {
    FakeNewWebViewRequest request(engine, "https://w.test/");
    ASSERT_TRUE(delegateAt(1).createWebViewForNewTab(request));
    FakeWebView& adopted = viewAt(2);
    EXPECT_TRUE(adopted.loadRequests.empty());
    EXPECT_TRUE(adopted.htmlLoads.empty()) << "no start page over what the engine loads";
    adopted.simulateNavigation("https://w.test/", "w");
    EXPECT_EQ(state->addressText.get(), "https://w.test/");
    EXPECT_EQ(state->tabs->size(), 5u);
    EXPECT_EQ(state->tabs.get()[2]->openerID(), state->tabs.get()[1]->id());
}

TEST_F(NewTabsFromPages, PlainClicksAndInternalAddressesStayInThePage) {
    for (const NavigationAction& action : {
             NavigationAction{"https://x.test/", false, true, 1, false},
             NavigationAction{"https://x.test/", false, false, 2, false},
             NavigationAction{"ovel://settings", false, true, 2, false},
         }) {
        EXPECT_NE(delegateAt(1).decidePolicy(action), NavigationActionPolicy::Download);
        EXPECT_EQ(state->tabs->size(), 4u) << *action.url;
    }
}

TEST_F(NewTabsFromPages, AClosedPagesLinksAreDropped) {
    WebViewDelegate& closing = delegateAt(3);
    FakeWebView& view = viewAt(3);
    auto keep = state->tabs.get()[3]; // the engine may still call while the tab is going
    state->closeTab(3);
    view.delegate().openLinkInNewTab("https://x.test/");
    FakeNewWebViewRequest request(engine, "https://w.test/");
    EXPECT_FALSE(closing.createWebViewForNewTab(request));
    EXPECT_EQ(request.made, 0);
    EXPECT_EQ(state->tabs->size(), 3u);
}

TEST_F(NewTabsFromPages, ACrashedPageIsFlaggedUntilItLoadsAgain) {
    std::vector<TabFields> heard;
    Connections connections;
    connections.add(state->tabChanged.connect(
        [&](const BrowserTab&, TabFields fields) { heard.push_back(fields); }));
    BrowserTab& tab = *state->selectedTab();
    struct Step {
        const char* what;
        std::function<void()> act;
        bool crashed;
        bool unresponsive;
    };
    const std::vector<Step> steps = {
        {"hangs", [&] { viewAt(1).delegate().webProcessResponsivenessDidChange(false); }, false,
         true},
        {"answers again", [&] { viewAt(1).delegate().webProcessResponsivenessDidChange(true); },
         false, false},
        {"crashes", [&] { viewAt(1).delegate().webProcessDidTerminate(); }, true, false},
        {"a crashed page does not hang",
         [&] { viewAt(1).delegate().webProcessResponsivenessDidChange(false); }, true, false},
        {"reload", [&] { state->reload(); }, false, false},
        {"crashes again", [&] { viewAt(1).delegate().webProcessDidTerminate(); }, true, false},
        {"a new address", [&] { state->openURL("https://e.test/"); }, false, false},
    };
    for (const Step& step : steps) {
        heard.clear();
        const bool wasShown = tab.hasCrashed.get() || tab.isUnresponsive.get();
        step.act();
        EXPECT_EQ(tab.hasCrashed.get(), step.crashed) << step.what;
        EXPECT_EQ(tab.isUnresponsive.get(), step.unresponsive) << step.what;
        const bool heardCrash = std::any_of(heard.begin(), heard.end(), [](TabFields fields) {
            return fields.has(TabField::Crashed);
        });
        // Views hear of it whenever the message would come or go, and only then.
        EXPECT_EQ(heardCrash, wasShown != (step.crashed || step.unresponsive)) << step.what;
    }
    EXPECT_EQ(viewAt(1).reloadCount, 1) << "the reload reached the page";
}

} // namespace
} // namespace ovel::test
