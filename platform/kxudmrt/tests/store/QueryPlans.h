// How the database means to run a statement, for tests that look at it.
#pragma once

#include <cctype>
#include <ostream>
#include <string>

#include "LibraryFixture.h"

namespace kxudm::store {

struct Hot {
    const char* name;
    std::string text;
};

inline void PrintTo(const Hot& hot, std::ostream* out) {
    *out << hot.name;
}

inline Hot Named(const sql::NamedStatement& statement) {
    return {statement.name, statement.text};
}

inline std::string NameOf(const testing::TestParamInfo<Hot>& parameter) {
    std::string name = parameter.param.name;
    for (char& letter : name) {
        letter = std::isalnum(static_cast<unsigned char>(letter)) != 0 ? letter : '_';
    }
    return name;
}

inline std::string Plan(sql::Connection& connection, const std::string& text) {
    sql::Statement explain(connection, "EXPLAIN QUERY PLAN " + text);
    std::string plan;
    while (explain.Step()) {
        plan += explain.String(3) + "\n";
    }
    return plan;
}

inline std::size_t CountOf(const std::string& plan, std::string_view step) {
    std::size_t count = 0;
    for (std::size_t at = plan.find(step); at != std::string::npos; at = plan.find(step, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace kxudm::store
