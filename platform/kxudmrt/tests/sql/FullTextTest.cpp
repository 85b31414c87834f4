// Full text in SQLite: what the tokenizer makes of prepared texts, and an SQLite without any.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "TemporaryFolder.h"
#include "sql/sqlite/Connection.h"

using namespace kxudm::sql;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

// Stands in for the function by which FTS5 gives its interface, and gives none.
int HideFullText(sqlite3* database, char**, const sqlite3_api_routines*) {
    const auto nothing = [](sqlite3_context*, int, sqlite3_value**) {};
    return sqlite3_create_function_v2(
        database, "fts5", 1, SQLITE_UTF8, nullptr, nothing, nullptr, nullptr, nullptr);
}

class WithoutFullText {
  public:
    WithoutFullText() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(HideFullText)); }
    ~WithoutFullText() {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(HideFullText));
    }
    WithoutFullText(const WithoutFullText&) = delete;
    WithoutFullText& operator=(const WithoutFullText&) = delete;
};

class FullTextTable : public testing::Test {
  protected:
    FullTextTable() {
        connection->Execute("CREATE VIRTUAL TABLE t USING fts5(words, tokenize='kxudm')");
    }
    void Add(const std::string& prepared) {
        Statement add(*connection, "INSERT INTO t(words) VALUES (?)");
        add.Bind(1, prepared);
        add.Run();
    }
    std::vector<std::int64_t> Find(const std::string& match) {
        std::vector<std::int64_t> rows;
        Statement find(*connection, "SELECT rowid FROM t(?) ORDER BY rowid");
        find.Bind(1, match);
        while (find.Step()) {
            rows.push_back(find.Int64(0));
        }
        return rows;
    }

    std::unique_ptr<Connection> connection = sqlite::Open({.file = ":memory:", .create = true});
};

}  // namespace

TEST_F(FullTextTable, FindsTermsByBothForms) {
    Add("Bolt~bolt M6~m6");
    Add("bolt");
    EXPECT_THAT(Find(R"("Bolt")"), ElementsAre(1));
    EXPECT_THAT(Find(R"("bolt")"), ElementsAre(2));
    EXPECT_THAT(Find(R"("bolt~bolt")"), ElementsAre(1, 2));
    EXPECT_THAT(Find(R"("bo~bo" *)"), ElementsAre(1, 2));
    EXPECT_THAT(Find(R"("BOLT")"), IsEmpty());
}

TEST_F(FullTextTable, KeepsBothFormsInOnePlace) {
    Add("Big~big Bolt~bolt head");
    EXPECT_THAT(Find(R"("big~big bolt~bolt head~head")"), ElementsAre(1));
    EXPECT_THAT(Find(R"("Big head")"), IsEmpty());
}

TEST_F(FullTextTable, TakesBlanksForWhatTheyAre) {
    Add("  a   b ");
    Add("");
    EXPECT_THAT(Find(R"("a b")"), ElementsAre(1));
}

TEST(AnSqliteWithoutFullText, IsRefusedAtOnce) {
    const TemporaryFolder folder;
    const WithoutFullText without;
    try {
        static_cast<void>(
            sqlite::Open({.file = folder.File("N.ldb"), .what = "library", .create = true}));
        FAIL() << "it was taken";
    } catch (const Error& error) {
        EXPECT_THAT(error.what(),
                    AllOf(HasSubstr("library '" + folder.File("N.ldb") + "' can't be opened"),
                          HasSubstr("SQLITE_ENABLE_FTS5")));
    }
}
