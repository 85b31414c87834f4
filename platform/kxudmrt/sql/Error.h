// Failures of the SQL layer.
//
// Layer: sql. Every failure of a database leaves the SQL layer as sql::Error, whatever the backend.
// Its text is one line: the file, what was wrong, what would be right, and the database's own words
// as the cause. The kind is for the few callers that go on after a failure, for example the one
// that finds that another process was quicker to add the same row.
#ifndef KXUDMRT_SQL_ERROR_H
#define KXUDMRT_SQL_ERROR_H

#include <kxudm/UDMException.h>

#include <string>

namespace kxudm::sql {

enum class ErrorKind {
    Busy,         // somebody else kept the database locked for longer than the busy timeout
    Full,         // no space left
    ReadOnly,     // the file or its folder can't be written
    Corrupt,      // the file is damaged
    NotDatabase,  // the file is something else
    Constraint,   // a rule of the schema forbids the row
    CannotOpen,   // the file can't be opened or made
    Version,      // the file has a schema that this program does not know
    Io,           // the operating system failed to read or write
    Other         // everything else, wrong SQL among it
};

class Error : public UDMStoreException {
  public:
    Error(ErrorKind kind, const std::string& text) : UDMStoreException(text), kind_(kind) {}

    [[nodiscard]] ErrorKind Kind() const noexcept { return kind_; }

  private:
    ErrorKind kind_;
};

}  // namespace kxudm::sql

#endif
