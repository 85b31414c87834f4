// A piece of SQL with the values that are bound to the "?" in it, in their order.
//
// Layer: query, inside. The only way in which something of a query reaches SQL is Bind: texts that
// are added are constants of this program.
#pragma once

#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "query/Tree.h"
#include "sql/Connection.h"

namespace kxudm::query {

struct SqlFragment {
    std::string text = {};
    std::vector<sql::Value> values = {};

    SqlFragment& Add(std::string_view constant) {
        text += constant;
        return *this;
    }
    SqlFragment& Add(SqlFragment&& other) {
        if (text.empty() && values.empty()) {
            return *this = std::move(other);
        }
        text += other.text;
        std::move(other.values.begin(), other.values.end(), std::back_inserter(values));
        return *this;
    }
    SqlFragment& Bind(sql::Value value) {
        text += '?';
        values.push_back(std::move(value));
        return *this;
    }
    SqlFragment& Bind(const Number& number) {
        return std::visit([this](auto each) -> SqlFragment& { return Bind(sql::Value(each)); },
                          number);
    }
    // "(?, ?)"
    template <typename Values>
    SqlFragment& BindList(const Values& list) {
        Add("(");
        bool first = true;
        for (const auto& value : list) {
            Add(first ? "" : ", ").Bind(value);
            first = false;
        }
        return Add(")");
    }
};

// The fragments with a constant text between them.
[[nodiscard]] SqlFragment Join(std::vector<SqlFragment>&& fragments, std::string_view between);

}  // namespace kxudm::query
