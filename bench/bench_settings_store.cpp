// What one save costs: encoding a collection to JSON and writing it durably to the SQLite
// settings file, as the browser does on every tab operation and every recorded visit. The store
// commits on its own thread; each iteration waits for the commit, so this is the whole cost, most
// of it no longer on the UI thread (bench_ui_thread measures what is).

#include "app/SqliteSettingsStore.h"
#include "records/RecordsJson.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char* profileId = "5D2C1E0A-7B3F-4C8E-9A61-2F4B8D0C3E17";

// A store on a real file in a fresh folder, removed afterwards.
class StoreOnDisk {
public:
    StoreOnDisk() {
        std::string pattern = (fs::temp_directory_path() / "ovel-bench-XXXXXX").string();
        if (mkdtemp(pattern.data())) {
            folder_ = pattern;
        }
        store = ovel::SqliteSettingsStore::open(folder_ / "settings.sqlite3");
    }
    ~StoreOnDisk() {
        store.reset();
        std::error_code error;
        fs::remove_all(folder_, error);
    }

    std::unique_ptr<ovel::SqliteSettingsStore> store;

private:
    fs::path folder_;
};

// About 60 characters, like a typical article address.
std::string pageUrl(int n) {
    char url[96];
    std::snprintf(url, sizeof url, "https://www.example-news.org/2026/11/articles/story-%06d.html",
                  n);
    return url;
}

ovel::SessionStore sessionOfTabs(int count, int selectedIndex) {
    ovel::SessionStore session;
    for (int i = 0; i < count; ++i) {
        session.tabs.push_back({.url = pageUrl(i), .isPinned = i < 4});
    }
    session.selectedIndex = selectedIndex;
    return session;
}

std::vector<ovel::HistoryEntry> historyOfVisits(int count) {
    std::vector<ovel::HistoryEntry> history;
    for (int i = 0; i < count; ++i) {
        char id[40];
        std::snprintf(id, sizeof id, "%08X-0000-4000-8000-%012X", i, i * 7919);
        history.push_back({.id = id,
                           .title = "Story " + std::to_string(i) + " — Example News",
                           .url = pageUrl(i),
                           .visitedAt = ovel::Date{815'000'000.0 - i * 90.5}});
    }
    return history;
}

// Two saves in a row never hold the same bytes: SQLite skips rewriting identical content, which
// would leave nothing to write or sync. So each benchmark alternates between two states that
// differ near the start of the document, as a real change does.

void BM_SaveSessionOf100Tabs(benchmark::State& state) {
    StoreOnDisk disk;
    const ovel::SessionStore sessions[] = {sessionOfTabs(100, 7), sessionOfTabs(100, 42)};
    const std::string key = std::string("ovel.session.v3.") + profileId;
    std::size_t turn = 0;
    for (auto _ : state) {
        turn ^= 1;
        disk.store->setData(key, ovel::encodeSession(sessions[turn]));
        disk.store->flush();
    }
    state.counters["blob_bytes"] = static_cast<double>(ovel::encodeSession(sessions[0]).size());
    if (disk.store->data(key) != ovel::encodeSession(sessions[turn])) {
        state.SkipWithError("the session was not stored");
    }
}
BENCHMARK(BM_SaveSessionOf100Tabs)->Unit(benchmark::kMicrosecond);

void BM_SaveHistoryOf500Visits(benchmark::State& state) {
    StoreOnDisk disk;
    // The second is the first after one more visit: a new entry in front, the oldest gone.
    const auto older = historyOfVisits(501);
    const std::vector<ovel::HistoryEntry> histories[] = {{older.begin() + 1, older.end()},
                                                         {older.begin(), older.end() - 1}};
    const std::string key = std::string("ovel.history.v1.") + profileId;
    std::size_t turn = 0;
    for (auto _ : state) {
        turn ^= 1;
        disk.store->setData(key, ovel::encodeHistory(histories[turn]));
        disk.store->flush();
    }
    state.counters["blob_bytes"] = static_cast<double>(ovel::encodeHistory(histories[0]).size());
    if (disk.store->data(key) != ovel::encodeHistory(histories[turn])) {
        state.SkipWithError("the history was not stored");
    }
}
BENCHMARK(BM_SaveHistoryOf500Visits)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
