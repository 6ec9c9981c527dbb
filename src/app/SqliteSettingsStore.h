#pragma once

#include "app/SettingsWriter.h"
#include "records/SettingsStore.h"

#include <filesystem>
#include <memory>
#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

namespace ovel {

// The settings store kept in one SQLite file, one row per key in the table `settings`
// (key, type, value).
//
// A write returns at once: the value is kept in memory, where reads find it, and a thread of the
// store's own commits it durably (synchronous FULL) moments later, together with whatever else
// was written meanwhile. flush() waits for those commits, and so does the destructor, so
// nothing is lost on a normal exit; a killed process loses at most the writes it had not
// flushed, and the file stays whole. Reads go through a second connection, which WAL lets read
// while a commit is under way.
//
// Nothing here fails loudly: a file that is not a database, or a damaged one, is moved aside and
// a fresh store is started; when no file can be used at all the store lives in memory for this
// run; a read that meets an error answers "absent" and a write that cannot be committed leaves
// the file as it was.
class SqliteSettingsStore : public SettingsStore {
public:
    // Opens (or creates, with its folder) the store at `path`. Never answers null.
    static std::unique_ptr<SqliteSettingsStore> open(const std::filesystem::path& path);

    ~SqliteSettingsStore() override;
    SqliteSettingsStore(const SqliteSettingsStore&) = delete;
    SqliteSettingsStore& operator=(const SqliteSettingsStore&) = delete;

    std::optional<std::string> string(std::string_view key) const override;
    bool boolean(std::string_view key) const override;
    bool holdsBoolean(std::string_view key) const override;
    std::optional<std::string> data(std::string_view key) const override;

    void setString(std::string_view key, std::string_view value) override;
    void setBoolean(std::string_view key, bool value) override;
    void setData(std::string_view key, std::string_view bytes) override;
    void setDataFrom(std::string_view key, std::function<std::string()> encode) override;
    void remove(std::string_view key) override;

    // Waits until every write made so far is on disk; false when some could not be saved (or
    // the store lives in memory).
    bool flush();

private:
    // Takes ownership of two connections to one database whose table is in place: the writer's,
    // and one for reads. Both null: the store lives in memory.
    SqliteSettingsStore(sqlite3* writeDb, sqlite3* readDb);

    // The value under `key` if it has `kind`, from the pending writes first, then the file.
    std::optional<SettingChange> read(std::string_view key, SettingChange::Kind kind) const;

    std::unique_ptr<SettingsWriter> writer_;
    // Reads come from the caller's thread; the lock only keeps two callers off the one
    // connection.
    mutable std::mutex readMutex_;
    sqlite3* readDb_;
    // Prepared once; null when preparing failed, which turns reads into "absent".
    sqlite3_stmt* select_ = nullptr;
};

} // namespace ovel
