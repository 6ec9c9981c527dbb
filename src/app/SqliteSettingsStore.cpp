#include "app/SqliteSettingsStore.h"

#include "app/SqliteStatement.h"

#include <glib.h>
#include <sqlite3.h>

#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace ovel {

namespace {

constexpr const char* createTableSql =
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL "
    "CHECK (type IN ('string','bool','data')), value BLOB NOT NULL)";

// Long enough to wait out another instance's write; short enough not to freeze the window.
constexpr int busyTimeoutMilliseconds = 2000;

enum class OpenOutcome { Ready, Damaged, Unusable };

bool isDamage(int resultCode) {
    const int primary = resultCode & 0xff;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

OpenOutcome outcomeOfFailure(int resultCode) {
    return isDamage(resultCode) ? OpenOutcome::Damaged : OpenOutcome::Unusable;
}

// SQLite finds a foreign file only when it first reads a page; the header says so at once. An
// empty file is a new database.
bool headerLooksLikeSqlite(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return true;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return true; // unreadable: SQLite will say why, and that is not damage
    }
    static constexpr char magic[] = "SQLite format 3"; // with its terminating NUL: 16 bytes
    char header[sizeof magic] = {};
    file.read(header, sizeof header);
    const auto got = file.gcount();
    return got == 0 || (got == sizeof header && std::memcmp(header, magic, sizeof magic) == 0);
}

// History and sessions are private: a new settings file (and so its -wal and -shm, which SQLite
// creates with the same mode) is readable by its owner only.
void createPrivately(const fs::path& path) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (fd >= 0) {
        ::close(fd);
    }
}

OpenOutcome quickCheck(sqlite3* db) {
    sqlite3_stmt* check = nullptr;
    const int prepared = sqlite3_prepare_v2(db, "PRAGMA quick_check", -1, &check, nullptr);
    if (prepared != SQLITE_OK) {
        sqlite3_finalize(check);
        return outcomeOfFailure(prepared);
    }
    OpenOutcome outcome;
    const int stepped = sqlite3_step(check);
    if (stepped == SQLITE_ROW) {
        const auto* verdict = reinterpret_cast<const char*>(sqlite3_column_text(check, 0));
        outcome =
            verdict && std::strcmp(verdict, "ok") == 0 ? OpenOutcome::Ready : OpenOutcome::Damaged;
    } else {
        outcome = outcomeOfFailure(stepped);
    }
    sqlite3_finalize(check);
    return outcome;
}

struct OpenedDatabase {
    sqlite3* db = nullptr;
    OpenOutcome outcome = OpenOutcome::Unusable;
};

OpenedDatabase openDatabase(const fs::path& path) {
    createPrivately(path);
    if (!headerLooksLikeSqlite(path)) {
        return {nullptr, OpenOutcome::Damaged};
    }
    sqlite3* db = nullptr;
    const int opened =
        sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (opened != SQLITE_OK) {
        sqlite3_close(db);
        return {nullptr, outcomeOfFailure(opened)};
    }
    sqlite3_busy_timeout(db, busyTimeoutMilliseconds);

    if (const auto checked = quickCheck(db); checked != OpenOutcome::Ready) {
        sqlite3_close(db);
        return {nullptr, checked};
    }
    // Most of the file is JSON blobs of tens of kilobytes: larger pages cut the pages (and
    // system calls) each save writes by four. Takes effect only in a new, empty file.
    sqlite3_exec(db, "PRAGMA page_size = 16384", nullptr, nullptr, nullptr);
    // A file system without shared memory keeps the rollback journal; the store works either way.
    sqlite3_exec(db, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
    // In WAL mode FULL syncs the log on every commit, so a returned write survives a power cut.
    sqlite3_exec(db, "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
    // Keep the log near 4 MiB: checkpoint after 256 pages, and shrink it back after one.
    sqlite3_exec(db, "PRAGMA wal_autocheckpoint = 256", nullptr, nullptr, nullptr);
    sqlite3_exec(db, "PRAGMA journal_size_limit = 4194304", nullptr, nullptr, nullptr);

    if (const int created = sqlite3_exec(db, createTableSql, nullptr, nullptr, nullptr);
        created != SQLITE_OK) {
        sqlite3_close(db);
        return {nullptr, outcomeOfFailure(created)};
    }
    return {db, OpenOutcome::Ready};
}

fs::path withSuffix(const fs::path& path, std::string_view suffix) {
    fs::path result = path;
    result += std::string(suffix);
    return result;
}

// Renames a damaged file to "<name>.corrupt-<unix time>" beside it, with its -wal and -shm, so
// nothing of it is lost and a fresh store can take its place.
bool moveAside(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return false; // whatever else sits at the path is not ours to move
    }
    const auto unixTime = std::chrono::duration_cast<std::chrono::seconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count();
    const std::string stamp = ".corrupt-" + std::to_string(unixTime);
    fs::path target = withSuffix(path, stamp);
    for (int n = 2; fs::symlink_status(target, error).type() != fs::file_type::not_found; ++n) {
        target = withSuffix(path, stamp + "-" + std::to_string(n));
    }
    fs::rename(path, target, error);
    if (error) {
        g_warning("The settings file %s is damaged and could not be moved aside: %s", path.c_str(),
                  error.message().c_str());
        return false;
    }
    g_warning("The settings file %s was damaged; it is kept as %s and a new one is started",
              path.c_str(), target.c_str());

    for (const std::string_view companion : {"-wal", "-shm"}) {
        const auto from = withSuffix(path, companion);
        if (fs::symlink_status(from, error).type() == fs::file_type::not_found) {
            continue;
        }
        fs::rename(from, withSuffix(target, companion), error);
        // A log left behind would be replayed into the new database.
        if (error && !fs::remove(from, error)) {
            return false;
        }
    }
    return true;
}

std::string columnBytes(sqlite3_stmt* statement, int column, bool asText) {
    const void* bytes = asText ? static_cast<const void*>(sqlite3_column_text(statement, column))
                               : sqlite3_column_blob(statement, column);
    const int size = sqlite3_column_bytes(statement, column);
    return bytes ? std::string(static_cast<const char*>(bytes), size) : std::string();
}

// A second connection to a database already opened and made ready, for reads only.
sqlite3* openReader(const fs::path& path) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        return nullptr;
    }
    sqlite3_busy_timeout(db, busyTimeoutMilliseconds);
    sqlite3_exec(db, "PRAGMA query_only = 1", nullptr, nullptr, nullptr);
    return db;
}

} // namespace

std::unique_ptr<SqliteSettingsStore> SqliteSettingsStore::open(const fs::path& path) {
    if (path.has_parent_path()) {
        g_mkdir_with_parents(path.parent_path().c_str(), 0700);
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto opened = openDatabase(path);
        if (opened.outcome == OpenOutcome::Ready) {
            if (sqlite3* reader = openReader(path)) {
                return std::unique_ptr<SqliteSettingsStore>(
                    new SqliteSettingsStore(opened.db, reader));
            }
            sqlite3_close(opened.db);
            break;
        }
        if (opened.outcome == OpenOutcome::Unusable || !moveAside(path)) {
            break;
        }
    }
    // Better to browse with settings that last only this session than not at all; the file, if
    // any, is left as it was.
    g_warning("The settings file %s cannot be used; settings will not be kept", path.c_str());
    return std::unique_ptr<SqliteSettingsStore>(new SqliteSettingsStore(nullptr, nullptr));
}

SqliteSettingsStore::SqliteSettingsStore(sqlite3* writeDb, sqlite3* readDb)
    : writer_(std::make_unique<SettingsWriter>(writeDb)), readDb_(readDb),
      select_(readDb ? prepareKept(readDb, "SELECT type, value FROM settings WHERE key = ?1")
                     : nullptr) {}

SqliteSettingsStore::~SqliteSettingsStore() {
    writer_->flush();
    // The reader goes first, so that the writer's connection is the last one and leaves the file
    // checkpointed as it closes.
    sqlite3_finalize(select_);
    sqlite3_close(readDb_);
    writer_.reset();
}

bool SqliteSettingsStore::flush() {
    return writer_->flush();
}

std::optional<SettingChange> SqliteSettingsStore::read(std::string_view key,
                                                       SettingChange::Kind kind) const {
    // A write not yet committed is newer than anything in the file.
    if (const auto pending = writer_->pending(key)) {
        if (pending->kind() != kind) {
            return std::nullopt;
        }
        return SettingChange{
            .kind = kind, .bytes = pending->bytes(), .flag = pending->flag(), .encode = {}};
    }
    std::lock_guard lock(readMutex_);
    if (!select_) {
        return std::nullopt;
    }
    StatementUse use(select_);
    if (!bindText(select_, 1, key) || sqlite3_step(select_) != SQLITE_ROW) {
        return std::nullopt;
    }
    const auto* storedType = reinterpret_cast<const char*>(sqlite3_column_text(select_, 0));
    if (!storedType || SettingChange::typeName(kind) != storedType) {
        return std::nullopt;
    }
    SettingChange value{.kind = kind, .bytes = {}, .flag = false, .encode = {}};
    if (kind == SettingChange::Kind::Bool) {
        if (sqlite3_column_type(select_, 1) != SQLITE_INTEGER) {
            return std::nullopt;
        }
        value.flag = sqlite3_column_int64(select_, 1) != 0;
    } else {
        value.bytes = columnBytes(select_, 1, kind == SettingChange::Kind::String);
    }
    return value;
}

std::optional<std::string> SqliteSettingsStore::string(std::string_view key) const {
    auto value = read(key, SettingChange::Kind::String);
    return value ? std::optional(std::move(value->bytes)) : std::nullopt;
}

bool SqliteSettingsStore::boolean(std::string_view key) const {
    const auto value = read(key, SettingChange::Kind::Bool);
    return value && value->flag;
}

bool SqliteSettingsStore::holdsBoolean(std::string_view key) const {
    return read(key, SettingChange::Kind::Bool).has_value();
}

std::optional<std::string> SqliteSettingsStore::data(std::string_view key) const {
    auto value = read(key, SettingChange::Kind::Data);
    return value ? std::optional(std::move(value->bytes)) : std::nullopt;
}

void SqliteSettingsStore::setString(std::string_view key, std::string_view value) {
    writer_->put(key, {.kind = SettingChange::Kind::String,
                       .bytes = std::string(value),
                       .flag = false,
                       .encode = {}});
}

void SqliteSettingsStore::setBoolean(std::string_view key, bool value) {
    writer_->put(key,
                 {.kind = SettingChange::Kind::Bool, .bytes = {}, .flag = value, .encode = {}});
}

void SqliteSettingsStore::setData(std::string_view key, std::string_view bytes) {
    writer_->put(key, {.kind = SettingChange::Kind::Data,
                       .bytes = std::string(bytes),
                       .flag = false,
                       .encode = {}});
}

void SqliteSettingsStore::setDataFrom(std::string_view key, std::function<std::string()> encode) {
    writer_->put(key, {.kind = SettingChange::Kind::Data,
                       .bytes = {},
                       .flag = false,
                       .encode = std::move(encode)});
}

void SqliteSettingsStore::remove(std::string_view key) {
    writer_->put(key,
                 {.kind = SettingChange::Kind::Removed, .bytes = {}, .flag = false, .encode = {}});
}

} // namespace ovel
