// What the floors stand on: the bare C interface of SQLite with just enough around it to be safe.
//
// A floor does by hand, in prepared statements, what an operation of the library has to do at
// least: the same rows of the same schema, the same indexes, the same settings of the connection,
// the same durability. Nothing here is meant to be pretty beyond that; the loops of the floors call
// sqlite3_... themselves.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace bench {

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Opens a library's file with the settings that a session has. Throws std::runtime_error.
Database OpenByHand(const std::filesystem::path& file);
Statement Prepare(const Database& database, const char* sql);
void Execute(const Database& database, const char* sql);
// Runs a statement that gives no rows, and makes it ready for the next values.
void Run(const Database& database, const Statement& statement);
[[noreturn]] void Fail(sqlite3* database);

inline void BindText(const Statement& statement, int parameter, std::string_view text) {
    sqlite3_bind_text(
        statement.get(), parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}
inline void BindBlob(const Statement& statement, int parameter, std::string_view bytes) {
    sqlite3_bind_blob(
        statement.get(), parameter, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
}

// One revision with its entity, copied out of a row.
struct Row {
    std::int64_t id = 0;
    std::string uid;
    std::string definition;
    std::string name;
    int revision = 0;
    int state = 0;
    std::string displayName;
    std::int64_t createdTime = 0;
    std::string createdUser;
    std::int64_t modifiedTime = 0;
    std::string modifiedUser;
    int published = -1;
    int working = -1;
    std::string lockUser;
    std::string lockWorkspace;
    std::int64_t lockTime = 0;
    std::string attributes;
};

// The columns of a Row, from entity e and revision r.
#define BENCH_ROW_COLUMNS                                                             \
    "e.id, e.uid, e.definition, e.name, r.id & 16777215, r.state, r.display_name,"    \
    " e.created_time, e.created_user, r.modified_time, r.modified_user, e.published," \
    " e.working, e.lock_user, e.lock_workspace, e.lock_time, r.attributes"

void CopyRow(const Statement& statement, Row& row);

// Copies a library that nobody writes to just now, page by page, with what is still in its log.
void CopyLibrary(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace bench
