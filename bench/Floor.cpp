#include "Floor.h"

#include <stdexcept>

namespace bench {

namespace {

constexpr const char* SETTINGS =
    "PRAGMA foreign_keys=ON; PRAGMA temp_store=MEMORY; PRAGMA cache_size=-32768;"
    "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA journal_size_limit=67108864;";

void CopyText(const Statement& statement, int column, std::string& out) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), column));
    if (text != nullptr) {
        out.assign(text, static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), column)));
    }
}

void CopyBlob(const Statement& statement, int column, std::string& out) {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement.get(), column));
    if (bytes != nullptr) {
        out.assign(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), column)));
    }
}

int IntOr(const Statement& statement, int column, int otherwise) {
    return sqlite3_column_type(statement.get(), column) == SQLITE_NULL
               ? otherwise
               : sqlite3_column_int(statement.get(), column);
}

}  // namespace

void Fail(sqlite3* database) {
    throw std::runtime_error(std::string("SQLite by hand: ") + sqlite3_errmsg(database));
}

Database OpenByHand(const std::filesystem::path& file) {
    sqlite3* raw = nullptr;
    const int code =
        sqlite3_open_v2(file.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    Database database(raw);
    if (code != SQLITE_OK) {
        Fail(raw);
    }
    sqlite3_busy_timeout(raw, 10000);
    Execute(database, SETTINGS);
    return database;
}

Statement Prepare(const Database& database, const char* sql) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v3(database.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr) !=
        SQLITE_OK) {
        Fail(database.get());
    }
    return Statement(raw);
}

void Execute(const Database& database, const char* sql) {
    if (sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail(database.get());
    }
}

void Run(const Database& database, const Statement& statement) {
    if (sqlite3_step(statement.get()) != SQLITE_DONE) {
        Fail(database.get());
    }
    sqlite3_reset(statement.get());
}

void CopyRow(const Statement& statement, Row& row) {
    row.id = sqlite3_column_int64(statement.get(), 0);
    CopyText(statement, 1, row.uid);
    CopyText(statement, 2, row.definition);
    CopyText(statement, 3, row.name);
    row.revision = sqlite3_column_int(statement.get(), 4);
    row.state = sqlite3_column_int(statement.get(), 5);
    CopyText(statement, 6, row.displayName);
    row.createdTime = sqlite3_column_int64(statement.get(), 7);
    CopyText(statement, 8, row.createdUser);
    row.modifiedTime = sqlite3_column_int64(statement.get(), 9);
    CopyText(statement, 10, row.modifiedUser);
    row.published = IntOr(statement, 11, -1);
    row.working = IntOr(statement, 12, -1);
    CopyText(statement, 13, row.lockUser);
    CopyText(statement, 14, row.lockWorkspace);
    row.lockTime = sqlite3_column_int64(statement.get(), 15);
    CopyBlob(statement, 16, row.attributes);
}

void CopyLibrary(const std::filesystem::path& from, const std::filesystem::path& to) {
    Execute(OpenByHand(from), "PRAGMA wal_checkpoint(TRUNCATE)");
    std::filesystem::copy_file(from, to);
}

}  // namespace bench
