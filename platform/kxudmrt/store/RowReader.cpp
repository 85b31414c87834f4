#include "store/RowReader.h"

#include <utf8proc.h>

#include <array>
#include <cstdlib>
#include <ctime>

namespace kxudm::store {

void ReadEntityRow(const sql::Statement& statement, EntityRow& row) {
    row.id = statement.Int64(0);
    row.uid.assign(statement.Text(1));
    row.definition.assign(statement.Text(2));
    row.name.assign(statement.Text(3));
    row.revision = statement.Int(4);
    row.state = static_cast<RevisionState>(statement.Int(5));
    row.displayName.assign(statement.Text(6));
    row.createdTime = statement.Int64(7);
    row.createdUser.assign(statement.Text(8));
    row.modifiedTime = statement.Int64(9);
    row.modifiedUser.assign(statement.Text(10));
    row.published = statement.IsNull(11) ? NO_REVISION : statement.Int(11);
    if (statement.IsNull(12)) {
        row.working = NO_REVISION;
        row.lockUser.clear();
        row.lockWorkspace.clear();
        row.lockTime = 0;
    } else {
        row.working = statement.Int(12);
        row.lockUser.assign(statement.Text(13));
        row.lockWorkspace.assign(statement.Text(14));
        row.lockTime = statement.Int64(15);
    }
    row.packed.assign(statement.Bytes(ATTRIBUTES_COLUMN));
}

void ReadLinkedRow(const sql::Statement& statement, LinkKind kind, LinkedRow& row) {
    ReadEntityRow(statement, row.entity);
    row.kind = kind;
    row.name.assign(statement.Text(LINK_NAME_COLUMN));
    row.position = statement.Int64(LINK_POSITION_COLUMN);
}

std::string FoldCase(std::string_view text) {
    utf8proc_uint8_t* folded = nullptr;
    const auto options =
        static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
    const utf8proc_ssize_t size =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                     static_cast<utf8proc_ssize_t>(text.size()),
                     &folded,
                     options);
    if (size < 0) {
        return std::string(text);
    }
    std::string result(reinterpret_cast<const char*>(folded), static_cast<std::size_t>(size));
    std::free(folded);
    return result;
}

std::string TimeText(Microseconds time) {
    std::time_t seconds = static_cast<std::time_t>(time / 1000000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    const std::size_t size =
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts);
    return {text.data(), size};
}

void BindCondition(sql::Statement& statement, const Condition& condition, int first) {
    for (const sql::Value& value : condition.values) {
        statement.Bind(first++, value);
    }
}

std::string AndCondition(const Condition& condition, const char* entity) {
    std::string text;
    if (!condition.heads.empty()) {
        text = std::string(" AND EXISTS (SELECT 1 FROM head_attribute h WHERE h.entity = ") +
               entity + " AND " + condition.heads + "\n)";
    }
    return condition.Empty() ? text : text + " AND (" + condition.sql + "\n)";
}

}  // namespace kxudm::store
