// LibraryStore: what a changed content definition needs.
#include "store/DefinitionStatements.h"
#include "store/FullText.h"
#include "store/LibraryStore.h"
#include "store/RowReader.h"

namespace kxudm::store {
namespace {

constexpr int PORTION = 256;

int NumberOrNone(const sql::Statement& row, int column) {
    return row.IsNull(column) ? NO_REVISION : row.Int(column);
}

// The revisions behind `last`, an id; at most PORTION. Read at once: who looks at them may change
// them.
std::vector<StoredRevision> ReadPortion(sql::Connection& connection,
                                        std::string_view definition,
                                        EntityId entity,
                                        std::int64_t last) {
    std::vector<StoredRevision> portion;
    sql::Statement read(connection, statements::REVISIONS_OF_DEFINITION);
    read.BindAll(definition, entity, last, PORTION);
    while (read.Step()) {
        StoredRevision& row = portion.emplace_back();
        row.id = read.Int64(0);
        row.uid = read.String(1);
        row.published = NumberOrNone(read, 2);
        row.working = NumberOrNone(read, 3);
        row.revision = read.Int(4);
        row.packed = std::string(read.Bytes(5));
    }
    return portion;
}

}  // namespace

std::string LibraryStore::AnyOfDefinition(std::string_view definition) {
    sql::Statement find(*connection_, statements::ANY_OF_DEFINITION);
    find.BindAll(definition);
    return find.Step() ? find.String(0) : std::string();
}

std::string LibraryStore::AnyWithLink(std::string_view definition,
                                      LinkKind kind,
                                      std::string_view name) {
    sql::Statement find(*connection_, statements::ANY_WITH_LINK);
    find.BindAll(definition, kind, name);
    return find.Step() ? find.String(0) : std::string();
}

void LibraryStore::VisitRevisions(std::string_view definition,
                                  const std::function<void(const StoredRevision&)>& visit) {
    EntityId entity = 0;
    std::int64_t last = 0;
    for (bool more = true; more;) {
        const auto portion = ReadPortion(*connection_, definition, entity, last);
        for (const StoredRevision& row : portion) {
            visit(row);
        }
        more = portion.size() == PORTION;
        if (more) {
            entity = portion.back().id;
            last = RevisionId(entity, portion.back().revision);
        }
    }
}

void LibraryStore::RewriteAttributes(EntityId id, int revision, std::string_view packed) {
    sql::Statement set(*connection_, statements::REWRITE_ATTRIBUTES);
    set.BindAll(RevisionId(id, revision), sql::Blob{packed});
    set.Run();
}

void LibraryStore::DropHeadValue(EntityId id, bool working, std::string_view name) {
    sql::Statement drop(*connection_, statements::DROP_HEAD_ATTRIBUTE);
    drop.BindAll(id, name, working);
    drop.Run();
    MarkTexts(*this, id);
}

}  // namespace kxudm::store
