#include "app/GioDesktop.h"
#include "app/SqliteSettingsStore.h"
#include "support/TestEnvironment.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sqlite3.h>

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace ovel::test {
namespace {

class GioDesktopTest : public ::testing::Test {
protected:
    test::TemporaryFolder folder;
    const fs::path& home = folder.path();
};

TEST_F(GioDesktopTest, DownloadsGoToTheNamedFolderElseDownloadsInHome) {
    std::ofstream(home / "file") << "in the way";
    const std::string fallback = home / "Downloads";
    const struct {
        const char* name;
        std::optional<std::string> named;
        std::string expected;
    } cases[] = {
        {"none named", std::nullopt, fallback},
        {"home itself", home.string(), fallback},
        {"home with a slash", home.string() + "/", fallback},
        {"own folder, made with its parents", home / "Incoming" / "New", home / "Incoming" / "New"},
        {"named folder cannot be made", home / "file" / "sub", fallback},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(fallback);
        const auto folder =
            GioDesktop::downloadsFolderFor(c.named ? c.named->c_str() : nullptr, home.string());
        EXPECT_EQ(folder, c.expected);
        EXPECT_TRUE(fs::is_directory(c.expected));
    }

    fs::remove_all(fallback);
    std::ofstream(fallback) << "a file where the folder should be";
    EXPECT_EQ(GioDesktop::downloadsFolderFor(nullptr, home.string()), std::nullopt);
}

TEST_F(GioDesktopTest, FileExistsForAnythingAtThePathEvenADanglingLink) {
    std::ofstream(home / "file") << "x";
    fs::create_directory(home / "folder");
    fs::create_symlink(home / "gone", home / "dangling");
    const struct {
        std::string path;
        bool exists;
    } cases[] = {
        {home / "file", true},
        {home / "folder", true},
        {home / "dangling", true},
        {home / "gone", false},
        {home / "file" / "below", false},
        {(home / "file").string() + "\0suffix"s, false},
        {"", false},
    };
    const GioDesktop desktop;
    for (const auto& c : cases) {
        EXPECT_EQ(desktop.fileExists(c.path), c.exists) << c.path;
    }
}

class SqliteSettingsStoreTest : public ::testing::Test {
protected:
    // Names of the files in the store's folder that a damaged store was moved to.
    std::vector<fs::path> movedAside() const {
        static const std::regex name(R"(settings\.sqlite3\.corrupt-\d+)");
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(file.parent_path())) {
            if (std::regex_match(entry.path().filename().string(), name)) {
                found.push_back(entry.path());
            }
        }
        return found;
    }

    test::TemporaryFolder folder;
    const fs::path file = folder / "config" / "settings.sqlite3";
};

enum class Kind { Absent, String, Bool, Data };
struct Stored {
    std::string key;
    Kind kind;
    std::string bytes; // for Bool: "1" or "0"
};

// Every reader answers only for the type that was written.
void expectReadsBack(const SettingsStore& store, const Stored& row) {
    SCOPED_TRACE(row.key);
    const auto expected = [&](Kind kind) {
        return row.kind == kind ? std::optional(row.bytes) : std::nullopt;
    };
    EXPECT_EQ(store.string(row.key), expected(Kind::String));
    EXPECT_EQ(store.data(row.key), expected(Kind::Data));
    EXPECT_EQ(store.holdsBoolean(row.key), row.kind == Kind::Bool);
    EXPECT_EQ(store.boolean(row.key), row.kind == Kind::Bool && row.bytes == "1");
}

void store(SettingsStore& store, const Stored& row) {
    switch (row.kind) {
    case Kind::Absent:
        store.remove(row.key);
        break;
    case Kind::String:
        store.setString(row.key, row.bytes);
        break;
    case Kind::Bool:
        store.setBoolean(row.key, row.bytes == "1");
        break;
    case Kind::Data:
        store.setData(row.key, row.bytes);
        break;
    }
}

// The rows another connection reads for `sql`, each as its columns' text joined by spaces.
std::vector<std::string> rowsOf(sqlite3* db, const char* sql) {
    std::vector<std::string> result;
    const auto addRow = [](void* out, int count, char** values, char**) {
        std::string row;
        for (int i = 0; i < count; ++i) {
            row += (i ? " " : "") + std::string(values[i] ? values[i] : "NULL");
        }
        static_cast<std::vector<std::string>*>(out)->push_back(row);
        return 0;
    };
    EXPECT_EQ(sqlite3_exec(db, sql, addRow, &result, nullptr), SQLITE_OK) << sql;
    return result;
}

std::string everyByte(int repeat) {
    std::string bytes;
    for (int i = 0; i < repeat * 256; ++i) {
        bytes.push_back(static_cast<char>(i % 256));
    }
    return bytes;
}

const std::vector<Stored> sampleRows = {
    {"ovel.theme", Kind::String, "ocean"},
    {"string true", Kind::String, "true"},
    {"unicode", Kind::String, "Grüße, 東京 ✓"},
    {"empty string", Kind::String, ""},
    {"string with NUL", Kind::String, "a\0b"s},
    {"ovel.smoothAnimations", Kind::Bool, "0"},
    {"ovel.adBlockEnabled", Kind::Bool, "1"},
    {"blob one", Kind::Data, "1"},
    {"blob json", Kind::Data, R"({"tabs":[],"selectedIndex":0})"},
    {"blob NULs and bad UTF-8", Kind::Data, "\0\0\xff\xfe\xc3("s},
    {"empty blob", Kind::Data, ""},
    {"blob of every byte", Kind::Data, everyByte(4096)},
    {"key with NUL \0 inside"s, Kind::String, "kept"},
};

TEST_F(SqliteSettingsStoreTest, KeepsEachValueByteExactWithItsTypeAcrossReopening) {
    {
        auto settings = SqliteSettingsStore::open(file);
        for (const auto& row : sampleRows) {
            store(*settings, row);
        }
        for (const auto& row : sampleRows) {
            expectReadsBack(*settings, row);
        }
    }
    auto reopened = SqliteSettingsStore::open(file);
    for (const auto& row : sampleRows) {
        expectReadsBack(*reopened, row);
    }
    expectReadsBack(*reopened, {"never written", Kind::Absent, {}});
    EXPECT_TRUE(movedAside().empty());
}

// Writes hop between keys and types and removals, many times each: after a flush the file holds
// each key's last form, as a fresh store on it reads.
TEST_F(SqliteSettingsStoreTest, AFlushLeavesTheLastOfManyWritesInTheFile) {
    auto settings = SqliteSettingsStore::open(file);
    std::vector<Stored> last;
    for (int round = 0; round < 300; ++round) {
        for (int key = 0; key < 5; ++key) {
            const Kind kind = static_cast<Kind>((round + key) % 4);
            Stored row{"key " + std::to_string(key), kind,
                       kind == Kind::Bool ? std::to_string(round % 2)
                                          : std::string(round * 40 + key, 'a' + key)};
            store(*settings, row);
            if (round == 299) {
                last.push_back(row);
            }
        }
    }
    for (const auto& row : last) {
        expectReadsBack(*settings, row);
    }
    ASSERT_TRUE(settings->flush());
    const auto fresh = SqliteSettingsStore::open(file);
    for (const auto& row : last) {
        expectReadsBack(*fresh, row);
    }
}

// Another process holds the file's write lock, so nothing can be committed: the store still
// answers with what was just written, and the file gets it once the lock is gone.
TEST_F(SqliteSettingsStoreTest, ReadsSeeWritesBeforeTheyAreCommitted) {
    auto settings = SqliteSettingsStore::open(file);
    settings->setString("theme", "ocean");
    settings->setData("gone", "soon");
    ASSERT_TRUE(settings->flush());

    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const std::vector<Stored> rows = {
        {"theme", Kind::String, "citrus"}, {"gone", Kind::Absent, {}}, {"new", Kind::Bool, "1"}};
    for (const auto& row : rows) {
        store(*settings, row);
    }
    for (const auto& row : rows) {
        expectReadsBack(*settings, row);
    }
    // A blob given as its encoder is made once, whether a read or the commit needs it first.
    std::atomic<int> encodings = 0;
    settings->setDataFrom("encoded", [&encodings] {
        ++encodings;
        return "made"s;
    });
    EXPECT_EQ(settings->data("encoded"), "made");
    const auto onDisk = [other] {
        return rowsOf(other, "SELECT key || '=' || value FROM settings ORDER BY key");
    };
    EXPECT_EQ(onDisk(), (std::vector<std::string>{"gone=soon", "theme=ocean"}));
    ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);

    EXPECT_TRUE(settings->flush());
    EXPECT_EQ(onDisk(), (std::vector<std::string>{"encoded=made", "new=1", "theme=citrus"}));
    EXPECT_EQ(encodings, 1);
    sqlite3_close(other);
    for (const auto& row : rows) {
        expectReadsBack(*settings, row);
    }
}

TEST_F(SqliteSettingsStoreTest, RowsLieInTheSettingsTableWithTheirSqlTypes) {
    {
        auto settings = SqliteSettingsStore::open(file);
        settings->setString("s", "Grüße");
        settings->setBoolean("t", true);
        settings->setBoolean("f", false);
        settings->setData("d", "\x00\x01"s);
    }
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    EXPECT_EQ(rowsOf(db, "SELECT sql FROM sqlite_schema WHERE type = 'table'"),
              std::vector<std::string>{
                  "CREATE TABLE settings (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL "
                  "CHECK (type IN ('string','bool','data')), value BLOB NOT NULL)"});
    EXPECT_EQ(rowsOf(db, "PRAGMA journal_mode"), std::vector<std::string>{"wal"});
    EXPECT_EQ(rowsOf(db, "SELECT key, type, typeof(value), hex(value) FROM settings ORDER BY key"),
              (std::vector<std::string>{"d data blob 0001", "f bool integer 30",
                                        "s string text 4772C3BCC39F65", "t bool integer 31"}));
    sqlite3_close(db);
}

// A real store of a few dozen pages, as bytes, to damage.
std::string realDatabaseBytes(const fs::path& file) {
    {
        auto settings = SqliteSettingsStore::open(file);
        for (int i = 0; i < 200; ++i) {
            settings->setData("key " + std::to_string(i),
                              std::string(1000, static_cast<char>('a' + i % 26)));
        }
    }
    std::string bytes = test::readFile(file);
    fs::remove(file);
    return bytes;
}

TEST_F(SqliteSettingsStoreTest, MovesADamagedFileAsideAndStartsAFreshStore) {
    fs::create_directories(file.parent_path());
    const std::string database = realDatabaseBytes(file);
    ASSERT_GT(database.size(), 100'000u);
    const struct {
        const char* name;
        std::string bytes;
    } damages[] = {
        {"not a database", "these bytes are no database\0\xff"s + std::string(5000, 'x')},
        {"truncated to half", database.substr(0, database.size() / 2)},
        {"header cut short", database.substr(0, 60)},
        {"pages overwritten", database.substr(0, 8192) + std::string(database.size() - 8192, 'z')},
    };
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.name);
        fs::remove_all(file.parent_path());
        fs::create_directories(file.parent_path());
        test::writeFile(file, damage.bytes);

        auto settings = SqliteSettingsStore::open(file);
        EXPECT_EQ(settings->data("key 1"), std::nullopt);
        settings->setString("after", "works");
        settings = SqliteSettingsStore::open(file);
        EXPECT_EQ(settings->string("after"), "works");

        const auto moved = movedAside();
        ASSERT_EQ(moved.size(), 1u);
        EXPECT_TRUE(test::readFile(moved.front()) == damage.bytes);
    }
}

TEST_F(SqliteSettingsStoreTest, AnUnusableLocationKeepsSettingsInMemoryAndTouchesNothing) {
    fs::create_directories(folder / "taken");
    test::writeFile(folder / "plain file", "mine");
    const fs::path places[] = {folder / "plain file" / "settings.sqlite3", folder / "taken"};
    for (const auto& place : places) {
        SCOPED_TRACE(place);
        auto settings = SqliteSettingsStore::open(place);
        ASSERT_NE(settings, nullptr);
        settings->setString("theme", "ocean");
        EXPECT_EQ(settings->string("theme"), "ocean");
    }
    EXPECT_EQ(test::readFile(folder / "plain file"), "mine");
    EXPECT_TRUE(fs::is_directory(folder / "taken"));
    EXPECT_TRUE(fs::is_empty(folder / "taken"));
}

} // namespace
} // namespace ovel::test
