// How long the UI thread is held by what the user does most, with every save it causes going to
// a real settings file: recording a visit with a full history (500 entries), the same among 20
// tabs that each keep a back/forward list of 10 pages, a tab operation
// among 100 tabs, and switching between two profiles that each hold 100 tabs, 500 visits and
// some bookmarks. The browser state runs on the test fakes; only the store is real.
//
// Each benchmark times every iteration on its own and reports the median and the 99th
// percentile (counters median_us and p99_us), since a rare long stall is what a user notices.
// Iterations follow each other at once: the store never gets a quiet moment to catch up.
//
// Each runs twice: on_disk:1 with the SQLite store, on_disk:0 with a memory store, which is the
// floor (the browser's own work, encoding and decoding JSON included) that the disk adds to.

#include "app/SqliteSettingsStore.h"
#include "records/MemorySettingsStore.h"
#include "records/RecordsJson.h"
#include "support/BrowserFixture.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

using ovel::BrowserState;
using ovel::test::FakeServices;

constexpr int iterations = 300;
constexpr const char* workProfile = "5D2C1E0A-7B3F-4C8E-9A61-2F4B8D0C3E17";
constexpr const char* homeProfile = "9E41B7D2-0C6A-4F35-8B19-7A3E5C2D1F08";

std::string pageUrl(int n) {
    char url[96];
    std::snprintf(url, sizeof url, "https://www.example-news.org/2026/11/articles/story-%06d.html",
                  n);
    return url;
}

// About what WebKit serialises for a back/forward list of 10 pages at addresses like these.
constexpr std::size_t tenPageStateBytes = 2000;

ovel::SessionStore sessionOfTabs(int count, std::size_t stateBytes = 0) {
    ovel::SessionStore session;
    for (int i = 0; i < count; ++i) {
        session.tabs.push_back({.url = pageUrl(i), .isPinned = i < 4});
        if (stateBytes > 0) {
            session.tabs.back().sessionState = std::string(stateBytes, static_cast<char>(i));
        }
    }
    session.selectedIndex = count / 2;
    return session;
}

std::vector<ovel::HistoryEntry> historyOfVisits(int count) {
    std::vector<ovel::HistoryEntry> history;
    for (int i = 0; i < count; ++i) {
        char id[40];
        std::snprintf(id, sizeof id, "%08X-0000-4000-8000-%012X", i, i * 7919);
        history.push_back({.id = id,
                           .title = "Story " + std::to_string(i) + " — Example News",
                           .url = pageUrl(10'000 + i),
                           .visitedAt = ovel::Date{799'000'000.0 - i * 90.5}});
    }
    return history;
}

std::vector<ovel::BookmarkStore> bookmarksOf(int count) {
    std::vector<ovel::BookmarkStore> bookmarks;
    for (int i = 0; i < count; ++i) {
        bookmarks.push_back({"Saved story " + std::to_string(i), pageUrl(20'000 + i)});
    }
    return bookmarks;
}

// A browser state on the fakes and a store, on disk in a fresh folder (removed afterwards) or in
// memory. The store is filled before the browser starts, as a previous run would have left it.
class BrowserOnDisk {
public:
    BrowserOnDisk(const benchmark::State& bench, int profileCount, int tabCount,
                  std::size_t stateBytes = 0) {
        if (bench.range(0) == 0) {
            store_ = std::make_unique<ovel::MemorySettingsStore>();
        } else {
            std::string pattern = (fs::temp_directory_path() / "ovel-bench-XXXXXX").string();
            if (mkdtemp(pattern.data())) {
                folder_ = pattern;
            }
            store_ = ovel::SqliteSettingsStore::open(folder_ / "settings.sqlite3");
        }
        std::vector<ovel::BrowserProfile> profiles = {{workProfile, "Work"}, {homeProfile, "Home"}};
        profiles.resize(profileCount);
        store_->setData(BrowserState::profilesKey, ovel::encodeProfiles(profiles));
        store_->setString(BrowserState::activeProfileIDKey, workProfile);
        for (const auto& profile : profiles) {
            const auto key = [&](std::string_view base) {
                return BrowserState::profileKey(base, profile.id);
            };
            store_->setData(key(BrowserState::sessionKeyBase),
                            ovel::encodeSession(sessionOfTabs(tabCount, stateBytes)));
            store_->setData(key(BrowserState::historyKeyBase),
                            ovel::encodeHistory(historyOfVisits(500)));
            store_->setData(key(BrowserState::bookmarksKeyBase),
                            ovel::encodeBookmarks(bookmarksOf(30)));
        }
        state = BrowserState::create(ovel::BrowserServices{
            *store_, fakes.engine, fakes.mainQueue, fakes.clock, fakes.uuids, fakes.desktop});
        fakes.mainQueue.drain();
    }
    ~BrowserOnDisk() {
        state.reset();
        store_.reset();
        std::error_code error;
        if (!folder_.empty()) {
            fs::remove_all(folder_, error);
        }
    }

    // Waits until the store has committed everything written so far.
    void settle() {
        if (auto* onDisk = dynamic_cast<ovel::SqliteSettingsStore*>(store_.get())) {
            onDisk->flush();
        }
    }

    FakeServices fakes;
    std::shared_ptr<BrowserState> state;

private:
    fs::path folder_;
    std::unique_ptr<ovel::SettingsStore> store_;
};

// Each iteration's wall time, and the CPU time of this thread in it, for the percentiles Google
// Benchmark does not give. On a busy machine the wall time also holds the moments the thread
// was not scheduled; the CPU time does not, nor time spent waiting for the disk.
class IterationTimes {
public:
    void start() {
        started_ = std::chrono::steady_clock::now();
        startedCpu_ = threadCpuMicroseconds();
    }
    void stop() {
        wall_.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - started_)
                .count());
        cpu_.push_back(threadCpuMicroseconds() - startedCpu_);
    }
    void report(benchmark::State& bench) {
        const auto percentiles = [&](std::vector<double>& times, const std::string& prefix) {
            std::sort(times.begin(), times.end());
            const auto at = [&](double fraction) {
                return times[std::min(times.size() - 1,
                                      static_cast<std::size_t>(fraction * times.size()))];
            };
            bench.counters[prefix + "median_us"] = at(0.5);
            bench.counters[prefix + "p99_us"] = at(0.99);
        };
        percentiles(wall_, "");
        percentiles(cpu_, "cpu_");
    }

private:
    static double threadCpuMicroseconds() {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return now.tv_sec * 1e6 + now.tv_nsec / 1e3;
    }

    std::chrono::steady_clock::time_point started_;
    double startedCpu_ = 0;
    std::vector<double> wall_;
    std::vector<double> cpu_;
};

void onDiskAndInMemory(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("on_disk")
        ->Arg(1)
        ->Arg(0)
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(iterations);
}

void BM_VisitWithFullHistory(benchmark::State& bench) {
    BrowserOnDisk browser(bench, 1, 1);
    IterationTimes times;
    int visit = 0;
    for (auto _ : bench) {
        times.start();
        FakeServices::viewOf(*browser.state->selectedTab())
            .simulateNavigation(pageUrl(visit), "Story " + std::to_string(visit));
        browser.fakes.mainQueue.drain();
        times.stop();
        ++visit;
    }
    if (browser.state->historyEntries->size() != BrowserState::maxHistoryEntries) {
        bench.SkipWithError("the history is not full");
    }
    times.report(bench);
}
BENCHMARK(BM_VisitWithFullHistory)->Apply(onDiskAndInMemory);

// Every visit saves the session, and with it each tab's back/forward list.
void BM_VisitAmongTabsKeepingTheirHistory(benchmark::State& bench) {
    BrowserOnDisk browser(bench, 1, 20, tenPageStateBytes);
    auto& view = FakeServices::viewOf(*browser.state->selectedTab());
    view.engineState = std::string(tenPageStateBytes, 'h');
    IterationTimes times;
    int visit = 0;
    for (auto _ : bench) {
        times.start();
        view.simulateNavigation(pageUrl(visit), "Story " + std::to_string(visit));
        browser.fakes.mainQueue.drain();
        times.stop();
        ++visit;
    }
    times.report(bench);
}
BENCHMARK(BM_VisitAmongTabsKeepingTheirHistory)->Apply(onDiskAndInMemory);

// Moves one tab right and back left, one move per iteration.
void BM_MoveTabAmong100(benchmark::State& bench) {
    BrowserOnDisk browser(bench, 1, 100);
    IterationTimes times;
    bool right = true;
    for (auto _ : bench) {
        times.start();
        if (right) {
            browser.state->moveTabRight(50);
        } else {
            browser.state->moveTabLeft(51);
        }
        browser.fakes.mainQueue.drain();
        times.stop();
        right = !right;
    }
    times.report(bench);
}
BENCHMARK(BM_MoveTabAmong100)->Apply(onDiskAndInMemory);

// Closes a tab in the middle, then reopens it (at the end), one operation per iteration.
void BM_CloseOrReopenTabAmong100(benchmark::State& bench) {
    BrowserOnDisk browser(bench, 1, 100);
    IterationTimes times;
    bool close = true;
    for (auto _ : bench) {
        times.start();
        if (close) {
            browser.state->closeTab(50);
        } else {
            browser.state->reopenLastClosedTab();
        }
        browser.fakes.mainQueue.drain();
        times.stop();
        close = !close;
    }
    if (browser.state->tabs->size() < 99) {
        bench.SkipWithError("tabs were lost");
    }
    times.report(bench);
}
BENCHMARK(BM_CloseOrReopenTabAmong100)->Apply(onDiskAndInMemory);

// A person switches profiles seconds apart, not back to back: each switch starts with the store
// settled, so it reads the profile it goes to from the file, as it would.
void BM_SwitchProfile(benchmark::State& bench) {
    BrowserOnDisk browser(bench, 2, 100);
    IterationTimes times;
    bool toHome = true;
    for (auto _ : bench) {
        bench.PauseTiming();
        browser.settle();
        bench.ResumeTiming();
        times.start();
        browser.state->switchToProfile(toHome ? homeProfile : workProfile);
        browser.fakes.mainQueue.drain();
        times.stop();
        toHome = !toHome;
    }
    if (browser.state->tabs->size() != 100 || browser.state->historyEntries->size() != 500) {
        bench.SkipWithError("the profile did not come back whole");
    }
    times.report(bench);
}
BENCHMARK(BM_SwitchProfile)->Apply(onDiskAndInMemory);

} // namespace

BENCHMARK_MAIN();
