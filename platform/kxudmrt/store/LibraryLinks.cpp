// LibraryStore: links between entities.
#include <algorithm>
#include <tuple>
#include <utility>

#include "store/LibraryStore.h"
#include "store/RowReader.h"
#include "store/Statements.h"

namespace kxudm::store {
namespace {

std::string LinkText(EntityId parent, EntityId child, std::string_view name) {
    return "link '" + std::string(name) + "' from entity #" + std::to_string(parent) + " to #" +
           std::to_string(child);
}

// The bearing end stands first in the table.
std::pair<EntityId, EntityId> Ends(EntityId parent, EntityId child, LinkKind kind) {
    return BorneByParent(kind) ? std::pair(parent, child) : std::pair(child, parent);
}

void ReadAll(sql::Statement& statement, LinkKind kind, std::vector<LinkedRow>& out) {
    while (statement.Step()) {
        ReadLinkedRow(statement, kind, AddRow(out));
    }
}

// One listing of links from their bearing end.
struct Borne {
    EntityId bearer;
    int revision;
    LinkKind kind;
    std::string_view name;
    const Viewer& viewer;
    const Condition& condition;

    [[nodiscard]] bool AllNames() const { return name.empty(); }

    void Bind(sql::Statement& statement) const {
        statement.BindAll(viewer.user, viewer.workspace, bearer, kind, revision);
        if (!AllNames()) {
            statement.Bind(6, name);
        }
        BindCondition(statement, condition, AllNames() ? 6 : 7);
    }

    // SQL for what has no named statement: a condition, or intervals that are closed.
    [[nodiscard]] std::string Text(const char* columns, const char* from, bool ordered) const {
        std::string text = std::string(columns) + from + (AllNames() ? "" : " AND l.name = ?6") +
                           AndCondition(condition, "l.second");
        return ordered ? text + " ORDER BY l.name, l.position" : text;
    }
};

const sql::NamedStatement& ChildrenStatement(bool allNames, bool withAttributes) {
    if (allNames) {
        return withAttributes ? statements::CHILDREN_ALL_WITH_ATTRIBUTES : statements::CHILDREN_ALL;
    }
    return withAttributes ? statements::CHILDREN_NAMED_WITH_ATTRIBUTES : statements::CHILDREN_NAMED;
}

// Whether the listing needs links that ended: only one of an older revision does.
bool HasClosed(sql::Connection& connection, const Borne& listing) {
    sql::Statement closed(connection, statements::HAS_CLOSED);
    closed.BindAll(listing.bearer, listing.kind, listing.revision);
    return closed.Step();
}

void ListBorne(sql::Connection& connection,
               const Borne& listing,
               bool withAttributes,
               std::vector<LinkedRow>& out) {
    const std::size_t begin = out.size();
    const char* columns =
        withAttributes ? statements::ROW_COLUMNS_WITH_ATTRIBUTES : statements::ROW_COLUMNS;
    if (listing.condition.Empty()) {
        sql::Statement open(connection, ChildrenStatement(listing.AllNames(), withAttributes));
        listing.Bind(open);
        ReadAll(open, listing.kind, out);
    } else {
        sql::Statement open(connection, listing.Text(columns, statements::BORNE_OPEN_FROM, true));
        listing.Bind(open);
        ReadAll(open, listing.kind, out);
    }
    if (!HasClosed(connection, listing)) {
        return;
    }
    sql::Statement closed(connection, listing.Text(columns, statements::BORNE_CLOSED_FROM, true));
    listing.Bind(closed);
    ReadAll(closed, listing.kind, out);
    std::stable_sort(out.begin() + static_cast<std::ptrdiff_t>(begin),
                     out.end(),
                     [](const LinkedRow& a, const LinkedRow& b) {
                         return std::tie(a.name, a.position) < std::tie(b.name, b.position);
                     });
}

using Visit = std::function<void(LinkedRow&)>;

void VisitAll(sql::Statement& statement, LinkKind kind, const Visit& visit) {
    // One row for all: its texts keep their memory.
    LinkedRow row;
    while (statement.Step()) {
        ReadLinkedRow(statement, kind, row);
        visit(row);
    }
}

void VisitBorne(sql::Connection& connection, const Borne& listing, const Visit& visit) {
    if (HasClosed(connection, listing)) {
        std::vector<LinkedRow> rows;
        ListBorne(connection, listing, true, rows);
        std::for_each(rows.begin(), rows.end(), visit);
        return;
    }
    const auto visitAll = [&](sql::Statement&& statement) {
        listing.Bind(statement);
        VisitAll(statement, listing.kind, visit);
    };
    if (listing.condition.Empty()) {
        visitAll(sql::Statement(connection, ChildrenStatement(listing.AllNames(), true)));
    } else {
        visitAll(sql::Statement(
            connection,
            listing.Text(
                statements::ROW_COLUMNS_WITH_ATTRIBUTES, statements::BORNE_OPEN_FROM, true)));
    }
}

std::int64_t CountBorne(sql::Connection& connection, const Borne& listing) {
    const auto count = [&](sql::Statement&& statement) {
        listing.Bind(statement);
        return statement.Step() ? statement.Int64(0) : 0;
    };
    std::int64_t result = 0;
    if (listing.condition.Empty()) {
        result = count(sql::Statement(connection,
                                      listing.AllNames() ? statements::COUNT_CHILDREN_ALL
                                                         : statements::COUNT_CHILDREN_NAMED));
    } else {
        result = count(sql::Statement(
            connection, listing.Text("SELECT count(*)", statements::BORNE_OPEN_FROM, false)));
    }
    if (HasClosed(connection, listing)) {
        result += count(sql::Statement(
            connection, listing.Text("SELECT count(*)", statements::BORNE_CLOSED_FROM, false)));
    }
    return result;
}

// One listing of links from the end that does not bear them.
struct Laid {
    EntityId place;
    LinkKind kind;
    std::string_view name;
    const Viewer& viewer;
    const Condition& condition;

    void Bind(sql::Statement& statement) const {
        statement.BindAll(viewer.user, viewer.workspace, place, kind, name);
        BindCondition(statement, condition, 6);
    }

    [[nodiscard]] std::string Text(const char* columns, bool ordered) const {
        return std::string(columns) + statements::LAID_FROM + " AND (?5 = '' OR l.name = ?5)" +
               AndCondition(condition, "l.first") + (ordered ? " ORDER BY l.first" : "");
    }
};

void ListLaid(sql::Connection& connection,
              const Laid& listing,
              bool withAttributes,
              std::vector<LinkedRow>& out) {
    if (listing.condition.Empty()) {
        sql::Statement statement(
            connection,
            withAttributes ? statements::CONTENTS_WITH_ATTRIBUTES : statements::CONTENTS);
        listing.Bind(statement);
        ReadAll(statement, listing.kind, out);
        return;
    }
    sql::Statement statement(connection,
                             listing.Text(withAttributes ? statements::ROW_COLUMNS_WITH_ATTRIBUTES
                                                         : statements::ROW_COLUMNS,
                                          true));
    listing.Bind(statement);
    ReadAll(statement, listing.kind, out);
}

void VisitLaid(sql::Connection& connection, const Laid& listing, const Visit& visit) {
    const auto visitAll = [&](sql::Statement&& statement) {
        listing.Bind(statement);
        VisitAll(statement, listing.kind, visit);
    };
    if (listing.condition.Empty()) {
        visitAll(sql::Statement(connection, statements::CONTENTS_WITH_ATTRIBUTES));
    } else {
        visitAll(sql::Statement(connection,
                                listing.Text(statements::ROW_COLUMNS_WITH_ATTRIBUTES, true)));
    }
}

std::int64_t CountLaid(sql::Connection& connection, const Laid& listing) {
    const auto count = [&](sql::Statement&& statement) {
        listing.Bind(statement);
        return statement.Step() ? statement.Int64(0) : 0;
    };
    return listing.condition.Empty()
               ? count(sql::Statement(connection, statements::COUNT_CONTENTS))
               : count(sql::Statement(connection, listing.Text("SELECT count(*)", false)));
}

}  // namespace

bool LibraryStore::IsThere(const Link& link) {
    if (link.kind != LinkKind::Relation) {
        return HasLink(link.parent, link.child, link.kind, link.name, link.revision);
    }
    sql::Statement find(*connection_, statements::HAS_RELATION);
    find.BindAll(link.parent, link.child, link.name, link.revision);
    if (link.exactChildRevision != NO_REVISION) {
        find.Bind(5, link.exactChildRevision);
    }
    return find.Step();
}

void LibraryStore::AddLink(const Link& link, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    if (!link.childIsNew && IsThere(link)) {
        throw UDMException(LinkText(link.parent, link.child, link.name) +
                           " is there already; remove it first to add it anew");
    }
    if (!link.childIsNew && MayNotCycle(link.kind) &&
        WouldCycle(link.parent, link.child, link.kind)) {
        throw UDMException(LinkText(link.parent, link.child, link.name) +
                           " would close a cycle; choose a parent that does not lie below the "
                           "child");
    }
    const auto [first, second] = Ends(link.parent, link.child, link.kind);
    sql::Statement insert(*connection_, statements::INSERT_LINK);
    insert.BindAll(first, link.kind, link.name, second, link.revision);
    if (link.exactChildRevision != NO_REVISION) {
        insert.Bind(6, link.exactChildRevision);
    }
    insert.Bind(7, link.composition);
    insert.Run();
    sql::Statement touch(*connection_, statements::TOUCH_REVISION);
    touch.BindAll(RevisionId(first, link.revision), stamp.time, stamp.by.user);
    touch.Run();
    transaction.Commit();
}

int LibraryStore::RemoveLink(EntityId parent,
                             EntityId child,
                             LinkKind kind,
                             std::string_view name,
                             int revision,
                             const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    const auto [first, second] = Ends(parent, child, kind);
    std::int64_t removed = 0;
    for (const auto* named : {&statements::DROP_LINK, &statements::END_LINK}) {
        sql::Statement remove(*connection_, *named);
        remove.BindAll(first, second, kind, name, revision);
        remove.Run();
        removed += connection_->Changes();
    }
    if (removed > 0) {
        sql::Statement touch(*connection_, statements::TOUCH_REVISION);
        touch.BindAll(RevisionId(first, revision), stamp.time, stamp.by.user);
        touch.Run();
    }
    transaction.Commit();
    return static_cast<int>(removed);
}

bool LibraryStore::HasLink(
    EntityId parent, EntityId child, LinkKind kind, std::string_view name, int revision) {
    const auto [first, second] = Ends(parent, child, kind);
    sql::Statement find(*connection_, statements::HAS_LINK);
    find.BindAll(first, second, kind, name, revision);
    return find.Step();
}

void LibraryStore::Children(EntityId parent,
                            int parentRevision,
                            LinkKind kind,
                            std::string_view name,
                            const Viewer& viewer,
                            std::vector<LinkedRow>& out,
                            bool withAttributes,
                            const Condition& condition) {
    if (BorneByParent(kind)) {
        ListBorne(*connection_,
                  {parent, parentRevision, kind, name, viewer, condition},
                  withAttributes,
                  out);
    } else {
        ListLaid(*connection_, {parent, kind, name, viewer, condition}, withAttributes, out);
    }
}

void LibraryStore::VisitChildren(EntityId parent,
                                 int parentRevision,
                                 LinkKind kind,
                                 std::string_view name,
                                 const Viewer& viewer,
                                 const std::function<void(LinkedRow&)>& visit,
                                 const Condition& condition) {
    if (BorneByParent(kind)) {
        VisitBorne(*connection_, {parent, parentRevision, kind, name, viewer, condition}, visit);
    } else {
        VisitLaid(*connection_, {parent, kind, name, viewer, condition}, visit);
    }
}

std::int64_t LibraryStore::CountChildren(EntityId parent,
                                         int parentRevision,
                                         LinkKind kind,
                                         std::string_view name,
                                         const Viewer& viewer,
                                         const Condition& condition) {
    return BorneByParent(kind)
               ? CountBorne(*connection_, {parent, parentRevision, kind, name, viewer, condition})
               : CountLaid(*connection_, {parent, kind, name, viewer, condition});
}

void LibraryStore::Parents(EntityId child,
                           int childRevision,
                           LinkKind kind,
                           std::string_view name,
                           const Viewer& viewer,
                           std::vector<LinkedRow>& out,
                           bool older) {
    const Condition all;
    if (kind == LinkKind::Relation) {
        sql::Statement statement(*connection_,
                                 older ? statements::RELATED_OLDER : statements::RELATED);
        statement.BindAll(viewer.user, viewer.workspace, child, kind, name, childRevision);
        ReadAll(statement, kind, out);
    } else if (older) {
        sql::Statement statement(
            *connection_,
            BorneByParent(kind) ? statements::PARENTS_OLDER : statements::PLACES_OLDER);
        if (BorneByParent(kind)) {
            statement.BindAll(viewer.user, viewer.workspace, child, kind, name);
        } else {
            statement.BindAll(viewer.user, viewer.workspace, child, kind, childRevision, name);
        }
        ReadAll(statement, kind, out);
    } else if (BorneByParent(kind)) {
        ListLaid(*connection_, {child, kind, name, viewer, all}, false, out);
    } else {
        ListBorne(*connection_, {child, childRevision, kind, name, viewer, all}, false, out);
    }
}

bool LibraryStore::HasParent(EntityId child,
                             int childRevision,
                             LinkKind kind,
                             const Viewer& viewer) {
    if (BorneByParent(kind)) {
        sql::Statement find(*connection_, statements::HAS_PARENT);
        find.BindAll(viewer.user, viewer.workspace, child, kind);
        return find.Step();
    }
    for (const auto* named : {&statements::HAS_PLACE, &statements::HAS_CLOSED_PLACE}) {
        sql::Statement find(*connection_, *named);
        find.BindAll(viewer.user, viewer.workspace, child, kind, childRevision);
        if (find.Step()) {
            return true;
        }
    }
    return false;
}

bool LibraryStore::WouldCycle(EntityId parent, EntityId child, LinkKind kind) {
    sql::Statement find(*connection_,
                        BorneByParent(kind) ? statements::IS_BELOW : statements::LIES_BELOW);
    find.BindAll(parent, child, kind);
    return find.Step();
}

}  // namespace kxudm::store
