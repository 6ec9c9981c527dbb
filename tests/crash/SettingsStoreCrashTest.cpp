#include "app/SqliteSettingsStore.h"
#include "records/RecordsJson.h"
#include "support/StoreWriterRecords.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <map>
#include <poll.h>
#include <random>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace ovel::test {
namespace {

// The highest write numbers a writer printed, that is, that setData returned for.
struct Acknowledged {
    int session = 0;
    int history = 0;
};

struct WriterRun {
    int linesRead = 0;
    bool killed = false; // by our SIGKILL, not by exiting on its own
    bool stalled = false;
};

// When to kill a writer: once it has acknowledged `afterWrites` writes (none: while it starts and
// opens the file), and `delay` after that, so the kill falls anywhere in the write under way.
// Counting writes rather than time keeps the moments spread the same on a busy machine.
struct KillPlan {
    int afterWrites = 0;
    std::chrono::microseconds delay{0};
};

void readLines(std::string& pending, Acknowledged& acked, WriterRun& run) {
    for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
        const std::string line = pending.substr(0, end);
        pending.erase(0, end + 1);
        int sequence = 0;
        if (std::sscanf(line.c_str(), "session %d", &sequence) == 1) {
            acked.session = sequence;
        } else if (std::sscanf(line.c_str(), "history %d", &sequence) == 1) {
            acked.history = sequence;
        } else {
            ADD_FAILURE() << "the writer printed " << line;
        }
        ++run.linesRead;
    }
}

// Starts the writer on `file`, kills it with SIGKILL as planned and reads every line it printed
// before it died.
WriterRun runAndKill(const fs::path& file, const KillPlan& plan, Acknowledged& acked) {
    WriterRun run;
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "pipe2 failed";
        return run;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    std::string program = OVEL_STORE_WRITER;
    std::string path = file.string();
    char* argv[] = {program.data(), path.data(), nullptr};
    pid_t pid = -1;
    const int spawned = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(pipeFds[1]);
    if (spawned != 0) {
        ::close(pipeFds[0]);
        ADD_FAILURE() << "cannot start " << program;
        return run;
    }

    std::string pending;
    char buffer[4096];
    // A writer that makes no progress for this long is stuck, not slow.
    const auto giveUp = std::chrono::steady_clock::now() + 30s;
    bool writerExited = false;
    while (run.linesRead < plan.afterWrites && !writerExited) {
        if (std::chrono::steady_clock::now() > giveUp) {
            run.stalled = true;
            break;
        }
        pollfd readable{pipeFds[0], POLLIN, 0};
        if (::poll(&readable, 1, 100) > 0) {
            const ssize_t got = ::read(pipeFds[0], buffer, sizeof buffer);
            writerExited = got <= 0;
            pending.append(buffer, got > 0 ? got : 0);
            readLines(pending, acked, run);
        }
    }
    std::this_thread::sleep_for(plan.delay);
    ::kill(pid, SIGKILL);
    // What was printed before the kill is still in the pipe.
    for (ssize_t got; (got = ::read(pipeFds[0], buffer, sizeof buffer)) > 0;) {
        pending.append(buffer, got);
    }
    readLines(pending, acked, run);
    ::close(pipeFds[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    run.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    return run;
}

struct StoredWrites {
    std::optional<int> session;
    std::optional<int> history;
};

// Which of the writer's writes the two blobs are: each must be exactly one of them.
StoredWrites writesIn(const std::function<std::optional<std::string>(std::string)>& blobOf) {
    StoredWrites stored;
    if (const auto blob = blobOf(storeWriterSessionKey())) {
        const auto session = decodeSession(*blob);
        EXPECT_TRUE(session) << "the stored session decodes";
        if (session) {
            EXPECT_EQ(*session, storeWriterSession(session->selectedIndex));
            stored.session = session->selectedIndex;
        }
    }
    if (const auto blob = blobOf(storeWriterHistoryKey())) {
        const auto history = decodeHistory(*blob);
        EXPECT_TRUE(history && !history->empty()) << "the stored history decodes";
        if (history && !history->empty()) {
            stored.history = std::atoi(history->front().title.c_str());
            EXPECT_EQ(*history, storeWriterHistory(*stored.history));
        }
    }
    return stored;
}

// Reads the file with SQLite itself: the database is whole and holds only our two keys.
StoredWrites readRaw(const fs::path& file) {
    if (!fs::exists(file)) {
        return {}; // killed before it made the file
    }
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        ADD_FAILURE() << "sqlite3 cannot open the file: " << sqlite3_errmsg(db);
        sqlite3_close(db);
        return {};
    }
    std::vector<std::string> verdict;
    sqlite3_exec(
        db, "PRAGMA integrity_check",
        [](void* lines, int, char** values, char**) {
            static_cast<std::vector<std::string>*>(lines)->push_back(values[0] ? values[0] : "");
            return 0;
        },
        &verdict, nullptr);
    EXPECT_EQ(verdict, std::vector<std::string>{"ok"});

    // No table: killed before it made it.
    std::map<std::string, std::string> blobs;
    sqlite3_stmt* rows = nullptr;
    sqlite3_prepare_v2(db, "SELECT key, type, value FROM settings", -1, &rows, nullptr);
    while (rows && sqlite3_step(rows) == SQLITE_ROW) {
        const std::string key = reinterpret_cast<const char*>(sqlite3_column_text(rows, 0));
        EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(rows, 1)), "data") << key;
        EXPECT_TRUE(key == storeWriterSessionKey() || key == storeWriterHistoryKey()) << key;
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(rows, 2));
        blobs[key] = std::string(bytes ? bytes : "", sqlite3_column_bytes(rows, 2));
    }
    sqlite3_finalize(rows);
    sqlite3_close(db);
    return writesIn([&](const std::string& key) {
        const auto found = blobs.find(key);
        return found != blobs.end() ? std::optional(found->second) : std::nullopt;
    });
}

// Reads the file as the browser does.
StoredWrites readThroughStore(const fs::path& file) {
    const auto store = SqliteSettingsStore::open(file);
    return writesIn([&](const std::string& key) { return store->data(key); });
}

class SettingsStoreCrash : public ::testing::Test {
protected:
    TemporaryFolder folder;
    const fs::path file = folder / "settings.sqlite3";
};

TEST_F(SettingsStoreCrash, KilledWritersNeverLoseAnAcknowledgedWrite) {
    constexpr int trials = 60;
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> oneIn(1, 6);
    std::uniform_int_distribution<int> writes(1, 100);
    std::uniform_int_distribution<int> startupMicroseconds(0, 20'000);
    std::uniform_int_distribution<int> writeMicroseconds(0, 2'000);

    Acknowledged acked;
    // A writer goes on from the session it finds, which may be one write ahead of the last one
    // acknowledged: its first write is then two ahead.
    int storedBefore = 0;
    std::optional<ino_t> inode;
    for (int trial = 0; trial < trials; ++trial) {
        KillPlan plan;
        if (oneIn(random) == 1) {
            plan.delay = std::chrono::microseconds(startupMicroseconds(random));
        } else {
            plan.afterWrites = writes(random);
            plan.delay = std::chrono::microseconds(writeMicroseconds(random));
        }
        SCOPED_TRACE("trial " + std::to_string(trial) + ", killed " +
                     std::to_string(plan.delay.count()) + " us after write " +
                     std::to_string(plan.afterWrites) + " was acknowledged");
        const WriterRun run = runAndKill(file, plan, acked);
        ASSERT_FALSE(run.stalled) << "the writer stopped writing";
        ASSERT_TRUE(run.killed) << "the writer stopped on its own";

        struct stat info;
        if (::lstat(file.c_str(), &info) == 0) {
            EXPECT_TRUE(!inode || *inode == info.st_ino) << "the settings file was replaced";
            inode = info.st_ino;
        }

        const StoredWrites raw = readRaw(file);
        const StoredWrites store = readThroughStore(file);
        EXPECT_EQ(raw.session, store.session);
        EXPECT_EQ(raw.history, store.history);
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            EXPECT_EQ(entry.path().string().find(".corrupt"), std::string::npos) << "moved aside";
        }
        if (acked.session > 0) {
            ASSERT_TRUE(store.session) << "an acknowledged session is stored";
            EXPECT_GE(*store.session, acked.session);
            EXPECT_LE(*store.session, std::max(acked.session, storedBefore) + 1)
                << "at most one write is in flight";
        }
        storedBefore = store.session.value_or(storedBefore);
        if (acked.history > 0) {
            ASSERT_TRUE(store.history) << "an acknowledged history is stored";
            EXPECT_GE(*store.history, acked.history);
            EXPECT_LE(*store.history, store.session.value_or(0))
                << "a history is written after its session";
        }
        if (HasFailure()) {
            break;
        }
    }
}

} // namespace
} // namespace ovel::test
