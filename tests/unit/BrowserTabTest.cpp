#include "web/BrowserTab.h"
#include "support/BrowserFixture.h"
#include "support/FakeClock.h"
#include "support/FakeDesktop.h"
#include "support/FakeFaviconFetcher.h"
#include "support/FakeWebEngine.h"
#include "support/ManualMainQueue.h"
#include "support/RecordingSettingsStore.h"
#include "support/SequentialUuidSource.h"
#include "web/BrowserTab.h"
#include "web/StartPage.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

class BrowserTabTest : public ::testing::Test, protected FakeServices {
protected:
    std::shared_ptr<BrowserTab> makeTab(bool startPage = false) {
        return BrowserTab::create(services(), startPage);
    }
};

using BrowserTabNavigation = BrowserTabTest;
using BrowserTabFavicon = BrowserTabTest;
using BrowserTabCallbacks = BrowserTabTest;

TEST_F(BrowserTabNavigation, ANewTabStartsBlankOrOnTheMidnightStartPage) {
    auto tab = makeTab();
    EXPECT_EQ(tab->title.get(), "New Tab");
    EXPECT_FALSE(tab->favicon->has_value());
    EXPECT_EQ(tab->loadingProgress.get(), 0.0);
    EXPECT_FALSE(tab->isLoading.get());
    EXPECT_TRUE(viewOf(*tab).htmlLoads.empty());
    EXPECT_TRUE(isUuidText(tab->id()));

    auto start = makeTab(true);
    EXPECT_EQ(viewOf(*start).htmlLoads,
              std::vector<std::string>{startPageHTML(BrowserTheme::Midnight)});
    EXPECT_NE(start->id(), tab->id());
}

TEST_F(BrowserTabNavigation, LoadLeavesInternalPagesWithTheSixtySecondTimeout) {
    auto tab = makeTab();
    tab->displayAddress.set("ovel://settings");
    tab->load(*Url::parse("https://a.test/"));
    EXPECT_FALSE(tab->displayAddress->has_value());
    ASSERT_EQ(viewOf(*tab).loadRequests.size(), 1u);
    EXPECT_EQ(viewOf(*tab).loadRequests[0].timeout, std::chrono::seconds(60));

    tab->displayAddress.set("ovel://newtab");
    tab->loadStartPage(BrowserTheme::Ocean);
    EXPECT_FALSE(tab->displayAddress->has_value());
}

TEST_F(BrowserTabNavigation, ProgressIsReadWhenTheMainQueueRunsAndNeverAfterTheTabIsGone) {
    auto tab = makeTab();
    viewOf(*tab).simulateProgress(0.3);
    viewOf(*tab).progress = 0.7;
    EXPECT_EQ(tab->loadingProgress.get(), 0.0) << "nothing happens before the queue runs";
    mainQueue.drain();
    EXPECT_EQ(tab->loadingProgress.get(), 0.7);

    viewOf(*tab).simulateProgress(0.9);
    tab.reset();
    EXPECT_EQ(engine.liveViewCount(), 0) << "the tab owns its web view";
    EXPECT_EQ(mainQueue.drain(), 1);
}

TEST_F(BrowserTabFavicon, AskedOverHttpsOnTheDefaultPortOfThePageHost) {
    auto tab = makeTab();
    viewOf(*tab).simulateNavigation("http://Shop.Example.test:8080/cart?x=1", "Shop");
    ASSERT_EQ(favicons.requests.size(), 1u);
    EXPECT_EQ(favicons.requests[0].first, "https://shop.example.test/favicon.ico");

    viewOf(*tab).simulateNavigation("about:blank", "");
    viewOf(*tab).simulateNavigation("file:///tmp/a.html", "");
    EXPECT_EQ(favicons.requests.size(), 1u) << "pages without a host ask for nothing";
}

TEST_F(BrowserTabFavicon, AFailureKeepsThePreviousIcon) {
    auto tab = makeTab();
    const FaviconImage icon{1, 1, {255, 0, 0, 255}};
    viewOf(*tab).simulateNavigation("https://a.test/", "A");
    favicons.answer(0, icon);
    EXPECT_FALSE(tab->favicon->has_value()) << "applied on the main queue";
    mainQueue.drain();
    EXPECT_EQ(tab->favicon.get(), icon);

    viewOf(*tab).simulateNavigation("https://b.test/", "B");
    favicons.answer(1, std::nullopt);
    mainQueue.drain();
    EXPECT_EQ(tab->favicon.get(), icon);

    viewOf(*tab).simulateNavigation("https://c.test/", "C");
    tab.reset();
    favicons.answer(2, icon);
    EXPECT_EQ(mainQueue.drain(), 1) << "an icon for a closed tab is dropped safely";
}

TEST_F(BrowserTabCallbacks, WithoutCallbacksMediaPromptsAndInternalLinksGoToTheEngine) {
    auto tab = makeTab();
    EXPECT_EQ(tab->decideMediaCapturePermission("a.test", MediaCaptureType::Camera),
              PermissionDecision::Prompt);
    EXPECT_EQ(tab->decidePolicy(NavigationAction{"ovel://settings", false}),
              NavigationActionPolicy::Allow);
    EXPECT_EQ(tab->decidePolicy(NavigationResponse{false}), NavigationResponsePolicy::Download);
}

TEST_F(BrowserTabCallbacks, InternalLinksAreOfferedAndMediaHostsLowerCased) {
    auto tab = makeTab();
    std::vector<std::string> offered;
    std::vector<std::string> navigations;
    tab->onInternalURLRequest = [&](const std::string& text) {
        offered.push_back(text);
        return text == "ovel://settings";
    };
    tab->onNavigationRequest = [&](const Url& url) { navigations.push_back(url.absoluteString()); };
    EXPECT_EQ(tab->decidePolicy(NavigationAction{"ovel://settings", false}),
              NavigationActionPolicy::Cancel);
    EXPECT_EQ(tab->decidePolicy(NavigationAction{"CHROME://nowhere", false}),
              NavigationActionPolicy::Allow);
    EXPECT_EQ(tab->decidePolicy(NavigationAction{"https://a.test/f.zip", true}),
              NavigationActionPolicy::Download);
    EXPECT_EQ(offered, (std::vector<std::string>{"ovel://settings", "CHROME://nowhere"}));
    EXPECT_EQ(navigations.size(), 3u) << "every action with a URL is announced first";

    std::string askedHost;
    tab->onMediaPermissionRequest = [&](std::string_view host, MediaCaptureType) {
        askedHost = host;
        return PermissionDecision::Deny;
    };
    EXPECT_EQ(tab->decideMediaCapturePermission("Cam.Example.TEST", MediaCaptureType::Camera),
              PermissionDecision::Deny);
    EXPECT_EQ(askedHost, "cam.example.test");
}

} // namespace
} // namespace ovel::test
