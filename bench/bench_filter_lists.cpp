// The published ad and tracker lists, measured on this system's copies:
//
//   xvfb-run -a dbus-run-session -- build/bench/bench_filter_lists [runs]
//
// reading and converting them (the worker thread's time), compiling them into a fresh store (a
// first launch: from the request to the compiled list), a later launch's start-up (from the
// state's creation until the stored lists are attached, and the UI thread's own CPU time in
// that span) against a start-up without the lists (the two built-in rules alone, which is the
// cost with the blocker switched off: the lists are made ready either way), the rule count, the
// share of lines skipped by kind, and the time to load a page of 50 resources (ten of them named
// by the lists) with the compiled lists attached and without.

#include "app/GlibMainQueue.h"
#include "app/GlibUuidSource.h"
#include "app/SystemClock.h"
#include "app/ThreadedFilterListSource.h"
#include "records/MemorySettingsStore.h"
#include "state/BrowserState.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"
#include "web/ContentPolicies.h"
#include "webkit/WebKitContentRuleList.h"
#include "webkit/WebKitEngine.h"

#include <glib.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace {

using Steady = std::chrono::steady_clock;
using namespace ovel;

double msSince(Steady::time_point start) {
    return std::chrono::duration<double, std::milli>(Steady::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

double threadCpuMs() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

void runUntil(const std::function<bool()>& done) {
    while (!done()) {
        g_main_context_iteration(nullptr, TRUE);
    }
}

std::shared_ptr<ContentRuleList> compile(WebKitEngine& engine, const std::string& id,
                                         const std::string& json) {
    std::shared_ptr<ContentRuleList> list;
    bool finished = false;
    engine.compileContentRuleList(id, json, [&](auto compiled) {
        list = std::move(compiled);
        finished = true;
    });
    runUntil([&] { return finished; });
    return list;
}

struct Startup {
    double untilAttachedMs = 0;
    double uiThreadCpuMs = 0;
};

// A launch on a store where the lists were compiled before: until the blocker has its final
// list.
Startup launch(WebKitEngine& engine, FilterListSource* lists) {
    MemorySettingsStore settings;
    settings.setBoolean(BrowserState::adBlockEnabledKey, true);
    GlibMainQueue mainQueue;
    SystemClock clock;
    GlibUuidSource uuids;
    test::FakeDesktop desktop;
    const double cpu = threadCpuMs();
    const auto start = Steady::now();
    auto state = BrowserState::create(
        BrowserServices{settings, engine, mainQueue, clock, uuids, desktop, lists});
    runUntil([&] {
        const AdBlockStatus& status = state->adBlockStatus.get();
        return lists == nullptr ? status.ruleCount > 0
                                : status.lists == AdBlockStatus::Lists::Ready;
    });
    Startup startup{msSince(start), threadCpuMs() - cpu};
    state.reset();
    return startup;
}

void finishedLoading(WebKitWebView*, WebKitLoadEvent event, bool* finished) {
    if (event == WEBKIT_LOAD_FINISHED) {
        *finished = true;
    }
}

// Loads one of the pages of 50 resources: each run's addresses are its own, so nothing comes
// from the cache.
double loadPage(WebKitWebView* view, test::LoopbackServer& server, int run) {
    bool finished = false;
    const gulong handler =
        g_signal_connect(view, "load-changed", G_CALLBACK(&finishedLoading), &finished);
    const auto start = Steady::now();
    webkit_web_view_load_uri(view, server.url("/page" + std::to_string(run)).c_str());
    runUntil([&] { return finished; });
    g_signal_handler_disconnect(view, handler);
    return msSince(start);
}

std::string pageOf50Resources(int run) {
    std::string html = "<!doctype html><title>Page</title><h1>Page</h1>";
    const std::string query = "?run=" + std::to_string(run);
    for (int i = 0; i < 20; ++i) {
        html += "<img src='/img/photo" + std::to_string(i) + ".gif" + query + "'>";
        html += "<script src='/js/part" + std::to_string(i) + ".js" + query + "'></script>";
    }
    // Ten addresses of the kind the lists name (EasyPrivacy's generic path rules).
    for (int i = 0; i < 5; ++i) {
        html += "<img src='/img/site-tracking-pixel." + std::to_string(i) + ".gif" + query + "'>";
        html +=
            "<script src='/js/amp-analytics-" + std::to_string(i) + ".js" + query + "'></script>";
    }
    return html;
}

} // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    gtk_init();
    const auto folders = ThreadedFilterListSource::systemFolders();

    std::vector<double> reads;
    FilterListFiles lists;
    for (int i = 0; i < runs; ++i) {
        const auto start = Steady::now();
        lists = readFilterLists(folders);
        reads.push_back(msSince(start));
    }
    if (lists.status != FilterListFiles::Status::Read) {
        std::fprintf(stderr, "The lists are not installed: run scripts/setup.\n");
        return 1;
    }
    std::vector<double> conversions;
    ConvertedFilterList converted;
    const std::vector<std::string_view> texts(lists.texts.begin(), lists.texts.end());
    for (int i = 0; i < runs; ++i) {
        const auto start = Steady::now();
        converted = convertFilterLists(texts, adBlockRuleListJSON);
        conversions.push_back(msSince(start));
    }
    std::printf("lists: %zu bytes, %zu filter lines\n",
                lists.texts[0].size() + (lists.texts.size() > 1 ? lists.texts[1].size() : 0),
                converted.filterCount);
    std::printf("reading and hashing: %.1f ms (median of %d)\n", median(reads), runs);
    std::printf("converting: %.0f ms (median of %d), %zu rules, %zu bytes of JSON\n",
                median(conversions), runs, converted.ruleCount, converted.json.size());
    std::size_t skipped = 0;
    for (SkippedFilter reason : allSkippedFilters) {
        skipped += converted.skippedCount(reason);
    }
    std::printf("skipped: %zu lines, %.2f %% of the filter lines\n", skipped,
                100.0 * double(skipped) / double(converted.filterCount));
    for (SkippedFilter reason : allSkippedFilters) {
        if (converted.skippedCount(reason) > 0) {
            std::printf("  %-28s %6zu  %.3f %%\n", std::string(label(reason)).c_str(),
                        converted.skippedCount(reason),
                        100.0 * double(converted.skippedCount(reason)) /
                            double(converted.filterCount));
        }
    }

    const std::string root = std::filesystem::temp_directory_path() / "ovel-bench-lists-XXXXXX";
    std::vector<char> rootTemplate(root.begin(), root.end());
    rootTemplate.push_back('\0');
    const std::string folder = g_mkdtemp(rootTemplate.data());
    WebKitEngine engine({folder + "/data", folder + "/cache", folder + "/filters"});
    const auto compileStart = Steady::now();
    const std::string id = AdBlockListLoader::listsID(lists.contentHash, converted.ruleCount);
    auto compiled = compile(engine, id, converted.json);
    std::printf("compiling into a fresh store (first launch): %.1f s%s\n",
                msSince(compileStart) / 1e3, compiled ? "" : " -- FAILED");
    if (!compiled) {
        return 1;
    }

    ThreadedFilterListSource source(folders);
    std::vector<double> withLists;
    std::vector<double> withListsCpu;
    std::vector<double> builtInOnly;
    std::vector<double> builtInOnlyCpu;
    for (int i = 0; i < runs; ++i) {
        const Startup lists = launch(engine, &source);
        const Startup none = launch(engine, nullptr);
        withLists.push_back(lists.untilAttachedMs);
        withListsCpu.push_back(lists.uiThreadCpuMs);
        builtInOnly.push_back(none.untilAttachedMs);
        builtInOnlyCpu.push_back(none.uiThreadCpuMs);
    }
    std::printf("later launch, until the stored lists are attached: %.1f ms (UI thread %.1f ms "
                "CPU); the built-in rules alone: %.1f ms (UI thread %.1f ms CPU)\n",
                median(withLists), median(withListsCpu), median(builtInOnly),
                median(builtInOnlyCpu));

    test::LoopbackServer server;
    for (int i = 0; i < 20; ++i) {
        server.serve("/img/photo" + std::to_string(i) + ".gif", {200, "image/gif", "GIF89a", {}});
        server.serve("/js/part" + std::to_string(i) + ".js", {200, "text/javascript", "", {}});
    }
    for (int i = 0; i < 5; ++i) {
        server.serve("/img/site-tracking-pixel." + std::to_string(i) + ".gif",
                     {200, "image/gif", "GIF89a", {}});
        server.serve("/js/amp-analytics-" + std::to_string(i) + ".js",
                     {200, "text/javascript", "", {}});
    }
    for (int run = 0; run < 2 * runs + 2; ++run) {
        server.serveHtml("/page" + std::to_string(run), pageOf50Resources(run));
    }
    auto* blocking = WEBKIT_WEB_VIEW(g_object_ref_sink(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", engine.networkSession(), nullptr)));
    webkit_user_content_manager_add_filter(
        webkit_web_view_get_user_content_manager(blocking),
        dynamic_cast<WebKitContentRuleList&>(*compiled).filter());
    auto* open = WEBKIT_WEB_VIEW(g_object_ref_sink(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", engine.networkSession(), nullptr)));
    loadPage(blocking, server, 2 * runs);
    loadPage(open, server, 2 * runs + 1);
    std::vector<double> on;
    std::vector<double> off;
    for (int i = 0; i < 2 * runs; ++i) {
        on.push_back(loadPage(blocking, server, 2 * i));
        off.push_back(loadPage(open, server, 2 * i + 1));
    }
    std::printf("page of 50 resources (10 named by the lists): %.1f ms blocking, %.1f ms not "
                "(median of %d)\n",
                median(on), median(off), 2 * runs);
    g_object_unref(blocking);
    g_object_unref(open);
    std::filesystem::remove_all(folder);
    return 0;
}
