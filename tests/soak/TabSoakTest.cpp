#include "engine/BrowserOnWebKitFixture.h"
#include "support/ProcessTree.h"

#include <libsoup/soup.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace ovel::test {
namespace {

std::string processSummary() {
    std::map<std::string, int> byName;
    for (const auto& process : descendantsOf(int(getpid()))) {
        ++byName[process.name];
    }
    std::string text;
    for (const auto& [name, count] : byName) {
        text += (text.empty() ? "" : ", ") + name + " ×" + std::to_string(count);
    }
    return text;
}

// Resident memory of this process in KiB.
long residentKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

std::set<int> webProcessIDs() {
    std::set<int> pids;
    for (const auto& process : descendantsOf(int(getpid()))) {
        if (process.name.starts_with("WebKitWebProces")) {
            pids.insert(process.pid);
        }
    }
    return pids;
}

class TabSoak : public BrowserOnWebKit {
protected:
    static constexpr int tabCount = 300;
    static constexpr int warmTabCount = 20;

    // What became of one tab that was opened and closed.
    struct ClosedTab {
        std::weak_ptr<BrowserTab> tab;
        // Web processes that came up while the tab was open.
        std::set<int> webProcesses;
    };

    // Opens a tab, shows it as the window would, loads page `n` in it until it has finished,
    // and closes it again.
    void openAndCloseTab(int n) {
        const std::set<int> before = webProcessIDs();
        state->newTab();
        BrowserTab& opened = tab();
        gtk_window_set_child(GTK_WINDOW(window), WebKitWebViewAdapter::widgetOf(opened.webView()));
        ASSERT_TRUE(waitUntil([&] { return !opened.isLoading.get(); })) << "start page of " << n;
        const std::string title = "Page " + std::to_string(n);
        state->openURL(server.url("/page?n=" + std::to_string(n)));
        ASSERT_TRUE(waitUntil([&] {
            return opened.title.get() == title && !opened.isLoading.get();
        })) << title
            << " never finished; the tab shows " << opened.title.get();

        ClosedTab closed{state->selectedTab(), {}};
        for (int pid : webProcessIDs()) {
            if (!before.count(pid)) {
                closed.webProcesses.insert(pid);
            }
        }
        g_object_weak_ref(
            G_OBJECT(WebKitWebViewAdapter::widgetOf(opened.webView())),
            [](gpointer finalized, GObject*) { ++*static_cast<int*>(finalized); }, &finalizedViews);
        closedTabs.push_back(std::move(closed));

        const int index = state->selectedIndex.get();
        gtk_window_set_child(GTK_WINDOW(window),
                             WebKitWebViewAdapter::widgetOf(state->tabs.get()[0]->webView()));
        state->closeTab(index);
        ASSERT_EQ(state->tabs.get().size(), 1u);
    }

    // Web processes still running that came up for a closed tab other than the last one.
    std::set<int> survivorsOfEarlierTabs() const {
        const std::set<int> running = webProcessIDs();
        std::set<int> survivors;
        for (std::size_t i = 0; i + 1 < closedTabs.size(); ++i) {
            for (int pid : closedTabs[i].webProcesses) {
                if (running.count(pid)) {
                    survivors.insert(pid);
                }
            }
        }
        return survivors;
    }

    bool everyClosedTabIsFreed() const {
        return finalizedViews == int(closedTabs.size()) &&
               std::all_of(closedTabs.begin(), closedTabs.end(),
                           [](const ClosedTab& closed) { return closed.tab.expired(); });
    }

    // Lets closed tabs go (up to a limit) and the main loop go quiet, then hands freed heap back
    // to the system, so that what is measured is what is still held and not what the allocator
    // keeps cached.
    void settle(std::size_t webProcessLimit) {
        waitUntil(
            [&] {
                return everyClosedTabIsFreed() && survivorsOfEarlierTabs().empty() &&
                       webProcessIDs().size() <= webProcessLimit;
            },
            30s);
        runMainLoopFor(2s);
        malloc_trim(0);
    }

    // Checks that nothing of the closed tabs is left but what WebKit keeps on purpose.
    void expectClosedTabsGone(std::size_t webProcessLimit) {
        EXPECT_TRUE(everyClosedTabIsFreed())
            << finalizedViews << " of " << closedTabs.size() << " closed tabs' web views are gone";
        EXPECT_TRUE(survivorsOfEarlierTabs().empty())
            << survivorsOfEarlierTabs().size() << " web processes of closed tabs still run";
        EXPECT_LE(webProcessIDs().size(), webProcessLimit) << processSummary();
    }

    std::vector<ClosedTab> closedTabs;
    int finalizedViews = 0;
};

// WebKit gives each web view its own web process: a new tab's start page (HTML of our own, with
// no address) shares the first one's, and its first load from the loopback server swaps it to
// a new process. When a tab closes, WebKit's process cache keeps that tab's process, one per
// site, until the next closed tab's process of the same site replaces it (or the cache expires
// it after a long while). So after any number of tabs, one process beyond the first tab's may
// still run, and it must be the last closed tab's.
TEST_F(TabSoak, OpeningAndClosingTabsLeavesMemoryAndProcessesAsTheyWere) {
    server.handle("/page", [](SoupServerMessage* message, const LoopbackServer::Request& request) {
        // Some text, layout and script, as an ordinary page would have.
        std::string html = "<html><head><title>Page " + request.query.substr(2) +
                           "</title><style>p { margin: 1em; font: 14px sans-serif; }</style>"
                           "</head><body>";
        for (int i = 0; i < 40; ++i) {
            html += "<p>Paragraph " + std::to_string(i) + " of a page opened in a new tab.</p>";
        }
        html += "<script>document.body.dataset.words = document.body.innerText.length;</script>"
                "</body></html>";
        soup_server_message_set_status(message, 200, nullptr);
        soup_server_message_set_response(message, "text/html; charset=utf-8", SOUP_MEMORY_COPY,
                                         html.data(), html.size());
    });
    state->openURL(server.url("/page?n=0"));
    ASSERT_TRUE(waitUntil([&] { return tab().title.get() == "Page 0" && !tab().isLoading.get(); }));
    const std::size_t atStart = webProcessIDs().size();
    std::printf("with one tab open: web processes %zu (%s)\n", atStart, processSummary().c_str());
    const std::size_t webProcessLimit = atStart + 1;

    long warmRss = 0;
    for (int n = 1; n <= tabCount; ++n) {
        openAndCloseTab(n);
        if (HasFatalFailure()) {
            return;
        }
        if (n == warmTabCount) {
            settle(webProcessLimit);
            warmRss = residentKiB();
            std::printf("after %d tabs: RSS %ld KiB, web processes %zu (%s)\n", n, warmRss,
                        webProcessIDs().size(), processSummary().c_str());
            expectClosedTabsGone(webProcessLimit);
        }
    }
    settle(webProcessLimit);
    const long endRss = residentKiB();
    const double ratio = double(endRss) / double(warmRss);
    std::set<int> seen;
    for (const auto& closed : closedTabs) {
        seen.insert(closed.webProcesses.begin(), closed.webProcesses.end());
    }
    std::printf("after %d tabs: RSS %ld KiB, web processes %zu (%s)\n", tabCount, endRss,
                webProcessIDs().size(), processSummary().c_str());
    std::printf("RSS after %d tabs / after %d tabs: %.3f; web processes started for the tabs: "
                "%zu\n",
                tabCount, warmTabCount, ratio, seen.size());
    RecordProperty("rss_kib_after_warm_up", std::to_string(warmRss));
    RecordProperty("rss_kib_at_end", std::to_string(endRss));

    EXPECT_LE(ratio, 1.10) << "RSS after " << warmTabCount << " tabs " << warmRss << " KiB, after "
                           << tabCount << " tabs " << endRss << " KiB";
    expectClosedTabsGone(webProcessLimit);
    EXPECT_EQ(state->tabs.get().size(), 1u);
}

} // namespace
} // namespace ovel::test
