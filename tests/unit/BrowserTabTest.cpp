#include "web/BrowserTab.h"
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
using BrowserTabFavicon = BrowserTabTest;

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

TEST_F(BrowserTabFavicon, AskedOverHttpsOnTheDefaultPortOfThePageHost) {
    view().simulateNavigation("http://Shop.Example.test:8080/cart?x=1", "Shop");
    ASSERT_EQ(favicons.requests.size(), 1u);
    EXPECT_EQ(favicons.requests[0].first, "https://shop.example.test/favicon.ico");

    view().simulateNavigation("about:blank", "");
    view().simulateNavigation("file:///tmp/a.html", "");
    EXPECT_EQ(favicons.requests.size(), 1u) << "pages without a host ask for nothing";
}

TEST_F(BrowserTabFavicon, AFailureKeepsThePreviousIcon) {
    const FaviconImage icon{1, 1, {255, 0, 0, 255}};
    view().simulateNavigation("https://a.test/", "A");
    favicons.answer(0, icon);
    EXPECT_FALSE(tab().favicon->has_value()) << "applied on the main queue";
    mainQueue.drain();
    EXPECT_EQ(tab().favicon.get(), icon);

    view().simulateNavigation("https://b.test/", "B");
    favicons.answer(1, std::nullopt);
    mainQueue.drain();
    EXPECT_EQ(tab().favicon.get(), icon);

    state->newTab();
    viewAt(0).simulateNavigation("https://c.test/", "C");
    state->closeTab(0);
    favicons.answer(2, icon);
    EXPECT_EQ(mainQueue.drain(), 1) << "an icon for a closed tab is dropped safely";
}

} // namespace
} // namespace ovel::test
