#pragma once

#include <sqlite3.h>

#include <string_view>

namespace ovel {

// Resets a cached statement when a call is done with it, whichever way it leaves.
class StatementUse {
public:
    explicit StatementUse(sqlite3_stmt* statement) : statement_(statement) {}
    ~StatementUse() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;

private:
    sqlite3_stmt* statement_;
};

// A statement kept for the life of its connection; null when preparing failed.
inline sqlite3_stmt* prepareKept(sqlite3* db, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK) {
        sqlite3_finalize(statement);
        return nullptr;
    }
    return statement;
}

// The statement only reads `text` while it runs, so SQLite need not copy it.
inline bool bindText(sqlite3_stmt* statement, int index, std::string_view text) {
    return sqlite3_bind_text64(statement, index, text.data() ? text.data() : "", text.size(),
                               SQLITE_STATIC, SQLITE_UTF8) == SQLITE_OK;
}

inline bool bindBlob(sqlite3_stmt* statement, int index, std::string_view bytes) {
    // A null pointer would bind SQL NULL, which the table refuses; an empty blob is not NULL.
    return sqlite3_bind_blob64(statement, index, bytes.data() ? bytes.data() : "", bytes.size(),
                               SQLITE_STATIC) == SQLITE_OK;
}

} // namespace ovel
