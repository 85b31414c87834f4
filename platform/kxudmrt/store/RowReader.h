// From result rows to structs, and small things that several files of LibraryStore need.
//
// Layer: store, inside.
#ifndef KXUDMRT_STORE_ROWREADER_H
#define KXUDMRT_STORE_ROWREADER_H

#include <string>
#include <vector>

#include "sql/Connection.h"
#include "store/Rows.h"

namespace kxudm::store {

constexpr int ROW_COLUMN_COUNT = 17;
constexpr int ATTRIBUTES_COLUMN = 16;
constexpr int LINK_NAME_COLUMN = 17;
constexpr int LINK_POSITION_COLUMN = 18;

// Reads the columns of KXUDM_ROW. The attributes stay as they are where the statement has NULL.
void ReadEntityRow(const sql::Statement& statement, EntityRow& row);
// The same, with link name and position behind.
void ReadLinkedRow(const sql::Statement& statement, LinkKind kind, LinkedRow& row);

// A new last row. Long listings grow in larger steps than the vector's own: rows are large, moving
// them costs more than room that is never touched.
template <typename Row>
Row& AddRow(std::vector<Row>& rows) {
    constexpr std::size_t LONG = 256;
    if (rows.size() == rows.capacity() && rows.size() >= LONG) {
        rows.reserve(4 * rows.size());
    }
    return rows.emplace_back();
}

[[nodiscard]] constexpr EntityId RevisionId(EntityId entity, int number) {
    return (entity << 24) + number;
}

// Who bears the link: its revisions are those that the link's interval counts.
[[nodiscard]] constexpr bool BorneByParent(LinkKind kind) {
    return kind != LinkKind::Folder && kind != LinkKind::Category;
}

// UTF-8 text with case folded; bytes that are no UTF-8 are left as they are.
[[nodiscard]] std::string FoldCase(std::string_view text);

// "2024-05-01 12:34:56 UTC", for messages.
[[nodiscard]] std::string TimeText(Microseconds time);

// Binds the values of a condition, the first one as parameter `first`.
void BindCondition(sql::Statement& statement, const Condition& condition, int first);

// Parentheses keep an "or" of the condition to itself; the line end closes a comment in it.
// `entity` is the column that names the entity earliest.
[[nodiscard]] std::string AndCondition(const Condition& condition, const char* entity = "e.id");

}  // namespace kxudm::store

#endif
