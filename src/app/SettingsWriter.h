#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace ovel {

// What a write does to one key: stores a value of one type, or removes the key.
struct SettingChange {
    enum class Kind { String, Bool, Data, Removed };
    Kind kind = Kind::Removed;
    std::string bytes; // String and Data
    bool flag = false; // Bool
    // When set, a Data change's bytes are what it returns, made when first needed.
    std::function<std::string()> encode;

    // The text in the table's `type` column; Removed has none.
    static std::string_view typeName(Kind kind);
};

// A change put and not yet committed. A change given as an encoder gets its bytes on first use,
// once, on the writer's thread or in a read, whichever comes first.
class PendingChange {
public:
    explicit PendingChange(SettingChange change) : change_(std::move(change)) {}
    SettingChange::Kind kind() const { return change_.kind; }
    bool flag() const { return change_.flag; }
    const std::string& bytes() const;

private:
    mutable std::once_flag encoded_;
    mutable SettingChange change_;
};

// Commits the settings store's writes on a thread of its own, so the caller never waits for the
// disk. A change is pending from put() until the transaction that holds it is committed; the
// store answers reads of a pending key from here. Pending changes of one key collapse to the
// last, and every pending key goes into the next transaction, so the file always holds the state
// after some prefix of the writes.
//
// A failed commit (a full disk, a lock held too long by another process) rolls back, is reported
// on stderr once until a commit succeeds again, and leaves its changes pending: the next write,
// or flush(), tries them again.
class SettingsWriter {
public:
    // Takes `db`, an open database whose table is in place: from here on only the writer's
    // thread uses it, and closes it. With null nothing is ever written and every change stays
    // pending, which is how a store that cannot use its file keeps settings for the session.
    explicit SettingsWriter(sqlite3* db);
    // Commits what was put, then stops the thread.
    ~SettingsWriter();
    SettingsWriter(const SettingsWriter&) = delete;
    SettingsWriter& operator=(const SettingsWriter&) = delete;

    void put(std::string_view key, SettingChange change);
    // The change to `key` not yet committed, or null.
    std::shared_ptr<const PendingChange> pending(std::string_view key) const;
    // Waits until every change put so far is committed (retrying failed ones once); true when
    // they are all on disk.
    bool flush();

private:
    struct Entry {
        std::shared_ptr<const PendingChange> change;
        std::uint64_t sequence = 0;
    };
    using Batch = std::vector<std::pair<std::string, std::shared_ptr<const PendingChange>>>;

    void run();
    // Writes the batch in one transaction; an empty answer means it is committed, else the
    // error.
    std::string commit(const Batch& batch);

    // The connection and its statements are used by the writer's thread only.
    sqlite3* db_;
    sqlite3_stmt* upsert_ = nullptr;
    sqlite3_stmt* delete_ = nullptr;

    mutable std::mutex mutex_;
    std::condition_variable work_;
    std::condition_variable settled_;
    std::map<std::string, Entry, std::less<>> pending_;
    // Sequence numbers of writes: the last one put, the last one handed to a transaction, and the
    // last one whose transaction has ended, one way or the other.
    std::uint64_t written_ = 0;
    std::uint64_t taken_ = 0;
    std::uint64_t settledUpTo_ = 0;
    bool inFlight_ = false;
    bool failed_ = false;
    bool retryRequested_ = false;
    bool stopping_ = false;

    std::thread thread_;
};

} // namespace ovel
