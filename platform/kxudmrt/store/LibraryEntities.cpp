// LibraryStore: entities, revisions and their deletion.
#include <optional>

#include "store/FullText.h"
#include "store/HeadValue.h"
#include "store/LibraryStore.h"
#include "store/RowReader.h"
#include "store/Statements.h"

namespace kxudm::store {
namespace {

constexpr std::string_view DISPLAY_NAME = "displayname";

std::string UidOf(sql::Connection& connection, EntityId id) {
    sql::Statement statement(connection, statements::UID_OF);
    statement.BindAll(id);
    return statement.Step() ? statement.String(0) : "#" + std::to_string(id);
}

[[noreturn]] void ThrowUnknownRevision(sql::Connection& connection, EntityId id, int revision) {
    throw UDMNotFoundException("revision " + std::to_string(revision) + " of '" +
                               UidOf(connection, id) +
                               "' does not exist; read the entity again for its newest one");
}

void SetHead(
    sql::Statement& set, EntityId id, bool working, std::string_view name, const kxVariant& value) {
    const sql::Value head = HeadValue(value);
    set.BindAll(id, name, working);
    set.Bind(4, head);
    set.Run();
}

// An empty value leaves no row, except where it hides the published one.
void StoreHead(sql::Connection& connection,
               EntityId id,
               bool working,
               std::string_view name,
               const kxVariant& value) {
    if (value.IsEmpty() && !working) {
        sql::Statement drop(connection, statements::DROP_HEAD_ATTRIBUTE);
        drop.BindAll(id, name, working);
        drop.Run();
        return;
    }
    sql::Statement set(connection, statements::SET_HEAD_ATTRIBUTE);
    SetHead(set, id, working, name, value);
}

// State and packed attributes of a revision that is about to change.
std::string ReadForChange(sql::Connection& connection, EntityId id, int revision, bool& working) {
    sql::Statement read(connection, statements::ATTRIBUTES);
    read.BindAll(RevisionId(id, revision));
    if (!read.Step()) {
        ThrowUnknownRevision(connection, id, revision);
    }
    const auto state = static_cast<RevisionState>(read.Int(0));
    if (state == RevisionState::Published) {
        throw UDMException("revision " + std::to_string(revision) + " of '" +
                           UidOf(connection, id) +
                           "' is published and can't be changed; check it out first");
    }
    working = state == RevisionState::Working;
    return std::string(read.Bytes(1));
}

std::string Merged(sql::Connection& connection,
                   EntityId id,
                   int revision,
                   std::string_view packed,
                   const AttributeList& changes) {
    try {
        return MergePackedAttributes(packed, changes);
    } catch (const DamagedAttributes& damage) {
        throw DamagedAttributes(UidOf(connection, id) + ":" + std::to_string(revision),
                                damage.Cause());
    }
}

std::optional<std::string_view> TextOrNull(bool there, std::string_view text) {
    return there ? std::optional(text) : std::nullopt;
}

EntityId InsertEntityRow(sql::Connection& connection, const NewEntity& entity, const Stamp& stamp) {
    const bool working = entity.state == RevisionState::Working;
    const std::optional<int> zero = 0;
    const bool branch = !entity.branchUid.empty();
    sql::Statement insert(connection, statements::INSERT_ENTITY);
    insert.BindAll(entity.uid,
                   entity.definition,
                   entity.name,
                   working ? std::nullopt : zero,
                   working ? zero : std::nullopt,
                   TextOrNull(working, stamp.by.user),
                   TextOrNull(working, stamp.by.workspace),
                   working ? std::optional(stamp.time) : std::nullopt,
                   stamp.time,
                   stamp.by.user,
                   stamp.by.workspace,
                   TextOrNull(branch, entity.branchUid),
                   branch ? std::optional(entity.branchRevision) : std::nullopt);
    try {
        insert.Run();
    } catch (const sql::Error& error) {
        if (error.Kind() != sql::ErrorKind::Constraint) {
            throw;
        }
        throw UDMException("entity '" + std::string(entity.uid) + "' is in the library already; " +
                           error.what());
    }
    return connection.LastInsertId();
}

}  // namespace

EntityId LibraryStore::Insert(const NewEntity& entity,
                              const AttributeList& attributes,
                              const Stamp& stamp) {
    if (entity.state == RevisionState::Published) {
        throw UDMException("entity '" + std::string(entity.uid) +
                           "' can't begin as published; insert it as working and publish it");
    }
    const std::string packed = PackAttributes(attributes);
    sql::Transaction transaction(*connection_);
    const EntityId id = InsertEntityRow(*connection_, entity, stamp);
    sql::Statement insert(*connection_, statements::INSERT_REVISION);
    insert.BindAll(RevisionId(id, 0),
                   entity.state,
                   entity.displayName,
                   stamp.time,
                   stamp.by.user,
                   stamp.by.workspace,
                   sql::Blob{packed});
    insert.Run();
    const bool working = entity.state == RevisionState::Working;
    AddHeadValues(id, working, attributes, entity.displayName);
    transaction.Commit();
    return id;
}

bool LibraryStore::FindByUid(std::string_view baseUid, const Viewer& viewer, EntityRow& row) {
    sql::Statement find(*connection_, statements::FIND_BY_UID);
    find.BindAll(viewer.user, viewer.workspace, baseUid);
    if (!find.Step()) {
        return false;
    }
    ReadEntityRow(find, row);
    return true;
}

bool LibraryStore::FindById(EntityId id, const Viewer& viewer, EntityRow& row) {
    sql::Statement find(*connection_, statements::FIND_BY_ID);
    find.BindAll(viewer.user, viewer.workspace, id);
    if (!find.Step()) {
        return false;
    }
    ReadEntityRow(find, row);
    return true;
}

bool LibraryStore::FindEvenDeleted(EntityId id, const Viewer& viewer, EntityRow& row) {
    sql::Statement find(*connection_, statements::FIND_EVEN_DELETED);
    find.BindAll(viewer.user, viewer.workspace, id);
    if (!find.Step()) {
        return false;
    }
    ReadEntityRow(find, row);
    return true;
}

bool LibraryStore::FindRevision(std::string_view baseUid,
                                int revision,
                                const Viewer& viewer,
                                EntityRow& row) {
    // A number out of range would reach into the next entity.
    if (revision < 0 || revision > MAX_REVISION) {
        return false;
    }
    sql::Statement find(*connection_, statements::FIND_REVISION);
    find.BindAll(viewer.user, viewer.workspace, baseUid, revision);
    if (!find.Step()) {
        return false;
    }
    ReadEntityRow(find, row);
    return true;
}

bool LibraryStore::Details(EntityId id, int revision, EntityDetails& details) {
    if (revision < 0 || revision > MAX_REVISION) {
        return false;
    }
    sql::Statement find(*connection_, statements::DETAILS);
    find.BindAll(id, revision);
    if (!find.Step()) {
        return false;
    }
    details.createdWorkspace = find.String(0);
    details.branchUid = find.String(1);
    details.branchRevision = find.IsNull(2) ? NO_REVISION : find.Int(2);
    details.vault = find.String(3);
    details.revisionCreatedTime = find.Int64(4);
    details.revisionCreatedUser = find.String(5);
    details.publishedTime = find.Int64(6);
    details.publishedUser = find.String(7);
    details.revisionWorkspace = find.String(8);
    details.comment = find.String(9);
    return true;
}

std::vector<int> LibraryStore::RevisionNumbers(EntityId id, const Viewer& viewer) {
    sql::Statement find(*connection_, statements::REVISION_NUMBERS);
    find.BindAll(viewer.user, viewer.workspace, id);
    std::vector<int> numbers;
    while (find.Step()) {
        numbers.push_back(find.Int(0));
    }
    return numbers;
}

std::string LibraryStore::UpdateAttributes(EntityId id,
                                           int revision,
                                           const AttributeList& changes,
                                           const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    // Read under the write lock: another session may have changed another attribute.
    bool working = false;
    const std::string before = ReadForChange(*connection_, id, revision, working);
    std::string packed = Merged(*connection_, id, revision, before, changes);
    sql::Statement set(*connection_, statements::SET_ATTRIBUTES);
    set.BindAll(RevisionId(id, revision), sql::Blob{packed}, stamp.time, stamp.by.user);
    set.Run();
    for (const auto& [name, value] : changes) {
        StoreHead(*connection_, id, working, name, value);
    }
    transaction.Commit();
    return packed;
}

void LibraryStore::SetHeadValue(EntityId id,
                                bool working,
                                std::string_view name,
                                const kxVariant& value) {
    StoreHead(*connection_, id, working, name, value);
    MarkTexts(*this, id);
}

void LibraryStore::AddHeadValues(EntityId id,
                                 bool working,
                                 const AttributeList& attributes,
                                 std::string_view displayName) {
    sql::Statement set(*connection_, statements::SET_HEAD_ATTRIBUTE);
    for (const auto& [name, value] : attributes) {
        if (!value.IsEmpty()) {
            SetHead(set, id, working, name, value);
        }
    }
    set.BindAll(id, DISPLAY_NAME, working, displayName);
    set.Run();
}

void LibraryStore::SetDisplayName(EntityId id,
                                  int revision,
                                  std::string_view name,
                                  const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    bool working = false;
    ReadForChange(*connection_, id, revision, working);
    sql::Statement set(*connection_, statements::SET_DISPLAY_NAME);
    set.BindAll(RevisionId(id, revision), name, stamp.time, stamp.by.user);
    set.Run();
    StoreHead(*connection_, id, working, DISPLAY_NAME, kxVariant(name));
    transaction.Commit();
}

void LibraryStore::SetName(EntityId id, std::string_view name, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    EntityRow row;
    if (!FindById(id, stamp.by, row)) {
        throw UDMNotFoundException("entity '" + UidOf(*connection_, id) +
                                   "' can't be renamed, it is not there for this session");
    }
    for (const auto* named : {&statements::SET_NAME, &statements::SET_ENTRY}) {
        sql::Statement set(*connection_, *named);
        set.BindAll(id, name);
        set.Run();
    }
    sql::Statement touch(*connection_, statements::TOUCH_REVISION);
    touch.BindAll(RevisionId(id, row.revision), stamp.time, stamp.by.user);
    touch.Run();
    transaction.Commit();
}

void LibraryStore::SetVault(EntityId id, std::string_view directory) {
    sql::Transaction transaction(*connection_);
    sql::Statement set(*connection_, statements::SET_VAULT);
    set.BindAll(id, directory);
    set.Run();
    transaction.Commit();
}

std::vector<DeletedRow> LibraryStore::Delete(EntityId id, const Stamp& stamp, bool force) {
    sql::Transaction transaction(*connection_);
    std::vector<DeletedRow> rows;
    sql::Statement owned(*connection_, statements::OWNED);
    owned.BindAll(id);
    while (owned.Step()) {
        const bool locked = !owned.IsNull(4);
        const bool elsewhere =
            locked && (owned.Text(5) != stamp.by.user || owned.Text(6) != stamp.by.workspace);
        if (elsewhere && !force) {
            throw UDMException("'" + owned.String(1) + "' can't be deleted: " + owned.String(5) +
                               " has it checked out in workspace '" + owned.String(6) + "' since " +
                               TimeText(owned.Int64(7)) +
                               "; have it published or its check-out undone first");
        }
        const int newest = locked ? owned.Int(4) : owned.Int(3);
        rows.push_back({owned.Int64(0), owned.String(1), owned.String(2), newest});
    }
    if (rows.empty() || rows.front().id != id) {
        throw UDMNotFoundException("'" + UidOf(*connection_, id) +
                                   "' can't be deleted, it is not there");
    }
    sql::Statement last(*connection_, statements::LAST_DELETION);
    const std::int64_t number = (last.Step() ? last.Int64(0) : 0) + 1;
    sql::Statement hide(*connection_, statements::HIDE);
    for (const DeletedRow& row : rows) {
        hide.BindAll(row.id, number);
        hide.Run();
    }
    transaction.Commit();
    return rows;
}

bool LibraryStore::Undelete(std::string_view baseUid) {
    sql::Transaction transaction(*connection_);
    sql::Statement find(*connection_, statements::DELETION_OF);
    find.BindAll(baseUid);
    if (!find.Step() || find.Int64(0) == 0) {
        return false;
    }
    sql::Statement unhide(*connection_, statements::UNHIDE);
    unhide.BindAll(find.Int64(0));
    unhide.Run();
    transaction.Commit();
    return true;
}

}  // namespace kxudm::store
