// SQLite's result codes as sql::Error.
//
// Layer: sql, inside of sqlite/.
#ifndef KXUDMRT_SQL_SQLITE_ERRORS_H
#define KXUDMRT_SQL_SQLITE_ERRORS_H

#include <string>

#include "sql/Error.h"

namespace kxudm::sql::sqlite {

// Where a failure happened.
struct Place {
    std::string what;   // "library", "master database"
    std::string file;   // its path
    std::string doing;  // name of the statement, may be empty
};

[[nodiscard]] ErrorKind KindOfCode(int code);

// The one place where SQLite's codes (primary or extended) become exceptions. `cause` is SQLite's
// own text.
[[noreturn]] void ThrowCode(int code, const Place& place, const std::string& cause);

}  // namespace kxudm::sql::sqlite

#endif
