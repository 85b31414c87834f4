#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "SyncCounter.h"
#include "TemporaryFolder.h"
#include "sql/sqlite/Connection.h"

namespace sql = kxudm::sql;
namespace sqlite = kxudm::sql::sqlite;
using sql::Transaction;
using testing::HasSubstr;

namespace {

class TransactionTest : public testing::Test {
  protected:
    TransactionTest() { connection_->Execute("CREATE TABLE t(a INTEGER PRIMARY KEY, b UNIQUE)"); }

    void Add(int b) { connection_->Execute("INSERT INTO t(b) VALUES (" + std::to_string(b) + ")"); }
    std::int64_t Count() {
        sql::Statement count(*connection_, "SELECT count(*) FROM t");
        count.Step();
        return count.Int64(0);
    }

    TemporaryFolder folder_;
    std::unique_ptr<sql::Connection> connection_ =
        sqlite::Open({.file = folder_.File("a.db"), .create = true, .vfs = RegisterSyncCounter()});
};

}  // namespace

TEST_F(TransactionTest, WhatIsNotCommittedIsRolledBack) {
    {
        Transaction transaction(*connection_);
        Add(1);
        EXPECT_TRUE(connection_->InTransaction());
    }
    EXPECT_FALSE(connection_->InTransaction());
    EXPECT_EQ(Count(), 0);
}

TEST_F(TransactionTest, AnInnerScopeIsCommittedWithTheOutermost) {
    {
        Transaction outer(*connection_);
        Transaction inner(*connection_);
        Add(1);
        inner.Commit();
        EXPECT_TRUE(connection_->InTransaction());
        outer.Commit();
        EXPECT_FALSE(connection_->InTransaction());
    }
    EXPECT_EQ(Count(), 1);
}

// Else writing would go on in a file without a name, and be gone with the connection.
TEST_F(TransactionTest, AFileThatIsMovedOrReplacedIsNotWrittenUntilItIsBack) {
    const std::string file = folder_.File("a.db");
    const std::string elsewhere = folder_.File("b.db");
    std::filesystem::rename(file, elsewhere);
    const auto begin = [&] { Transaction transaction(*connection_); };
    const auto refusal = testing::ThrowsMessage<sql::Error>(
        AllOf(HasSubstr("'" + file + "'"), HasSubstr("moved, replaced or deleted")));
    EXPECT_THAT(begin, refusal);
    EXPECT_FALSE(connection_->InTransaction());
    std::filesystem::copy_file(elsewhere, file);
    EXPECT_THAT(begin, refusal);

    std::filesystem::rename(elsewhere, file);
    Transaction transaction(*connection_);
    Add(1);
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(TransactionTest, AnInnerScopeIsUndoneWithTheOutermost) {
    {
        Transaction outer(*connection_);
        Transaction inner(*connection_);
        Add(1);
        inner.Commit();
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(TransactionTest, HalfAnInnerScopeDoomsTheWhole) {
    {
        Transaction outer(*connection_);
        Add(1);
        {
            Transaction inner(*connection_);
            Add(2);
        }
        EXPECT_THROW(outer.Commit(), sql::Error);
    }
    EXPECT_FALSE(connection_->InTransaction());
    EXPECT_EQ(Count(), 0);
    Transaction next(*connection_);
    Add(3);
    next.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(TransactionTest, AnInnerScopeThatChangedNothingDoesNoHarm) {
    Transaction outer(*connection_);
    Add(1);
    { Transaction inner(*connection_); }
    outer.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(TransactionTest, AChangeInsideOfAReadingScopeIsRefused) {
    Transaction reading(*connection_, Transaction::Mode::Read);
    EXPECT_THROW(Transaction writing(*connection_), sql::Error);
    Transaction inner(*connection_, Transaction::Mode::Read);
}

TEST_F(TransactionTest, AReadingScopeSeesOneStateOfTheFile) {
    const auto other = sqlite::Open({.file = folder_.File("a.db")});
    Transaction reading(*connection_, Transaction::Mode::Read);
    EXPECT_EQ(Count(), 0);
    other->Execute("INSERT INTO t(b) VALUES (1)");
    EXPECT_EQ(Count(), 0);
    reading.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(TransactionTest, AfterTheDatabaseRolledBackByItselfNothingMoreIsDone) {
    Add(1);
    Transaction outer(*connection_);
    Add(2);
    // Stands for a full disk, on which SQLite gives up the transaction.
    connection_->Execute("ROLLBACK");
    try {
        Transaction inner(*connection_);
        FAIL() << "the inner scope began";
    } catch (const sql::Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("rolled back"));
    }
    EXPECT_THROW(outer.Commit(), sql::Error);
    EXPECT_EQ(Count(), 1);
}

TEST_F(TransactionTest, ANormalCommitIsNotFlushedAndAFullOneIs) {
    Add(1);
    const int before = SyncCount();
    {
        Transaction normal(*connection_);
        Add(2);
        normal.Commit();
    }
    EXPECT_EQ(SyncCount(), before);
    {
        Transaction full(*connection_, Transaction::Mode::Write, Transaction::Durability::Full);
        Add(3);
        full.Commit();
    }
    const int afterFull = SyncCount();
    EXPECT_GT(afterFull, before);
    {
        Transaction normal(*connection_);
        Add(4);
        normal.Commit();
    }
    EXPECT_EQ(SyncCount(), afterFull);
}

TEST_F(TransactionTest, AFullScopeInsideOfANormalOneMakesTheCommitFull) {
    Add(1);
    const int before = SyncCount();
    Transaction normal(*connection_);
    {
        Transaction full(*connection_, Transaction::Mode::Write, Transaction::Durability::Full);
        Add(2);
        full.Commit();
    }
    EXPECT_EQ(SyncCount(), before);
    normal.Commit();
    EXPECT_GT(SyncCount(), before);
    EXPECT_EQ(Count(), 2);
}

TEST_F(TransactionTest, ARolledBackFullScopeLeavesTheNextOneNormal) {
    Add(1);
    {
        Transaction full(*connection_, Transaction::Mode::Write, Transaction::Durability::Full);
        Add(2);
    }
    const int before = SyncCount();
    Add(3);
    EXPECT_EQ(SyncCount(), before);
}

TEST_F(TransactionTest, ProcessesThatWriteAtOnceWaitForEachOtherAndLoseNothing) {
    constexpr int PROCESSES = 4;
    constexpr int ROWS = 50;
    const std::string file = folder_.File("a.db");
    connection_.reset();
    std::vector<pid_t> children;
    for (int process = 0; process < PROCESSES; ++process) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            int result = 0;
            try {
                const auto own = sqlite::Open({.file = file, .busyTimeoutMilliseconds = 60000});
                for (int row = 0; row < ROWS; ++row) {
                    Transaction transaction(*own);
                    own->Execute("INSERT INTO t(b) SELECT coalesce(max(b), 0) + 1 FROM t");
                    transaction.Commit();
                }
            } catch (...) {
                result = 1;
            }
            _exit(result);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    connection_ = sqlite::Open({.file = file});
    EXPECT_EQ(Count(), PROCESSES * ROWS);
}

TEST_F(TransactionTest, CommittedRowsSurviveTheDeathOfTheProcess) {
    const std::string file = folder_.File("a.db");
    connection_.reset();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const auto own = sqlite::Open({.file = file});
        Transaction first(*own);
        own->Execute("INSERT INTO t(b) VALUES (1)");
        first.Commit();
        Transaction second(*own);
        own->Execute("INSERT INTO t(b) VALUES (2)");
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    connection_ = sqlite::Open({.file = file});
    EXPECT_EQ(Count(), 1);
}
