#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <functional>

#include "TemporaryFolder.h"
#include "sql/sqlite/Connection.h"
#include "sql/sqlite/Errors.h"

using kxudm::sql::Error;
using kxudm::sql::ErrorKind;
using testing::AllOf;
using testing::HasSubstr;
namespace sqlite = kxudm::sql::sqlite;

namespace {

// The error of an action that must fail.
Error ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error;
    }
    throw std::logic_error("the action did not fail");
}

std::unique_ptr<kxudm::sql::Connection> MakeTable(const std::string& file) {
    auto connection = sqlite::Open({.file = file, .create = true, .busyTimeoutMilliseconds = 50});
    connection->Execute("CREATE TABLE IF NOT EXISTS t(a INTEGER PRIMARY KEY, b UNIQUE, c BLOB)");
    return connection;
}

}  // namespace

TEST(SqliteErrors, EachCodeHasItsKind) {
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_BUSY), ErrorKind::Busy);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_BUSY_SNAPSHOT), ErrorKind::Busy);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_LOCKED), ErrorKind::Busy);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_PROTOCOL), ErrorKind::Busy);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_FULL), ErrorKind::Full);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_READONLY), ErrorKind::ReadOnly);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_READONLY_DIRECTORY), ErrorKind::ReadOnly);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_CORRUPT), ErrorKind::Corrupt);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_NOTADB), ErrorKind::NotDatabase);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_CONSTRAINT_UNIQUE), ErrorKind::Constraint);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_CANTOPEN), ErrorKind::CannotOpen);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_PERM), ErrorKind::CannotOpen);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_AUTH), ErrorKind::CannotOpen);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_IOERR_READ), ErrorKind::Io);
    EXPECT_EQ(sqlite::KindOfCode(SQLITE_ERROR), ErrorKind::Other);
}

TEST(SqliteErrors, TextNamesFileProblemRemedyCauseAndStatement) {
    const Error error = ErrorOf([] {
        sqlite::ThrowCode(
            SQLITE_BUSY, {"library", "/data/N.ldb", "begin writing"}, "database is locked");
    });
    EXPECT_STREQ(error.what(),
                 "library '/data/N.ldb': another program or session kept it locked for too long; "
                 "close or finish that one, then try again (database is locked, in begin writing)");
}

TEST(SqliteErrors, AWriterThatKeepsTheLockMakesTheSecondOneBusy) {
    TemporaryFolder folder;
    const auto first = MakeTable(folder.File("a.db"));
    const auto second = MakeTable(folder.File("a.db"));
    kxudm::sql::Transaction holding(*first);
    const Error error = ErrorOf([&] { kxudm::sql::Transaction waiting(*second); });
    EXPECT_EQ(error.Kind(), ErrorKind::Busy);
    EXPECT_THAT(error.what(), AllOf(HasSubstr(folder.File("a.db")), HasSubstr("try again")));
}

TEST(SqliteErrors, ADatabaseThatMayNotGrowIsFull) {
    TemporaryFolder folder;
    const auto connection = MakeTable(folder.File("a.db"));
    connection->Execute("PRAGMA max_page_count=10");
    const Error error =
        ErrorOf([&] { connection->Execute("INSERT INTO t(c) VALUES (zeroblob(1000000))"); });
    EXPECT_EQ(error.Kind(), ErrorKind::Full);
    EXPECT_THAT(error.what(), AllOf(HasSubstr(folder.File("a.db")), HasSubstr("no space is left")));
}

TEST(SqliteErrors, AChangeThroughAReadingConnectionIsReadOnly) {
    TemporaryFolder folder;
    const auto writer = MakeTable(folder.File("a.db"));
    const auto reader = sqlite::Open({.file = folder.File("a.db"), .readOnly = true});
    const Error error = ErrorOf([&] { reader->Execute("INSERT INTO t(b) VALUES (1)"); });
    EXPECT_EQ(error.Kind(), ErrorKind::ReadOnly);
    EXPECT_THAT(error.what(), HasSubstr("can't be written"));
}

TEST(SqliteErrors, ADamagedFileIsCorrupt) {
    TemporaryFolder folder;
    const std::string file = folder.File("a.db");
    {
        const auto connection = MakeTable(file);
        connection->Execute(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)"
            "INSERT INTO t(b, c) SELECT i, zeroblob(100) FROM n");
    }
    {
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        bytes.seekp(4096);
        bytes << std::string(8 * 4096, '\x5a');
    }
    const Error error = ErrorOf([&] {
        const auto connection = sqlite::Open({.file = file});
        connection->Execute("UPDATE t SET b = b + 1000");
    });
    EXPECT_EQ(error.Kind(), ErrorKind::Corrupt);
    EXPECT_THAT(error.what(), AllOf(HasSubstr(file), HasSubstr("backup")));
}

TEST(SqliteErrors, ATextFileIsNoDatabase) {
    TemporaryFolder folder;
    std::ofstream(folder.File("a.db")) << std::string(5000, 'x');
    const Error error =
        ErrorOf([&] { (void)sqlite::Open({.file = folder.File("a.db"), .what = "library"}); });
    EXPECT_EQ(error.Kind(), ErrorKind::NotDatabase);
    EXPECT_THAT(error.what(), HasSubstr("library '" + folder.File("a.db") + "'"));
}

TEST(SqliteErrors, AnSqliteFileOfSomebodyElseIsRefusedAndLeftAsItWas) {
    TemporaryFolder folder;
    const std::string file = folder.File("a.db");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE theirs(a)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    const auto read = [&] {
        std::ifstream bytes(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(bytes), {});
    };
    const std::string before = read();
    const Error error = ErrorOf(
        [&] { (void)sqlite::Open({.file = file, .what = "library", .applicationId = 4711}); });
    EXPECT_EQ(error.Kind(), ErrorKind::NotDatabase);
    EXPECT_THAT(error.what(), AllOf(HasSubstr(file), HasSubstr("no library")));
    EXPECT_EQ(read(), before);
}

TEST(SqliteErrors, AnotherUseOfOurFilesIsRefused) {
    TemporaryFolder folder;
    sqlite::Open({.file = folder.File("a.db"), .create = true, .applicationId = 1})
        ->SetSchemaVersion(1);
    const Error error =
        ErrorOf([&] { (void)sqlite::Open({.file = folder.File("a.db"), .applicationId = 2}); });
    EXPECT_EQ(error.Kind(), ErrorKind::NotDatabase);
}

TEST(SqliteErrors, ASecondRowWithAUniqueValueBreaksAConstraint) {
    TemporaryFolder folder;
    const auto connection = MakeTable(folder.File("a.db"));
    connection->Execute("INSERT INTO t(b) VALUES (1)");
    const Error error = ErrorOf([&] { connection->Execute("INSERT INTO t(b) VALUES (1)"); });
    EXPECT_EQ(error.Kind(), ErrorKind::Constraint);
    EXPECT_THAT(error.what(), HasSubstr("t.b"));
}

TEST(SqliteErrors, AMissingFileOrFolderCannotBeOpened) {
    TemporaryFolder folder;
    const Error missing = ErrorOf([&] { (void)sqlite::Open({.file = folder.File("a.db")}); });
    EXPECT_EQ(missing.Kind(), ErrorKind::CannotOpen);
    EXPECT_THAT(missing.what(), HasSubstr(folder.File("a.db")));
    const Error noFolder =
        ErrorOf([&] { (void)sqlite::Open({.file = folder.File("no/a.db"), .create = true}); });
    EXPECT_EQ(noFolder.Kind(), ErrorKind::CannotOpen);
    EXPECT_FALSE(std::filesystem::exists(folder.File("a.db")));
}

TEST(SqliteErrors, WrongSqlNamesTheStatement) {
    TemporaryFolder folder;
    const auto connection = MakeTable(folder.File("a.db"));
    static constexpr kxudm::sql::NamedStatement WRONG{"the wrong one", "SELECT nothing FROM t"};
    const Error error = ErrorOf([&] { kxudm::sql::Statement statement(*connection, WRONG); });
    EXPECT_EQ(error.Kind(), ErrorKind::Other);
    EXPECT_THAT(error.what(), AllOf(HasSubstr("nothing"), HasSubstr("in the wrong one")));
}
