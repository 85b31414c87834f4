#include "sql/sqlite/Errors.h"

#include <sqlite3.h>

namespace kxudm::sql::sqlite {
namespace {

// What was wrong and what would be right, for each kind.
const char* Explanation(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::Busy:
            return "another program or session kept it locked for too long; close or finish that "
                   "one, then try again";
        case ErrorKind::Full:
            return "no space is left; free some on its disk, then try again";
        case ErrorKind::ReadOnly:
            return "it can't be written; check the permissions of the file and of its folder";
        case ErrorKind::Corrupt:
            return "the file is damaged; restore it from a backup";
        case ErrorKind::NotDatabase:
            return "the file is something else; name a file that this program has made";
        case ErrorKind::Constraint:
            return "a row would break a rule of the schema";
        case ErrorKind::CannotOpen:
            return "it can't be opened; check that its folder exists and that the file may be read "
                   "and written";
        case ErrorKind::Version:
            return "its schema is not known here; use a newer program";
        case ErrorKind::Io:
            return "the system failed to read or write it; check the disk or the network";
        case ErrorKind::Other:
            break;
    }
    return "the database refused the operation";
}

}  // namespace

ErrorKind KindOfCode(int code) {
    switch (code & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return ErrorKind::Busy;
        case SQLITE_FULL:
            return ErrorKind::Full;
        case SQLITE_READONLY:
            return ErrorKind::ReadOnly;
        case SQLITE_CORRUPT:
            return ErrorKind::Corrupt;
        case SQLITE_NOTADB:
            return ErrorKind::NotDatabase;
        case SQLITE_CONSTRAINT:
            return ErrorKind::Constraint;
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return ErrorKind::CannotOpen;
        case SQLITE_IOERR:
            return ErrorKind::Io;
        default:
            return ErrorKind::Other;
    }
}

void ThrowCode(int code, const Place& place, const std::string& cause) {
    const ErrorKind kind = KindOfCode(code);
    std::string text = place.what + " '" + place.file + "': " + Explanation(kind) + " (" + cause;
    if (!place.doing.empty()) {
        text += ", in " + place.doing;
    }
    throw Error(kind, text + ")");
}

}  // namespace kxudm::sql::sqlite
