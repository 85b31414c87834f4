#include <gtest/gtest.h>

#include <fstream>
#include <limits>

#include "TemporaryFolder.h"
#include "sql/sqlite/Connection.h"

namespace sql = kxudm::sql;
namespace sqlite = kxudm::sql::sqlite;
using sql::NamedStatement;
using sql::Statement;

namespace {

constexpr NamedStatement ECHO{"echo", "SELECT ?1, ?2, ?3, ?4, ?5"};
constexpr NamedStatement NUMBERS{"numbers", "SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3"};

std::unique_ptr<sql::Connection> InMemory() {
    return sqlite::Open({.file = ":memory:", .create = true});
}

std::string Setting(sql::Connection& connection, const std::string& name) {
    Statement statement(connection, "PRAGMA " + name);
    return statement.Step() ? statement.String(0) : std::string();
}

}  // namespace

TEST(SqliteConnection, EveryKindOfValueComesBackAsItWent) {
    const auto connection = InMemory();
    const std::string text("a'\"\0b\xc3\xa4\xff", 8);
    const std::string bytes("\0\1\2", 3);
    Statement statement(*connection, ECHO);
    statement.BindAll(
        nullptr, std::numeric_limits<std::int64_t>::min(), 0.1, text, sql::Blob{bytes});
    ASSERT_TRUE(statement.Step());
    EXPECT_EQ(statement.Kind(0), sql::ColumnKind::Null);
    EXPECT_EQ(statement.Kind(1), sql::ColumnKind::Integer);
    EXPECT_EQ(statement.Kind(2), sql::ColumnKind::Real);
    EXPECT_EQ(statement.Kind(3), sql::ColumnKind::Text);
    EXPECT_EQ(statement.Kind(4), sql::ColumnKind::Blob);
    EXPECT_TRUE(statement.Text(0).empty());
    EXPECT_EQ(statement.Int64(1), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(statement.Double(2), 0.1);
    EXPECT_EQ(statement.Text(3), text);
    EXPECT_EQ(statement.Bytes(4), bytes);
    EXPECT_FALSE(statement.Step());
}

TEST(SqliteConnection, AnEmptyTextOrBlobIsNotNull) {
    const auto connection = InMemory();
    Statement statement(*connection, ECHO);
    statement.BindAll(std::string_view(), sql::Blob{}, "", true, std::optional<int>());
    ASSERT_TRUE(statement.Step());
    EXPECT_EQ(statement.Kind(0), sql::ColumnKind::Text);
    EXPECT_EQ(statement.Kind(1), sql::ColumnKind::Blob);
    EXPECT_EQ(statement.Kind(2), sql::ColumnKind::Text);
    EXPECT_EQ(statement.Int64(3), 1);
    EXPECT_TRUE(statement.IsNull(4));
}

TEST(SqliteConnection, ValuesMadeAtRunTimeAreBoundByTheirKind) {
    const auto connection = InMemory();
    const sql::Value values[] = {{}, std::int64_t{7}, 2.5, std::string("x")};
    Statement statement(*connection, "SELECT ?, ?, ?, ?");
    for (int i = 0; i < 4; ++i) {
        statement.Bind(i + 1, values[i]);
    }
    ASSERT_TRUE(statement.Step());
    EXPECT_TRUE(statement.IsNull(0));
    EXPECT_EQ(statement.Int64(1), 7);
    EXPECT_EQ(statement.Double(2), 2.5);
    EXPECT_EQ(statement.Text(3), "x");
}

TEST(SqliteConnection, AStatementForgetsItsValuesWhenItIsGivenBack) {
    const auto connection = InMemory();
    { Statement(*connection, ECHO).BindAll(1, 2, 3, 4, 5); }
    Statement again(*connection, ECHO);
    ASSERT_TRUE(again.Step());
    EXPECT_TRUE(again.IsNull(0));
    EXPECT_TRUE(again.IsNull(4));
}

TEST(SqliteConnection, AStatementCanBeUsedWhileItIsInUse) {
    const auto connection = InMemory();
    int pairs = 0;
    Statement outer(*connection, NUMBERS);
    while (outer.Step()) {
        Statement inner(*connection, NUMBERS);
        while (inner.Step()) {
            ++pairs;
        }
    }
    EXPECT_EQ(pairs, 9);
}

TEST(SqliteConnection, ManyDifferentTextsPushOutTheOldestOnly) {
    const auto connection = InMemory();
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 100; ++i) {
            Statement statement(*connection, "SELECT " + std::to_string(i));
            ASSERT_TRUE(statement.Step());
            EXPECT_EQ(statement.Int64(0), i);
        }
    }
}

TEST(SqliteConnection, AFileIsInWalModeWithForeignKeysAndNormalSynchronisation) {
    TemporaryFolder folder;
    const auto connection = sqlite::Open({.file = folder.File("a.db"), .create = true});
    EXPECT_EQ(Setting(*connection, "journal_mode"), "wal");
    EXPECT_EQ(Setting(*connection, "foreign_keys"), "1");
    EXPECT_EQ(Setting(*connection, "synchronous"), "1");
    EXPECT_EQ(Setting(*connection, "busy_timeout"), "10000");
    EXPECT_EQ(connection->File(), folder.File("a.db"));
}

TEST(SqliteConnection, AFileOfNoBytesCountsAsNew) {
    TemporaryFolder folder;
    { std::ofstream empty(folder.File("a.db")); }
    const auto connection = sqlite::Open({.file = folder.File("a.db"), .applicationId = 77});
    EXPECT_EQ(connection->SchemaVersion(), 0);
    connection->SetSchemaVersion(3);
    EXPECT_EQ(connection->SchemaVersion(), 3);
    EXPECT_EQ(Setting(*connection, "application_id"), "77");
}

TEST(SqliteConnection, DataVersionChangesWithCommitsOfOthersOnly) {
    TemporaryFolder folder;
    const auto mine = sqlite::Open({.file = folder.File("a.db"), .create = true});
    const auto other = sqlite::Open({.file = folder.File("a.db")});
    const std::int64_t before = mine->DataVersion();
    mine->Execute("CREATE TABLE t(a)");
    EXPECT_EQ(mine->DataVersion(), before);
    other->Execute("INSERT INTO t VALUES (1)");
    EXPECT_NE(mine->DataVersion(), before);
}

TEST(SqliteConnection, DataVersionInATransactionIsThatOfItsView) {
    TemporaryFolder folder;
    const auto mine = sqlite::Open({.file = folder.File("a.db"), .create = true});
    const auto other = sqlite::Open({.file = folder.File("a.db")});
    mine->Execute("CREATE TABLE t(a)");
    std::int64_t known = mine->DataVersion();
    const auto asked = [&](sql::Transaction::Mode mode) {
        sql::Transaction transaction(*mine, mode);
        const std::int64_t version = mine->DataVersion();
        if (mode == sql::Transaction::Mode::Write) {
            mine->Execute("INSERT INTO t VALUES (1)");
        }
        transaction.Commit();
        return version;
    };
    for (const auto mode : {sql::Transaction::Mode::Write, sql::Transaction::Mode::Read}) {
        EXPECT_EQ(asked(mode), known);
        EXPECT_EQ(asked(mode), known);
        other->Execute("INSERT INTO t VALUES (2)");
        EXPECT_NE(asked(mode), known);
        known = mine->DataVersion();
        EXPECT_EQ(asked(mode), known);
    }
}

TEST(SqliteConnection, DataVersionTellsOfACommitBetweenTheBeginOfReadingAndTheFirstRead) {
    TemporaryFolder folder;
    const auto mine = sqlite::Open({.file = folder.File("a.db"), .create = true});
    const auto other = sqlite::Open({.file = folder.File("a.db")});
    mine->Execute("CREATE TABLE t(a)");
    const std::int64_t before = mine->DataVersion();
    sql::Transaction transaction(*mine, sql::Transaction::Mode::Read);
    other->Execute("INSERT INTO t VALUES (1)");
    const std::int64_t viewed = mine->DataVersion();
    EXPECT_NE(viewed, before);
    other->Execute("INSERT INTO t VALUES (2)");
    EXPECT_EQ(mine->DataVersion(), viewed);
    transaction.Commit();
    EXPECT_NE(mine->DataVersion(), viewed);
}

// Another one may commit between the commit and the flush that follows it.
TEST(SqliteConnection, DataVersionTellsOfACommitBesideAFlush) {
    TemporaryFolder folder;
    const auto mine = sqlite::Open({.file = folder.File("a.db"), .create = true});
    const auto other = sqlite::Open({.file = folder.File("a.db")});
    mine->Execute("CREATE TABLE t(a)");
    {
        sql::Transaction transaction(*mine);
        (void)mine->DataVersion();
        mine->Execute("INSERT INTO t VALUES (1)");
        transaction.Commit();
    }
    const std::int64_t before = mine->DataVersion();
    other->Execute("INSERT INTO t VALUES (2)");
    mine->Flush();
    sql::Transaction transaction(*mine);
    EXPECT_NE(mine->DataVersion(), before);
}

TEST(SqliteConnection, AReadingConnectionDoesNotMakeTheFile) {
    TemporaryFolder folder;
    EXPECT_THROW(
        (void)sqlite::Open({.file = folder.File("a.db"), .create = true, .readOnly = true}),
        sql::Error);
    EXPECT_FALSE(std::filesystem::exists(folder.File("a.db")));
}
