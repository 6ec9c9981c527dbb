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

using OpenURL = LaunchedBrowser;

// One tab through internal pages, a web page and home: what it shows and what it loads.
TEST_F(OpenURL, InternalPagesAreShownInTheSelectedTabOverWhatItLoaded) {
    struct Step {
        const char* what;
        std::function<void()> act;
        const char* displayAddress; // null: none
        const char* title;          // null: whatever the page says
        const char* addressText;
        std::size_t webLoads;
        std::size_t htmlLoads;
    };
    const Step steps[] = {
        {"settings over the start page", [&] { state->openURL("  chrome://SETTINGS "); },
         "ovel://settings", "Settings", "ovel://settings", 0, 1},
        {"a theme chosen there leaves the user there",
         [&] { state->setTheme(BrowserTheme::Ocean); }, "ovel://settings", "Settings",
         "ovel://settings", 0, 1},
        {"a new tab has no address", [&] { state->newTab(); }, "ovel://settings", "Settings", "", 0,
         1},
        {"back to the tab, its page's address", [&] { state->selectTab(0); }, "ovel://settings",
         "Settings", "ovel://settings", 0, 1},
        {"a web page leaves the internal page",
         [&] {
             state->openURL("https://a.test/");
             showPage(0, "https://a.test/", "A");
         },
         nullptr, "A", "https://a.test/", 1, 1},
        {"the start page loads under its own address", [&] { state->openURL("chrome://newtab"); },
         "ovel://newtab", "New Tab", "ovel://newtab", 1, 2},
        {"home clears the address",
         [&] {
             state->openURL("ovel://history");
             state->openHome();
         },
         nullptr, nullptr, "", 1, 3},
        {"back on the start page, the next theme shows there",
         [&] { state->setTheme(BrowserTheme::Citrus); }, nullptr, nullptr, "", 1, 4},
    };
    for (const Step& step : steps) {
        step.act();
        const BrowserTab& tab = *state->tabs.get()[0];
        EXPECT_EQ(tab.displayAddress.get(), step.displayAddress
                                                ? std::optional<std::string>(step.displayAddress)
                                                : std::nullopt)
            << step.what;
        EXPECT_EQ(step.title ? tab.title.get() : "", step.title ? step.title : "") << step.what;
        EXPECT_EQ(state->addressText.get(), step.addressText) << step.what;
        EXPECT_EQ(viewAt(0).loadRequests.size(), step.webLoads) << step.what;
        EXPECT_EQ(viewAt(0).htmlLoads.size(), step.htmlLoads) << step.what;
    }
    EXPECT_EQ(viewAt(0).htmlLoads[2], startPageHTML(BrowserTheme::Ocean)) << "home in the theme";
    EXPECT_EQ(viewAt(0).htmlLoads[3], startPageHTML(BrowserTheme::Citrus));
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

} // namespace
} // namespace ovel::test
