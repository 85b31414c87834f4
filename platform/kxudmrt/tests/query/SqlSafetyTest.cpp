// Nothing of a query's text reaches SQL but as a bound value, and running it only reads.
#include <sqlite3.h>

#include <set>

#include "QueryLibrary.h"

using kxudm::store::EntityRow;
using kxudm::test::QueryLibrary;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

// What the database did since Watch.
std::vector<std::string> traced;
std::set<int> actions;
bool watching = false;

int Trace(unsigned, void*, void* statement, void*) {
    if (watching) {
        traced.emplace_back(sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
    }
    return 0;
}

int Authorize(void*, int action, const char*, const char*, const char*, const char*) {
    if (watching) {
        actions.insert(action);
    }
    return SQLITE_OK;
}

int Observe(sqlite3* database, char**, const sqlite3_api_routines*) {
    sqlite3_trace_v2(database, SQLITE_TRACE_STMT, Trace, nullptr);
    sqlite3_set_authorizer(database, Authorize, nullptr);
    return SQLITE_OK;
}

// Registered before the fixture opens its database.
struct Observer {
    Observer() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(Observe)); }
    ~Observer() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Observe)); }
};

class SqlSafety : private Observer, public QueryLibrary {
  protected:
    ~SqlSafety() override { watching = false; }

    void Run(const std::string& text, Letters letters) {
        traced.clear();
        actions.clear();
        watching = true;
        std::vector<EntityRow> rows;
        store_->VisitHits(
            Compiled(text, letters), kxudm::store::ANN, false, 0, 0, kxudm::store::Into(rows));
        ChildHits(1, text, letters);
        watching = false;
    }
};

// One query of each operator and field, with a text and an attribute name in it.
std::vector<std::string> Queries(const std::string& value, const std::string& attribute) {
    const std::string quoted = "\"" + value + "\"";
    const std::string name = "attrib.\"" + attribute + "\"";
    std::vector<std::string> all;
    for (const std::string& field : {std::string("name"), std::string("id"), name}) {
        for (const char* op : {"==", "!=", "<", "<=", ">", ">=", "like"}) {
            all.push_back(field + " " + op + " " + quoted);
        }
        all.push_back(field + " in (" + quoted + ", 12, true)");
        all.push_back("!(" + field + " == " + quoted + " || " + field + " like \"*x" + value +
                      "\")");
    }
    for (const char* field : {"type", "class", "attrib.smd_folder", "attrib.smd_ctypedn"}) {
        all.push_back(field + (" == " + quoted));
        all.push_back(field + (" like " + quoted));
    }
    return all;
}

}  // namespace

TEST_F(SqlSafety, TextsReachTheDatabaseAsBoundValuesOnly) {
    catalogue_ = kxudm::catalogue::Catalogue::ReadText(
        "<catalogue version=\"1\"><definition name=\"MARKERvalue\">"
        "<attribute name=\"MARKER name\" type=\"String\"/>"
        "<attribute name=\"smd_folder\" type=\"String\"/>"
        "<attribute name=\"smd_ctypedn\" type=\"String\"/>"
        "</definition></catalogue>",
        "test.xml");
    for (const Letters letters : {Letters::Exact, Letters::Folded}) {
        for (const std::string& text : Queries("MARKERvalue", "MARKER name")) {
            Run(text, letters);
            ASSERT_GE(traced.size(), 2u);
            for (const std::string& statement : traced) {
                EXPECT_THAT(statement, Not(HasSubstr("MARKER"))) << text;
                EXPECT_THAT(statement, Not(HasSubstr("marker"))) << text;
            }
        }
    }
}

TEST_F(SqlSafety, OneShapeOfQueryIsOneTextOfSql) {
    const auto a = Queries("plain", "material");
    const auto b = Queries("x' OR ''='; DROP TABLE entity; -- :1 %s \\\" [", "code");
    ASSERT_EQ(a.size(), b.size());
    for (const Letters letters : {Letters::Exact, Letters::Folded}) {
        for (std::size_t i = 0; i < a.size(); ++i) {
            EXPECT_EQ(Compiled(a[i], letters).sql, Compiled(b[i], letters).sql) << b[i];
        }
    }
}

TEST_F(SqlSafety, EachPlaceForAValueHasOne) {
    for (const std::string& text : Queries("v", "material")) {
        const auto condition = Compiled(text);
        std::size_t places = 0;
        for (std::size_t i = 0; i < condition.sql.size(); ++i) {
            const char next = i + 1 < condition.sql.size() ? condition.sql[i + 1] : ' ';
            places += condition.sql[i] == '?' && next != '1' && next != '2' ? 1 : 0;
        }
        EXPECT_EQ(places, condition.values.size()) << condition.sql;
    }
}

TEST_F(SqlSafety, AQueryOnlyReads) {
    const std::set<int> reading{SQLITE_SELECT, SQLITE_READ, SQLITE_FUNCTION, SQLITE_RECURSIVE};
    for (const Letters letters : {Letters::Exact, Letters::Folded}) {
        for (const std::string& text : Queries("v", "material")) {
            Run(text, letters);
            for (const int action : actions) {
                EXPECT_TRUE(reading.contains(action)) << text << " does " << action;
            }
        }
    }
}
