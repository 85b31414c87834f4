// LibraryStore: folders, roots and queries.
#include <utility>

#include "store/LibraryStore.h"
#include "store/RowReader.h"
#include "store/Statements.h"

namespace kxudm::store {
namespace {

void ReadAll(sql::Statement& statement, std::vector<EntityRow>& out) {
    while (statement.Step()) {
        ReadEntityRow(statement, AddRow(out));
    }
}

// Everything that lies in a folder (0: in none).
std::vector<EntityRow> InFolder(LibraryStore& store,
                                EntityId folder,
                                std::string_view definition,
                                const Viewer& viewer) {
    std::vector<EntityRow> rows;
    if (folder != 0) {
        std::vector<LinkedRow> contents;
        store.Children(folder, 0, LinkKind::Folder, {}, viewer, contents);
        for (LinkedRow& content : contents) {
            if (definition.empty() || content.entity.definition == definition) {
                rows.push_back(std::move(content.entity));
            }
        }
    } else if (!definition.empty()) {
        store.RootsOfDefinition(definition, LinkKind::Folder, viewer, rows);
    } else {
        sql::Statement all(store.Connection(), statements::ALL_AT_TOP);
        all.BindAll(viewer.user, viewer.workspace);
        ReadAll(all, rows);
    }
    return rows;
}

}  // namespace

void LibraryStore::FindInFolder(EntityId folder,
                                std::string_view definition,
                                std::string_view name,
                                const Viewer& viewer,
                                bool ignoreCase,
                                std::vector<EntityRow>& out) {
    if (ignoreCase) {
        const std::string folded = FoldCase(name);
        for (EntityRow& row : InFolder(*this, folder, definition, viewer)) {
            if (FoldCase(row.name) == folded) {
                out.push_back(std::move(row));
            }
        }
    } else if (folder != 0) {
        sql::Statement find(*connection_, statements::IN_FOLDER);
        find.BindAll(viewer.user, viewer.workspace, folder, LinkKind::Folder, name, definition);
        ReadAll(find, out);
    } else {
        sql::Statement find(*connection_, statements::AT_TOP);
        find.BindAll(viewer.user, viewer.workspace, name, definition);
        ReadAll(find, out);
    }
}

void LibraryStore::RootsOfDefinition(std::string_view definition,
                                     LinkKind kind,
                                     const Viewer& viewer,
                                     std::vector<EntityRow>& out,
                                     const Condition& condition) {
    std::string text =
        (BorneByParent(kind) ? statements::ROOTS_BY_PARENT_FROM : statements::ROOTS_BY_CHILD_FROM) +
        AndCondition(condition) + " ORDER BY e.id";
    sql::Statement find(*connection_, std::move(text));
    find.BindAll(viewer.user, viewer.workspace, definition, kind);
    BindCondition(find, condition, 5);
    ReadAll(find, out);
}

std::int64_t LibraryStore::VisitHits(const Condition& condition,
                                     const Viewer& viewer,
                                     bool rootsOnly,
                                     std::int64_t first,
                                     std::int64_t last,
                                     const std::function<void(EntityRow&)>& visit) {
    std::string text = std::string(statements::QUERY_FROM) + AndCondition(condition) +
                       (rootsOnly ? statements::QUERY_ROOTS_ONLY : "") + " ORDER BY e.id";
    sql::Statement find(*connection_, std::move(text));
    find.BindAll(viewer.user, viewer.workspace);
    BindCondition(find, condition, 3);
    const bool all = first == 0 && last == 0;
    std::int64_t hits = 0;
    // One row for all: its texts keep their memory.
    EntityRow row;
    for (; find.Step(); ++hits) {
        if (all || (hits >= first && hits < last)) {
            ReadEntityRow(find, row);
            visit(row);
        }
    }
    return hits;
}

}  // namespace kxudm::store
