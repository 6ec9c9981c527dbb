#include "web/AddressResolution.h"
#include "support/BrowserFixture.h"
#include "web/StartPage.h"

namespace ovel::test {
namespace {

TEST(AddressResolution, TypedTextBecomesAnAddressOrASearch) {
    struct Case {
        const char* typed;
        const char* address;  // null: a search
        const char* fallback; // over http when https cannot connect
    };
    const Case cases[] = {
        {"  swift  ", nullptr, nullptr},
        {"example.com", "https://example.com", "http://example.com"},
        {"docs.test:8000/a b", nullptr, nullptr},
        {"localhost", "http://localhost", nullptr},
        {"LOCALHOST:8000/docs", "http://localhost:8000/docs", nullptr},
        {"127.0.0.1:9/x", "http://127.0.0.1:9/x", nullptr},
        {"192.168.1.10:8080", "http://192.168.1.10:8080", nullptr},
        {"[::1]:8080/x", "http://[::1]:8080/x", nullptr},
        {"fe80::1", "http://[fe80::1]", nullptr},
        {"intranet:8080", "http://intranet:8080", nullptr},
        {"wiki/start", "http://wiki/start", nullptr},
        {"wiki", nullptr, nullptr},
        {"wiki:", nullptr, nullptr},
        {"ovel://unknown", nullptr, nullptr},
        {"http://a.test/x", "http://a.test/x", nullptr},
        {"https://a.test", "https://a.test", nullptr},
        {"HTTPS://A.TEST", "https://https//A.TEST", "http://https//A.TEST"},
        {"ovel://settings/", nullptr, nullptr},
        {"https://bad host.test", nullptr, nullptr},
        {"héllo.test", "https://xn--hllo-bpa.test", "http://xn--hllo-bpa.test"},
        {"m+20.11:-8", nullptr, nullptr},
    };
    for (const Case& c : cases) {
        const auto address = typedAddressFor(c.typed);
        if (c.address == nullptr) {
            EXPECT_FALSE(address) << c.typed << " -> " << address->url.absoluteString();
            continue;
        }
        ASSERT_TRUE(address) << c.typed;
        EXPECT_EQ(address->url.absoluteString(), c.address);
        EXPECT_EQ(address->httpFallback ? address->httpFallback->absoluteString() : "",
                  c.fallback ? c.fallback : "")
            << c.typed;
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

// Plain http once, when no secure connection could be made, and at once for the rest of the run.
TEST_F(OpenURL, ATypedHostThatHasNoHttpsFallsBackToHttpOnce) {
    state->openURL("docs.test:8000/a");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://docs.test:8000/a");
    viewAt(0).simulateFailure(
        LoadFailure{LoadFailureKind::SecureConnectionFailed, "https://docs.test:8000/a", {}});
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "http://docs.test:8000/a");
    viewAt(0).simulateFailure(
        LoadFailure{LoadFailureKind::ConnectionRefused, "http://docs.test:8000/a", {}});
    EXPECT_EQ(viewAt(0).loadRequests.size(), 2u) << "once";
    EXPECT_EQ(state->addressText.get(), "http://docs.test:8000/a");

    state->openURL("docs.test:8000/b");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "http://docs.test:8000/b");
    state->openURL("docs.test/b");
    EXPECT_EQ(viewAt(0).loadRequests.back().url, "https://docs.test/b") << "another server";

    // A missing host, or an address typed in full, is shown as it failed.
    for (const auto& [typed, failing, kind] :
         {std::tuple{"gone.test", "https://gone.test", LoadFailureKind::HostNotFound},
          std::tuple{"https://full.test", "https://full.test",
                     LoadFailureKind::ConnectionRefused}}) {
        state->openURL(typed);
        const auto loads = viewAt(0).loadRequests.size();
        viewAt(0).simulateFailure(LoadFailure{kind, failing, {}});
        EXPECT_EQ(viewAt(0).loadRequests.size(), loads) << typed;
        EXPECT_EQ(state->addressText.get(), failing);
    }
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
