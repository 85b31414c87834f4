// SQL functions that our statements use and SQLite does not have.
//
// Layer: sql, inside of sqlite/.
#ifndef KXUDMRT_SQL_SQLITE_FUNCTIONS_H
#define KXUDMRT_SQL_SQLITE_FUNCTIONS_H

struct sqlite3;

namespace kxudm::sql::sqlite {

// For the life of the connection. Returns SQLite's code.
[[nodiscard]] int AddFunctions(sqlite3* database);

}  // namespace kxudm::sql::sqlite

#endif
