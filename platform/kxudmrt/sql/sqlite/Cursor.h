// A compiled statement of SQLite.
//
// Layer: sql, inside of sqlite/. Owns the statement; the database must outlive it.
#ifndef KXUDMRT_SQL_SQLITE_CURSOR_H
#define KXUDMRT_SQL_SQLITE_CURSOR_H

#include <string>
#include <string_view>

#include "sql/Connection.h"
#include "sql/sqlite/Errors.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kxudm::sql::sqlite {

class Cursor final : public sql::Cursor {
  public:
    // `place` names the database and must outlive the cursor; `name` names the statement.
    Cursor(sqlite3* database, const Place& place, std::string name, std::string_view text);
    ~Cursor() override;
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    void BindNull(int parameter) override;
    void BindInt64(int parameter, std::int64_t value) override;
    void BindDouble(int parameter, double value) override;
    void BindText(int parameter, std::string_view value) override;
    void BindBlob(int parameter, std::string_view value) override;
    bool Step() override;
    void Reset() noexcept override;
    [[nodiscard]] ColumnKind Kind(int column) const override;
    [[nodiscard]] std::int64_t Int64(int column) const override;
    [[nodiscard]] double Double(int column) const override;
    [[nodiscard]] std::string_view Text(int column) const override;
    [[nodiscard]] std::string_view Bytes(int column) const override;

  private:
    void Bound(int code);
    [[noreturn]] void Fail(int code) const;

    sqlite3* database_;
    const Place& place_;
    std::string name_;
    sqlite3_stmt* statement_ = nullptr;
    bool used_ = false;  // since the last Reset
};

}  // namespace kxudm::sql::sqlite

#endif
