#include "sql/sqlite/Tokenizer.h"

#include <sqlite3.h>

#include <algorithm>
#include <string_view>

namespace kxudm::sql::sqlite {
namespace {

constexpr const char* NAME = "kxudm";
constexpr char BOTH_FORMS = '~';

using Take = int (*)(void*, int, const char*, int, int, int);

// It has no state; SQLite asks for an object all the same.
int CreateTokenizer(void*, const char**, int, Fts5Tokenizer** tokenizer) {
    static char nothing;
    *tokenizer = reinterpret_cast<Fts5Tokenizer*>(&nothing);
    return SQLITE_OK;
}

void DeleteTokenizer(Fts5Tokenizer*) {}

int TakeTerm(void* context, Take take, std::string_view term) {
    const std::size_t both = std::min(term.find(BOTH_FORMS), term.size());
    int code = take(context, 0, term.data(), static_cast<int>(both), 0, 0);
    if (code == SQLITE_OK && both < term.size()) {
        code = take(context,
                    FTS5_TOKEN_COLOCATED,
                    term.data() + both,
                    static_cast<int>(term.size() - both),
                    0,
                    0);
    }
    return code;
}

int Tokenize(Fts5Tokenizer*, void* context, int, const char* text, int size, Take take) {
    std::string_view rest(text, text == nullptr ? 0 : static_cast<std::size_t>(size));
    int code = SQLITE_OK;
    while (!rest.empty() && code == SQLITE_OK) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        if (end > 0) {
            code = TakeTerm(context, take, rest.substr(0, end));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return code;
}

fts5_api* ApiOf(sqlite3* database) {
    fts5_api* api = nullptr;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, "SELECT fts5(?1)", -1, &statement, nullptr) == SQLITE_OK) {
        sqlite3_bind_pointer(statement, 1, &api, "fts5_api_ptr", nullptr);
        sqlite3_step(statement);
    }
    sqlite3_finalize(statement);
    return api;
}

}  // namespace

int AddTokenizer(sqlite3* database) {
    fts5_api* const api = ApiOf(database);
    if (api == nullptr) {
        return SQLITE_NOTFOUND;
    }
    fts5_tokenizer tokenizer{CreateTokenizer, DeleteTokenizer, Tokenize};
    return api->xCreateTokenizer(api, NAME, nullptr, &tokenizer, nullptr);
}

}  // namespace kxudm::sql::sqlite
