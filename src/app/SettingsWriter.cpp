#include "app/SettingsWriter.h"

#include "app/SqliteStatement.h"

#include <cstdio>
#include <vector>

namespace ovel {

std::string_view SettingChange::typeName(Kind kind) {
    switch (kind) {
    case Kind::String:
        return "string";
    case Kind::Bool:
        return "bool";
    case Kind::Data:
        return "data";
    case Kind::Removed:
        break;
    }
    return {};
}

const std::string& PendingChange::bytes() const {
    std::call_once(encoded_, [this] {
        if (change_.encode) {
            change_.bytes = change_.encode();
            change_.encode = nullptr; // frees what it captured
        }
    });
    return change_.bytes;
}

SettingsWriter::SettingsWriter(sqlite3* db) : db_(db) {
    if (db_) {
        thread_ = std::thread([this] { run(); });
    }
}

SettingsWriter::~SettingsWriter() {
    flush();
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    work_.notify_one();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void SettingsWriter::put(std::string_view key, SettingChange change) {
    auto shared = std::make_shared<const PendingChange>(std::move(change));
    {
        std::lock_guard lock(mutex_);
        // The value it replaces may still be in a transaction under way, which holds it too.
        pending_[std::string(key)] = Entry{std::move(shared), ++written_};
    }
    work_.notify_one();
}

std::shared_ptr<const PendingChange> SettingsWriter::pending(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto found = pending_.find(key);
    return found == pending_.end() ? nullptr : found->second.change;
}

bool SettingsWriter::flush() {
    if (!db_) {
        return false;
    }
    std::unique_lock lock(mutex_);
    if (failed_) {
        retryRequested_ = true;
        work_.notify_one();
    }
    const std::uint64_t target = written_;
    settled_.wait(lock, [&] { return settledUpTo_ >= target && !inFlight_ && !retryRequested_; });
    return !failed_;
}

void SettingsWriter::run() {
    // Prepared once, on the thread that uses them; null when preparing failed, which makes every
    // commit fail.
    upsert_ = prepareKept(db_, "INSERT INTO settings (key, type, value) VALUES (?1, ?2, ?3) "
                               "ON CONFLICT (key) DO UPDATE SET type = excluded.type, "
                               "value = excluded.value");
    delete_ = prepareKept(db_, "DELETE FROM settings WHERE key = ?1");

    std::unique_lock lock(mutex_);
    for (;;) {
        work_.wait(lock, [&] { return stopping_ || written_ > taken_ || retryRequested_; });
        if (written_ == taken_ && !retryRequested_) {
            break; // stopping, and nothing is left to write
        }
        // After a failure the changes that did not make it are still pending: take them all.
        Batch batch;
        for (const auto& [key, entry] : pending_) {
            if (failed_ || entry.sequence > taken_) {
                batch.emplace_back(key, entry.change);
            }
        }
        const std::uint64_t upTo = written_;
        taken_ = upTo;
        retryRequested_ = false;
        inFlight_ = true;

        lock.unlock();
        const std::string error = commit(batch);
        batch.clear(); // values replaced meanwhile are freed here, not under the lock
        lock.lock();

        if (error.empty()) {
            // A key written again meanwhile stays pending with its newer value.
            std::erase_if(pending_,
                          [upTo](const auto& item) { return item.second.sequence <= upTo; });
            failed_ = false;
        } else {
            if (!failed_) {
                std::fprintf(stderr, "ovel-web: settings could not be saved (%s); will try again\n",
                             error.c_str());
            }
            failed_ = true;
        }
        settledUpTo_ = upTo;
        inFlight_ = false;
        settled_.notify_all();
    }
    lock.unlock();
    sqlite3_finalize(upsert_);
    sqlite3_finalize(delete_);
    sqlite3_close(db_);
}

std::string SettingsWriter::commit(const Batch& batch) {
    if (batch.empty()) {
        return {};
    }
    // Taking the write lock at the start means a busy file fails here, before anything is
    // written, rather than at COMMIT.
    if (sqlite3_exec(db_, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK) {
        return sqlite3_errmsg(db_);
    }
    std::string error;
    for (const auto& [key, change] : batch) {
        const bool removing = change->kind() == SettingChange::Kind::Removed;
        sqlite3_stmt* statement = removing ? delete_ : upsert_;
        if (!statement) {
            error = "cannot prepare statements";
            break;
        }
        StatementUse use(statement);
        bool bound = bindText(statement, 1, key);
        if (!removing) {
            bound = bound && bindText(statement, 2, SettingChange::typeName(change->kind()));
            switch (change->kind()) {
            case SettingChange::Kind::Bool:
                bound =
                    bound && sqlite3_bind_int(statement, 3, change->flag() ? 1 : 0) == SQLITE_OK;
                break;
            case SettingChange::Kind::String:
                bound = bound && bindText(statement, 3, change->bytes());
                break;
            case SettingChange::Kind::Data:
            case SettingChange::Kind::Removed:
                bound = bound && bindBlob(statement, 3, change->bytes());
                break;
            }
        }
        if (!bound || sqlite3_step(statement) != SQLITE_DONE) {
            error = sqlite3_errmsg(db_);
            break;
        }
    }
    if (error.empty() && sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
        error = sqlite3_errmsg(db_);
    }
    // Whatever failed, the file keeps what it held before the transaction.
    if (!error.empty() && !sqlite3_get_autocommit(db_)) {
        sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    return error;
}

} // namespace ovel
