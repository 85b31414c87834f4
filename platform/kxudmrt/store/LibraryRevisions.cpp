// LibraryStore: check-out, save point, publish, undo and branches.
#include <optional>
#include <utility>

#include "store/FullText.h"
#include "store/LibraryStore.h"
#include "store/RevisionStatements.h"
#include "store/RowReader.h"

namespace kxudm::store {
namespace {

using Durability = sql::Transaction::Durability;
using Mode = sql::Transaction::Mode;

// Who has an entity checked out, as it stands under the write lock.
struct Lock {
    std::string uid = {};
    int published = NO_REVISION;
    int working = NO_REVISION;
    std::string user = {};
    std::string workspace = {};
    Microseconds since = 0;

    [[nodiscard]] bool Held() const { return working != NO_REVISION; }
    [[nodiscard]] bool HeldBy(const Viewer& viewer) const {
        return Held() && user == viewer.user && workspace == viewer.workspace;
    }
    [[nodiscard]] std::string Holder() const {
        return user + " has it checked out in workspace '" + workspace + "' since " +
               TimeText(since);
    }
};

// What a working revision has beside its row.
struct Work {
    bool heads = false;  // head attributes
    bool files = false;  // files that end
    bool links = false;  // links that end
};

Lock ReadLock(sql::Statement& find, EntityId id) {
    find.BindAll(id);
    if (!find.Step()) {
        throw UDMNotFoundException("entity #" + std::to_string(id) +
                                   " is unknown or deleted; use one that is there");
    }
    Lock lock{.uid = find.String(0)};
    lock.published = find.IsNull(1) ? NO_REVISION : find.Int(1);
    if (!find.IsNull(2)) {
        lock.working = find.Int(2);
        lock.user = find.String(3);
        lock.workspace = find.String(4);
        lock.since = find.Int64(5);
    }
    return lock;
}

Lock LockOf(sql::Connection& connection, EntityId id) {
    sql::Statement find(connection, statements::LOCK_OF);
    return ReadLock(find, id);
}

Lock LockOf(sql::Connection& connection, EntityId id, Work& work) {
    sql::Statement find(connection, statements::LOCK_WITH_WORK);
    Lock lock = ReadLock(find, id);
    work = {.heads = find.Int(6) != 0, .files = find.Int(7) != 0, .links = find.Int(8) != 0};
    return lock;
}

// What only the holder of the lock may do.
void RequireOwn(const Lock& lock, const Viewer& viewer, const std::string& deed) {
    if (!lock.Held()) {
        throw UDMException("'" + lock.uid + "' can't be " + deed +
                           ": it is not checked out; check it out first");
    }
    if (!lock.HeldBy(viewer)) {
        throw UDMException("'" + lock.uid + "' can't be " + deed + ": " + lock.Holder() +
                           "; only there it can");
    }
}

template <typename... Values>
void Run(sql::Connection& connection, const sql::NamedStatement& named, const Values&... values) {
    sql::Statement statement(connection, named);
    statement.BindAll(values...);
    statement.Run();
}

void RequireOneOwnerAfterPublish(sql::Connection& connection,
                                 EntityId id,
                                 const Lock& lock,
                                 const Viewer& viewer) {
    sql::Statement twice(connection, statements::OWNED_TWICE);
    twice.BindAll(id, viewer.user, viewer.workspace);
    if (twice.Step()) {
        throw UDMException("'" + lock.uid + "' can't be published: its child '" + twice.String(0) +
                           "' is still owned by '" + twice.String(1) +
                           "' in the published revision of that; publish that one first");
    }
}

void RequireOneOwnerAfterUndo(sql::Connection& connection, EntityId id, const Lock& lock) {
    sql::Statement anew(connection, statements::OWNED_ANEW);
    anew.BindAll(id);
    if (anew.Step()) {
        throw UDMException("the check-out of '" + lock.uid + "' can't be undone: '" +
                           anew.String(0) + "', which would come back to it, is owned by '" +
                           anew.String(1) + "' by now; remove it there first");
    }
}

AttributeList UnpackedAttributes(const EntityRow& row) {
    try {
        return UnpackAttributes(row.packed);
    } catch (const DamagedAttributes& damage) {
        throw DamagedAttributes(row.uid + ":" + std::to_string(row.revision), damage.Cause());
    }
}

// Everything that belongs to the working revision alone takes the place of the published one.
void CloseIntervals(sql::Connection& connection, EntityId id, const Work& work, int published) {
    if (work.heads) {
        Run(connection, statements::DROP_COVERED_HEADS, id);
        Run(connection, statements::DROP_MASKS, id);
        Run(connection, statements::PUBLISH_HEADS, id);
    }
    if (work.files) {
        Run(connection, statements::CLOSE_FILES, id);
    }
    if (work.links) {
        Run(connection, statements::CLOSE_LINKS, id, published);
    }
}

void OpenWorking(sql::Connection& connection,
                 EntityId id,
                 int published,
                 std::string_view comment,
                 const Stamp& stamp) {
    if (published == MAX_REVISION) {
        throw UDMException("entity #" + std::to_string(id) + " has " +
                           std::to_string(MAX_REVISION) +
                           " revisions and can have no more; branch it");
    }
    Run(connection,
        statements::COPY_REVISION,
        RevisionId(id, published),
        stamp.time,
        stamp.by.user,
        stamp.by.workspace,
        comment);
    Run(connection,
        statements::SET_LOCK,
        id,
        published + 1,
        stamp.by.user,
        stamp.by.workspace,
        stamp.time);
}

}  // namespace

int LibraryStore::CheckOut(EntityId id, std::string_view comment, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    const Lock lock = LockOf(*connection_, id);
    if (lock.HeldBy(stamp.by)) {
        throw UDMException("'" + lock.uid + "' is checked out here already, since " +
                           TimeText(lock.since) + "; edit its revision " +
                           std::to_string(lock.working));
    }
    if (lock.Held()) {
        throw UDMException("'" + lock.uid + "' can't be checked out: " + lock.Holder() +
                           "; it must be published or undone there first");
    }
    OpenWorking(*connection_, id, lock.published, comment, stamp);
    transaction.Commit();
    return lock.published + 1;
}

void LibraryStore::AddSavePoint(EntityId id, std::string_view comment, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    const Lock lock = LockOf(*connection_, id);
    RequireOwn(lock, stamp.by, "saved");
    const EntityId revision = RevisionId(id, lock.working);
    Run(*connection_, statements::ADD_SAVE_POINT, revision, stamp.time, stamp.by.user, comment);
    if (!comment.empty()) {
        Run(*connection_, statements::SET_COMMENT, revision, comment);
    }
    transaction.Commit();
}

std::vector<SavePoint> LibraryStore::SavePoints(EntityId id, int revision) {
    std::vector<SavePoint> points;
    if (revision < 0 || revision > MAX_REVISION) {
        return points;
    }
    sql::Statement find(*connection_, statements::SAVE_POINTS);
    find.BindAll(RevisionId(id, revision));
    while (find.Step()) {
        points.push_back({find.Int64(0), find.String(1), find.String(2)});
    }
    return points;
}

int LibraryStore::Publish(EntityId id, std::string_view comment, bool keep, const Stamp& stamp) {
    sql::Transaction transaction(*connection_, Mode::Write, Durability::Full);
    Work work;
    const Lock lock = LockOf(*connection_, id, work);
    RequireOwn(lock, stamp.by, "published");
    RequireOneOwnerAfterPublish(*connection_, id, lock, stamp.by);
    const bool first = lock.published == NO_REVISION;
    const int number = first ? 1 : lock.working;
    Run(*connection_,
        first ? statements::PUBLISH_FIRST_REVISION : statements::PUBLISH_REVISION,
        RevisionId(id, lock.working),
        stamp.time,
        stamp.by.user,
        comment);
    Run(*connection_, statements::SET_PUBLISHED, id, number);
    // Full text search has to look at what others see from now on.
    MarkTexts(*this, id);
    CloseIntervals(*connection_, id, work, number);
    if (first) {
        Run(*connection_, statements::MOVE_EXACT, id, number);
    }
    if (keep) {
        OpenWorking(*connection_, id, number, {}, stamp);
    }
    transaction.Commit();
    return number;
}

int LibraryStore::Undo(EntityId id, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    const Lock lock = LockOf(*connection_, id);
    RequireOwn(lock, stamp.by, "undone");
    if (lock.published == NO_REVISION) {
        throw UDMException("'" + lock.uid +
                           "' was never published, so that there is nothing to go back to; delete "
                           "it instead");
    }
    RequireOneOwnerAfterUndo(*connection_, id, lock);
    Run(*connection_, statements::DROP_REVISION, RevisionId(id, lock.working));
    for (const auto* named :
         {&statements::DROP_WORKING_HEADS, &statements::REOPEN_LINKS, &statements::REOPEN_FILES}) {
        Run(*connection_, *named, id);
    }
    for (const auto* named :
         {&statements::DROP_NEW_LINKS, &statements::DROP_NEW_FILES, &statements::DROP_EXACT}) {
        Run(*connection_, *named, id, lock.working);
    }
    Run(*connection_, statements::CLEAR_LOCK, id);
    transaction.Commit();
    return lock.published;
}

EntityId LibraryStore::Branch(EntityId origin,
                              int revision,
                              std::string_view uid,
                              std::string_view comment,
                              const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    const Lock lock = LockOf(*connection_, origin);
    EntityRow row;
    if (!FindRevision(lock.uid, revision, stamp.by, row) || row.state != RevisionState::Published) {
        throw UDMException("revision " + std::to_string(revision) + " of '" + lock.uid +
                           "' can't be branched, it is no published one; choose one that is");
    }
    const EntityId id = Insert({.uid = uid,
                                .definition = row.definition,
                                .name = row.name,
                                .displayName = row.displayName,
                                .state = RevisionState::Working,
                                .branchUid = lock.uid,
                                .branchRevision = revision},
                               UnpackedAttributes(row),
                               stamp);
    for (const auto* named : {&statements::BRANCH_LINKS, &statements::BRANCH_FILES}) {
        Run(*connection_, *named, id, origin, revision);
    }
    Run(*connection_, statements::BRANCH_VAULT, id, origin);
    if (!comment.empty()) {
        Run(*connection_, statements::SET_COMMENT, RevisionId(id, 0), comment);
    }
    transaction.Commit();
    return id;
}

void LibraryStore::Branches(std::string_view originUid,
                            const Viewer& viewer,
                            std::vector<BranchRow>& out) {
    sql::Statement find(*connection_, statements::BRANCHES);
    find.BindAll(viewer.user, viewer.workspace, originUid);
    while (find.Step()) {
        BranchRow& branch = out.emplace_back();
        ReadEntityRow(find, branch.entity);
        branch.originRevision = find.Int(ROW_COLUMN_COUNT);
    }
}

void LibraryStore::MovedPlaces(EntityId id, int working, std::vector<MovedPlace>& out) {
    sql::Statement find(*connection_, statements::MOVED_PLACES);
    find.BindAll(id, working);
    while (find.Step()) {
        out.push_back({static_cast<LinkKind>(find.Int(0)), find.Int64(1), find.Int(2) != 0});
    }
}

int LibraryStore::SeenRevision(EntityId id, const Viewer& viewer) {
    sql::Statement find(*connection_, statements::SEEN_REVISION);
    find.BindAll(viewer.user, viewer.workspace, id);
    return find.Step() && !find.IsNull(0) ? find.Int(0) : NO_REVISION;
}

std::int64_t LibraryStore::CountChildrenUpTo(std::int64_t limit,
                                             EntityId parent,
                                             LinkKind kind,
                                             std::string_view name) {
    sql::Statement count(*connection_, statements::COUNT_UP_TO);
    count.BindAll(parent, kind, name, limit);
    return count.Step() ? count.Int64(0) : 0;
}

bool LibraryStore::AnyOwner(EntityId child,
                            bool alsoSharing,
                            const Viewer& viewer,
                            OwnerInfo& owner) {
    sql::Statement find(*connection_, statements::ANY_OWNER);
    find.BindAll(viewer.user, viewer.workspace, child, alsoSharing);
    if (!find.Step()) {
        return false;
    }
    owner.uid = find.String(0);
    const bool inWorkingRevision = find.Int(1) != 0;
    const bool givenUp = find.Int(2) != 0;
    const bool ours = find.Text(3) == viewer.user && find.Text(4) == viewer.workspace;
    owner.elsewhere.clear();
    if (!ours && (inWorkingRevision || givenUp)) {
        owner.elsewhere = find.String(3) + " has that checked out in workspace '" + find.String(4) +
                          "' since " + TimeText(find.Int64(5));
    }
    return true;
}

}  // namespace kxudm::store
