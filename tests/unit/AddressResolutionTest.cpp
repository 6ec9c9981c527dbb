#include "web/AddressResolution.h"
#include "support/BrowserFixture.h"
#include "web/StartPage.h"

namespace ovel::test {
namespace {

TEST(AddressResolution, TypedTextBecomesAnAddressOrASearch) {
    struct Case {
        const char* typed;
        const char* address; // null: a search
    };
    const Case cases[] = {
        {"  swift  ", nullptr},
        {"example.com", "https://example.com"},
        {"my file.txt", nullptr},
        {"localhost", "https://localhost"},
        {"LOCALHOST", nullptr},
        {"localhost:8080", nullptr},
        {"http://a.test/x", "http://a.test/x"},
        {"https://a.test", "https://a.test"},
        {"HTTPS://A.TEST", "https://https//A.TEST"},
        {"ovel://settings/", nullptr},
        {"https://bad host.test", nullptr},
        {"héllo.test", "https://xn--hllo-bpa.test"},
        {"10.0.0.1:8000/path", "https://10.0.0.1:8000/path"},
        {"m+20.11:-8", nullptr},
    };
    for (const Case& c : cases) {
        const auto url = webURLForTypedText(c.typed);
        if (c.address == nullptr) {
            EXPECT_FALSE(url) << c.typed << " -> " << url->absoluteString();
        } else {
            ASSERT_TRUE(url) << c.typed;
            EXPECT_EQ(url->absoluteString(), c.address);
        }
    }
}

TEST(AddressResolution, SearchQueriesKeepQueryPunctuation) {
    EXPECT_EQ(queryURL(SearchEngine::Google, "cats & dogs")->absoluteString(),
              "https://www.google.com/search?q=cats%20&%20dogs");
    EXPECT_EQ(queryURL(SearchEngine::DuckDuckGo, "a=b+c/d?e")->absoluteString(),
              "https://duckduckgo.com/?q=a=b+c/d?e");
    EXPECT_EQ(queryURL(SearchEngine::Bing, "100% #1 \"ü\"")->absoluteString(),
              "https://www.bing.com/search?q=100%25%20%231%20%22%C3%BC%22");
}

TEST(AddressResolution, InternalRoutesAndTheirAliases) {
    struct Case {
        const char* typed;
        const char* canonical; // null: not internal
        const char* title;
    };
    const Case cases[] = {
        {"ovel://newtab", "ovel://newtab", "New Tab"},
        {"chrome://start", "ovel://newtab", "New Tab"},
        {"OVEL://Home", "ovel://newtab", "New Tab"},
        {"ovel://settings", "ovel://settings", "Settings"},
        {"ovel://downloads", "ovel://downloads", "Downloads"},
        {"Chrome://History", "ovel://history", "History"},
        {"ovel://sessions", "ovel://workspaces", "Workspaces"},
        {"ovel://workspaces", "ovel://workspaces", "Workspaces"},
        {"ovel://version", "ovel://about", "About Ovel Web"},
        {"ovel://settings/", nullptr, nullptr},
        {"ovel://settings?x", nullptr, nullptr},
        {"ovel://unknown", nullptr, nullptr},
        {"settings", nullptr, nullptr},
    };
    for (const Case& c : cases) {
        const auto route = internalRouteFor(c.typed);
        if (c.canonical == nullptr) {
            EXPECT_FALSE(route) << c.typed;
        } else {
            ASSERT_TRUE(route) << c.typed;
            EXPECT_EQ(route->canonicalAddress, c.canonical) << c.typed;
            EXPECT_EQ(route->title, c.title) << c.typed;
        }
    }
}

using OpenURL = LaunchedBrowser;

TEST_F(OpenURL, InternalPagesAreShownInTheSelectedTab) {
    showPage(0, "https://a.test/", "A");
    state->openURL("  chrome://SETTINGS ");
    auto tab = state->selectedTab();
    EXPECT_EQ(tab->displayAddress.get(), "ovel://settings");
    EXPECT_EQ(tab->title.get(), "Settings");
    EXPECT_EQ(state->addressText.get(), "ovel://settings");
    EXPECT_TRUE(viewAt(0).loadRequests.empty()) << "the web view keeps its page";
    state->newTab();
    EXPECT_EQ(state->addressText.get(), "") << "a new tab has no address";
    state->selectTab(0);
    EXPECT_EQ(state->addressText.get(), "ovel://settings") << "not the page under it";

    state->openURL("chrome://newtab");
    EXPECT_EQ(tab->displayAddress.get(), "ovel://newtab");
    EXPECT_EQ(tab->title.get(), "New Tab");
    EXPECT_EQ(viewAt(0).htmlLoads.size(), 2u) << "the start page is loaded under it";
}

TEST_F(OpenURL, AddressesLoadAndSearchesUseTheChosenEngine) {
    state->setSearchEngine(SearchEngine::DuckDuckGo);
    const auto sessionWrites = store.entries("set ovel.session").size();
    state->openURL("example.com");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://example.com");
    EXPECT_EQ(store.entries("set ovel.session").size(), sessionWrites) << "an address saves later";
    EXPECT_EQ(state->addressText.get(), "") << "the address follows the page, not the typing";

    state->openURL("ovel://unknown");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://duckduckgo.com/?q=ovel://unknown");
    EXPECT_EQ(store.entries("set ovel.session").size(), sessionWrites + 1);

    const auto loads = viewAt(0).loadRequests.size();
    state->openURL(" \n\t ");
    EXPECT_EQ(viewAt(0).loadRequests.size(), loads);
}

TEST_F(OpenURL, HomeShowsTheStartPageAndClearsTheAddress) {
    state->setTheme(BrowserTheme::Aurora);
    showPage(0, "https://a.test/", "A");
    state->openURL("ovel://history");
    state->openHome();
    EXPECT_FALSE(state->selectedTab()->displayAddress->has_value());
    EXPECT_EQ(state->addressText.get(), "");
    EXPECT_EQ(viewAt(0).htmlLoads.back(), startPageHTML(BrowserTheme::Aurora));
}

} // namespace
} // namespace ovel::test
