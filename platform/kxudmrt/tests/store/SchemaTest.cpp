#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>

#include "TemporaryFolder.h"
#include "sql/sqlite/Connection.h"
#include "store/FullText.h"
#include "store/schema/Schema.h"

using namespace kxudm::store;
namespace sql = kxudm::sql;
using testing::AllOf;
using testing::HasSubstr;

namespace {

std::unique_ptr<sql::Connection> InMemory() {
    return sql::sqlite::Open({.file = ":memory:", .create = true});
}

// The DDL as the database has it, one statement after the other, without the tables in which it
// keeps the full text index.
std::string Ddl(sql::Connection& connection) {
    sql::Statement statement(connection,
                             "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL"
                             " AND name NOT GLOB 'text_attribute_*' AND name NOT GLOB"
                             " 'text_content_*' ORDER BY rowid");
    std::string ddl;
    while (statement.Step()) {
        ddl += statement.String(0) + ";\n";
    }
    return ddl;
}

std::string Golden(const std::string& name) {
    std::ifstream file(std::string(KXUDMRT_GOLDEN) + "/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Made(std::span<const SchemaStep> steps) {
    const auto connection = InMemory();
    BringForward(*connection, steps, "library");
    return Ddl(*connection);
}

constexpr std::array STEPS{SchemaStep{1, "CREATE TABLE a(x)"},
                           SchemaStep{2, "CREATE TABLE b(x); INSERT INTO b SELECT x + 1 FROM a"},
                           SchemaStep{3, "ALTER TABLE b ADD COLUMN y DEFAULT 5"}};

}  // namespace

TEST(Schema, OfALibraryIsTheGoldenOne) {
    EXPECT_EQ(Made(LibrarySchema()), Golden("library.sqlite.sql"));
}

TEST(Schema, OfTheMasterDatabaseIsTheGoldenOne) {
    EXPECT_EQ(Made(MasterSchema()), Golden("master.sqlite.sql"));
}

TEST(Schema, AnOlderFileIsBroughtForwardWithItsRows) {
    const auto connection = InMemory();
    BringForward(*connection, std::span(STEPS).first(1), "library");
    EXPECT_EQ(connection->SchemaVersion(), 1);
    connection->Execute("INSERT INTO a VALUES (41)");
    BringForward(*connection, STEPS, "library");
    EXPECT_EQ(connection->SchemaVersion(), 3);
    sql::Statement row(*connection, "SELECT x, y FROM b");
    ASSERT_TRUE(row.Step());
    EXPECT_EQ(row.Int64(0), 42);
    EXPECT_EQ(row.Int64(1), 5);
}

TEST(Schema, ALibraryOfVersion1GetsItsFoldedTexts) {
    const auto connection = InMemory();
    BringForward(*connection, LibrarySchema().first(1), "library");
    connection->Execute(
        "INSERT INTO entity(uid, definition, name, published, created_time, created_user,"
        " created_workspace) VALUES ('1', 'D', '\xC3\x84rmel', 0, 1, '', ''),"
        " ('2', 'D', 'plain', 0, 1, '', '');"
        "INSERT INTO head_attribute(entity, name, working, value) VALUES (1, 't', 0, 'Steel'),"
        " (1, 'l', 0, 'wood'), (1, 'n', 0, 2.5), (1, 'm', 1, NULL)");
    BringForward(*connection, LibrarySchema(), "library");
    sql::Statement folded(*connection,
                          "SELECT uid || name_folded FROM entity WHERE name_folded IS NOT NULL"
                          " UNION ALL"
                          " SELECT name || folded FROM head_attribute WHERE folded IS NOT NULL");
    ASSERT_TRUE(folded.Step());
    EXPECT_EQ(folded.Text(0), "1armel");
    ASSERT_TRUE(folded.Step());
    EXPECT_EQ(folded.Text(0), "tsteel");
    EXPECT_FALSE(folded.Step());
}

TEST(Schema, ALibraryOfVersion2IsSearchedForItsWords) {
    TemporaryFolder folder;
    auto connection = sql::sqlite::Open(
        {.file = folder.File("Old.ldb"), .create = true, .applicationId = LIBRARY_APPLICATION_ID});
    BringForward(*connection, LibrarySchema().first(2), "library");
    EXPECT_EQ(connection->SchemaVersion(), 2);
    connection->Execute(
        "INSERT INTO entity(uid, definition, name, published, created_time, created_user,"
        " created_workspace) VALUES ('1', 'D', 'Wheel', 0, 1, '', ''), ('2', 'D', 'Rim', 0, 1, '',"
        " '');"
        "INSERT INTO revision(id, state, display_name, created_time, created_user, modified_time,"
        " modified_user, workspace, attributes) SELECT id << 24, 2, name, 1, '', 1, '', '', x''"
        " FROM entity;"
        "INSERT INTO head_attribute(entity, name, working, value) VALUES (1, 't', 0, 'Steel');"
        "INSERT INTO file(entity, name, from_rev, hash, size, modified_time, added_time, is_text)"
        " VALUES (2, 'deck', 0, 'abc', 1, 1, 1, 1)");
    connection.reset();
    const auto store = LibraryStore::Open(folder.File("Old.ldb"));
    EXPECT_EQ(store->Connection().SchemaVersion(), 5);
    const TextReader reader = [](const std::string&, const std::string& hash) {
        return std::optional<std::string>(hash == "abc" ? "bolt nut" : "");
    };
    FullText texts(*store, reader);
    for (const bool indexed : {false, true}) {
        const auto find = [&](const char* words) {
            std::vector<std::string> names;
            const kxudm::text::Question question(
                words, kxudm::text::Mode::All, kxudm::text::Letters::Folded);
            texts.VisitHits(question, {}, THE_PUBLIC, false, 0, 0, [&](const EntityRow& row) {
                names.push_back(row.name);
            });
            return names.size() == 1 ? names[0] : std::to_string(names.size());
        };
        EXPECT_EQ(find("steel"), "Wheel") << indexed;
        EXPECT_EQ(find("nut"), "Rim") << indexed;
        EXPECT_EQ(find("rim bolt"), "Rim") << indexed;
        EXPECT_EQ(find("steel bolt"), "0") << indexed;
        EXPECT_EQ(texts.CountPending(), indexed ? 0 : 3);
        EXPECT_FALSE(texts.BringForward());
    }
}

TEST(Schema, StepsOneByOneGiveTheSameAsAllAtOnce) {
    const auto connection = InMemory();
    for (std::size_t count = 1; count <= STEPS.size(); ++count) {
        BringForward(*connection, std::span(STEPS).first(count), "library");
    }
    EXPECT_EQ(Ddl(*connection), Made(STEPS));
}

TEST(Schema, AFailedStepLeavesTheFileAtItsVersion) {
    const auto connection = InMemory();
    BringForward(*connection, std::span(STEPS).first(1), "library");
    constexpr std::array BROKEN{STEPS[0], STEPS[1], SchemaStep{3, "CREATE TABLE a(x)"}};
    EXPECT_THROW(BringForward(*connection, BROKEN, "library"), sql::Error);
    EXPECT_EQ(connection->SchemaVersion(), 1);
    EXPECT_EQ(Ddl(*connection), "CREATE TABLE a(x);\n");
}

TEST(Schema, ANewerFileIsRefusedWithItsNameAndBothVersions) {
    TemporaryFolder folder;
    const auto connection = sql::sqlite::Open({.file = folder.File("N.ldb"), .create = true});
    connection->SetSchemaVersion(7);
    try {
        BringForward(*connection, STEPS, "library");
        FAIL() << "a newer schema was taken";
    } catch (const sql::Error& error) {
        EXPECT_EQ(error.Kind(), sql::ErrorKind::Version);
        EXPECT_THAT(error.what(),
                    AllOf(HasSubstr("library '" + folder.File("N.ldb") + "'"),
                          HasSubstr("version 7"),
                          HasSubstr("up to 3")));
    }
    EXPECT_EQ(connection->SchemaVersion(), 7);
}
