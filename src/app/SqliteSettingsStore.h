#pragma once

#include "records/SettingsStore.h"

#include <filesystem>
#include <memory>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace ovel {

// The settings store kept in one SQLite file, one row per key in the table `settings`
// (key, type, value). Every write is its own transaction and is on disk when the call returns.
//
// Nothing here fails loudly: a file that is not a database, or a damaged one, is moved aside and
// a fresh store is started; when no file can be used at all the store lives in memory for this
// run; a read that meets an error answers "absent" and a write that fails leaves the file as it
// was.
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
    void remove(std::string_view key) override;

private:
    enum class ValueType { String, Bool, Data };
    struct StoredValue {
        std::string bytes;
        bool flag = false;
    };

    static std::string_view typeName(ValueType type);

    // Takes ownership of an open database whose table is in place.
    explicit SqliteSettingsStore(sqlite3* db);

    std::optional<StoredValue> read(std::string_view key, ValueType type) const;
    void write(std::string_view key, ValueType type, std::variant<std::string_view, bool> value);

    sqlite3* db_;
    // Prepared once; null when preparing failed, which turns reads into "absent".
    sqlite3_stmt* select_ = nullptr;
    sqlite3_stmt* upsert_ = nullptr;
    sqlite3_stmt* delete_ = nullptr;
};

} // namespace ovel
