// The tokenizer "kxudm" of full text tables.
//
// Layer: sql, inside of sqlite/. It takes texts that are prepared already (text/Terms.h): terms
// with blanks between them. "Bolt~bolt" gives the token "Bolt" and, in the same place, "~bolt", in
// texts as in queries. All that is to be known about words stands outside of the database, so that
// a library stays readable when that changes.
#ifndef KXUDMRT_SQL_SQLITE_TOKENIZER_H
#define KXUDMRT_SQL_SQLITE_TOKENIZER_H

struct sqlite3;

namespace kxudm::sql::sqlite {

// For the life of the connection. Returns SQLite's code; SQLITE_NOTFOUND where SQLite was built
// without FTS5.
[[nodiscard]] int AddTokenizer(sqlite3* database);

}  // namespace kxudm::sql::sqlite

#endif
