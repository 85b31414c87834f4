#include "sql/sqlite/Cursor.h"

#include <sqlite3.h>

#include <utility>

namespace kxudm::sql::sqlite {
namespace {

// An empty view may have no address, which SQLite would take for NULL.
const char* Address(std::string_view value) {
    return value.data() == nullptr ? "" : value.data();
}

}  // namespace

Cursor::Cursor(sqlite3* database, const Place& place, std::string name, std::string_view text)
    : database_(database), place_(place), name_(std::move(name)) {
    const int code = sqlite3_prepare_v3(database_,
                                        text.data(),
                                        static_cast<int>(text.size()),
                                        SQLITE_PREPARE_PERSISTENT,
                                        &statement_,
                                        nullptr);
    if (code != SQLITE_OK) {
        Fail(code);
    }
}

Cursor::~Cursor() {
    sqlite3_finalize(statement_);
}

void Cursor::Fail(int code) const {
    Place place = place_;
    place.doing = name_;
    ThrowCode(code, place, sqlite3_errmsg(database_));
}

void Cursor::Bound(int code) {
    used_ = true;
    if (code != SQLITE_OK) {
        Fail(code);
    }
}

void Cursor::BindNull(int parameter) {
    Bound(sqlite3_bind_null(statement_, parameter));
}

void Cursor::BindInt64(int parameter, std::int64_t value) {
    Bound(sqlite3_bind_int64(statement_, parameter, value));
}

void Cursor::BindDouble(int parameter, double value) {
    Bound(sqlite3_bind_double(statement_, parameter, value));
}

void Cursor::BindText(int parameter, std::string_view value) {
    Bound(sqlite3_bind_text64(
        statement_, parameter, Address(value), value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Cursor::BindBlob(int parameter, std::string_view value) {
    Bound(sqlite3_bind_blob64(statement_, parameter, Address(value), value.size(), SQLITE_STATIC));
}

bool Cursor::Step() {
    used_ = true;
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code == SQLITE_DONE) {
        return false;
    }
    Fail(code);
}

void Cursor::Reset() noexcept {
    if (std::exchange(used_, false)) {
        // Repeats the code of a failed Step, which has been told already.
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
}

ColumnKind Cursor::Kind(int column) const {
    switch (sqlite3_column_type(statement_, column)) {
        case SQLITE_INTEGER:
            return ColumnKind::Integer;
        case SQLITE_FLOAT:
            return ColumnKind::Real;
        case SQLITE_TEXT:
            return ColumnKind::Text;
        case SQLITE_BLOB:
            return ColumnKind::Blob;
        default:
            return ColumnKind::Null;
    }
}

std::int64_t Cursor::Int64(int column) const {
    return sqlite3_column_int64(statement_, column);
}

double Cursor::Double(int column) const {
    return sqlite3_column_double(statement_, column);
}

std::string_view Cursor::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return text == nullptr
               ? std::string_view()
               : std::string_view(
                     text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

std::string_view Cursor::Bytes(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return bytes == nullptr
               ? std::string_view()
               : std::string_view(
                     bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

}  // namespace kxudm::sql::sqlite
