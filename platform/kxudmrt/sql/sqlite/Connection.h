// Opens SQLite databases.
//
// A file that this user can't write is opened for reading. Where no log can be made beside it,
// either, it is read as it stands: a write of somebody else who may is an error of the next
// transaction.
//
// Layer: sql. The connection runs in WAL mode with foreign keys on and synchronous=NORMAL, and
// waits ten seconds for the lock of another process before it gives up.
#ifndef KXUDMRT_SQL_SQLITE_CONNECTION_H
#define KXUDMRT_SQL_SQLITE_CONNECTION_H

#include <memory>
#include <string>

#include "sql/Connection.h"

namespace kxudm::sql::sqlite {

struct OpenOptions {
    std::string file = {};  // UTF-8 path; ":memory:" for a database of this connection alone
    // What the file is, for messages: "library", "master database".
    std::string what = "database";
    // Makes a missing file; without it a missing file is an error. The folder must be there.
    bool create = false;
    bool readOnly = false;
    // Number that the file's header bears for this use. An empty file gets it with the first
    // schema; a file with another one is refused.
    std::int64_t applicationId = 0;
    int busyTimeoutMilliseconds = 10000;
    std::string vfs = {};  // operating system layer by its registered name; empty: the default one
};

// A file of 0 bytes counts as new. Throws sql::Error (CannotOpen, NotDatabase, Corrupt, ReadOnly,
// Busy); nothing is made when it does, except for the file itself.
[[nodiscard]] std::unique_ptr<Connection> Open(const OpenOptions& options);

}  // namespace kxudm::sql::sqlite

#endif
