#include "sql/sqlite/Functions.h"

#include <sqlite3.h>

#include <new>
#include <string>
#include <string_view>

#include "sql/Fold.h"

namespace kxudm::sql::sqlite {
namespace {

void FoldValue(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    if (sqlite3_value_type(values[0]) != SQLITE_TEXT) {
        sqlite3_result_value(context, values[0]);
        return;
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values[0]));
    const int size = sqlite3_value_bytes(values[0]);
    if (text == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    try {
        const std::string folded = Fold({text, static_cast<std::size_t>(size)});
        sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

}  // namespace

int AddFunctions(sqlite3* database) {
    return sqlite3_create_function_v2(database,
                                      FOLD_FUNCTION,
                                      1,
                                      SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                                      nullptr,
                                      FoldValue,
                                      nullptr,
                                      nullptr,
                                      nullptr);
}

}  // namespace kxudm::sql::sqlite
