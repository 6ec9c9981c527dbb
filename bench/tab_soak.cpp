// What opening and closing 300 tabs leaves behind: the browser state on the real engine opens a
// tab, loads an ordinary page from a loopback server into it, shows it and closes it, 300 times.
// Reports the resident memory after 20 tabs and after 300 (the growth per closed tab), whether
// every closed tab's web view was freed, and the web processes still running. Run under Xvfb:
//   xvfb-run -a -s "-screen 0 1600x1000x24" dbus-run-session -- build/bench/tab_soak
//
// WebKit gives each web view its own web process. When a tab closes, WebKit's process cache
// keeps that tab's process, one per site, until the next closed tab's process of the same site
// replaces it: after any number of tabs, one process beyond the first tab's may still run.

#include "app/GlibMainQueue.h"
#include "engine/FreshEngine.h"
#include "records/MemorySettingsStore.h"
#include "state/BrowserState.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"
#include "support/ProcessTree.h"
#include "support/TestEnvironment.h"
#include "web/BrowserTab.h"
#include "webkit/WebKitWebViewAdapter.h"

#include <gtk/gtk.h>
#include <libsoup/soup.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <set>

using namespace ovel;
using namespace ovel::test;

namespace {

constexpr int tabCount = 300;
constexpr int warmTabCount = 20;

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

GtkWidget* widgetOf(const BrowserTab& tab) {
    return WebKitWebViewAdapter::widgetOf(tab.webView());
}

} // namespace

int main() {
    if (!gtk_init_check()) {
        std::fprintf(stderr, "no display: run under Xvfb\n");
        return 1;
    }
    TestEnvironment environment;
    LoopbackServer server;
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
    auto engine = freshEngine(environment);
    MemorySettingsStore settings;
    GlibMainQueue mainQueue;
    FakeClock clock;
    SequentialUuidSource uuids;
    FakeDesktop desktop;
    auto state =
        BrowserState::create(BrowserServices{settings, *engine, mainQueue, clock, uuids, desktop});
    GtkWidget* window = gtk_window_new();
    gtk_window_set_default_size(GTK_WINDOW(window), 800, 600);
    gtk_window_set_child(GTK_WINDOW(window), widgetOf(*state->selectedTab()));
    gtk_window_present(GTK_WINDOW(window));

    auto loadInSelectedTab = [&](int n) {
        BrowserTab& tab = *state->selectedTab();
        waitUntil([&] { return !tab.isLoading.get(); });
        const std::string title = "Page " + std::to_string(n);
        state->openURL(server.url("/page?n=" + std::to_string(n)));
        return waitUntil([&] { return tab.title.get() == title && !tab.isLoading.get(); });
    };
    if (!loadInSelectedTab(0)) {
        std::fprintf(stderr, "the first page never loaded\n");
        return 1;
    }
    const std::size_t atStart = webProcessIDs().size();

    std::vector<std::weak_ptr<BrowserTab>> closedTabs;
    std::vector<std::set<int>> processesOfClosedTabs;
    int finalizedViews = 0;
    // Closed tabs freed, and no process of a closed tab but the last one's still running.
    auto leftovers = [&] {
        const std::set<int> running = webProcessIDs();
        int tabs = 0;
        std::set<int> processes;
        for (std::size_t i = 0; i < closedTabs.size(); ++i) {
            tabs += !closedTabs[i].expired();
            for (int pid : processesOfClosedTabs[i]) {
                if (running.count(pid) && i + 1 < closedTabs.size()) {
                    processes.insert(pid);
                }
            }
        }
        return std::pair{tabs + int(closedTabs.size()) - finalizedViews, processes.size()};
    };
    // Lets closed tabs go and the main loop go quiet, then hands freed heap back to the system,
    // so that what is measured is what is still held and not what the allocator keeps cached.
    auto settle = [&] {
        waitUntil([&] { return leftovers() == std::pair{0, std::size_t(0)}; }, 30s);
        runMainLoopFor(2s);
        malloc_trim(0);
        const auto [tabs, processes] = leftovers();
        return std::tuple{residentKiB(), tabs, processes, webProcessIDs().size()};
    };

    long warmRss = 0;
    for (int n = 1; n <= tabCount; ++n) {
        const std::set<int> before = webProcessIDs();
        state->newTab();
        BrowserTab& opened = *state->selectedTab();
        gtk_window_set_child(GTK_WINDOW(window), widgetOf(opened));
        if (!loadInSelectedTab(n)) {
            std::fprintf(stderr, "page %d never finished\n", n);
            return 1;
        }
        std::set<int> started;
        for (int pid : webProcessIDs()) {
            if (!before.count(pid)) {
                started.insert(pid);
            }
        }
        processesOfClosedTabs.push_back(started);
        closedTabs.push_back(state->selectedTab());
        g_object_weak_ref(
            G_OBJECT(widgetOf(opened)),
            [](gpointer finalized, GObject*) { ++*static_cast<int*>(finalized); }, &finalizedViews);
        gtk_window_set_child(GTK_WINDOW(window), widgetOf(*state->tabs.get()[0]));
        state->closeTab(state->selectedIndex.get());

        if (n == warmTabCount || n == tabCount) {
            const auto [rss, tabs, processes, running] = settle();
            warmRss = n == warmTabCount ? rss : warmRss;
            std::printf("after %d tabs: RSS %ld KiB; closed tabs not freed %d; processes of "
                        "earlier closed tabs running %zu; web processes %zu (%zu with one tab)\n",
                        n, rss, tabs, processes, running, atStart);
            if (n == tabCount) {
                std::printf("RSS after %d tabs / after %d: %.3f, %.1f KiB per closed tab\n", n,
                            warmTabCount, double(rss) / double(warmRss),
                            double(rss - warmRss) / (tabCount - warmTabCount));
            }
        }
    }
    state.reset();
    gtk_window_destroy(GTK_WINDOW(window));
    return 0;
}
