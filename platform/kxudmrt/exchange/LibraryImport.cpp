// How records of a document become a library's rows.
#include <optional>
#include <utility>

#include "exchange/LibraryExchange.h"
#include "store/ExchangeStatements.h"
#include "store/FileStatements.h"
#include "store/MaintenanceStatements.h"
#include "store/RevisionStatements.h"
#include "store/RowReader.h"

namespace kxudm::exchange {
namespace {

constexpr int OPEN = kOpen;

template <typename... Values>
void Run(store::LibraryStore& store, const sql::NamedStatement& named, const Values&... values) {
    sql::Statement statement(store.Connection(), named);
    statement.BindAll(values...);
    statement.Run();
}

std::optional<std::string_view> TextOrNull(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional<std::string_view>(text);
}

std::optional<int> NumberOrNull(int number) {
    return number == store::NO_REVISION ? std::nullopt : std::optional(number);
}

void InsertRevision(store::LibraryStore& store,
                    store::EntityId id,
                    const EntityRecord& entity,
                    const RevisionRecord& revision) {
    const std::string packed = store::PackAttributes(revision.attributes);
    std::optional<store::Microseconds> when;
    std::optional<std::string_view> who;
    if (entity.versioned) {
        when = revision.published;
        who = revision.publisher;
    }
    Run(store,
        store::statements::IMPORT_REVISION,
        store::RevisionId(id, revision.number),
        entity.versioned ? store::RevisionState::Published : store::RevisionState::Unversioned,
        revision.displayName,
        revision.created,
        revision.creator,
        revision.modified,
        revision.modifier,
        when,
        who,
        revision.workspace,
        revision.comment,
        sql::Blob{packed});
    for (const SavePointRecord& point : revision.savePoints) {
        Run(store,
            store::statements::ADD_SAVE_POINT,
            store::RevisionId(id, revision.number),
            point.time,
            point.user,
            point.comment);
    }
}

void InsertFile(
    store::LibraryStore& store, store::EntityId id, const FileRecord& file, int from, int to) {
    Run(store,
        store::statements::IMPORT_FILE,
        id,
        to,
        file.name,
        from,
        TextOrNull(file.hash),
        static_cast<std::int64_t>(file.size),
        file.modified,
        file.added,
        file.isText,
        TextOrNull(file.externalPath));
}

bool NextAwaiting(store::LibraryStore& store, store::EntityId awaited, AwaitingLink& link) {
    sql::Statement find(store.Connection(), store::statements::AWAITING_LINK);
    find.BindAll(awaited);
    if (!find.Step()) {
        return false;
    }
    link.first = find.Int64(0);
    link.firstUid = find.String(1);
    link.isFirstDeleted = find.Int64(2) != 0;
    link.kind = static_cast<store::LinkKind>(find.Int(3));
    link.name = find.String(4);
    link.to = find.Int(5);
    link.position = find.Int64(6);
    link.from = find.Int(7);
    link.exact = find.IsNull(8) ? store::NO_REVISION : find.Int(8);
    link.composition = find.Int(9) != 0;
    return true;
}

}  // namespace

bool HasAnyEntity(store::LibraryStore& store) {
    sql::Statement any(store.Connection(), store::statements::ANY_ENTITY);
    return any.Step();
}

bool FindKnown(store::LibraryStore& store, std::string_view uid, KnownEntity& known) {
    sql::Statement find(store.Connection(), store::statements::KNOWN_ENTITY);
    find.BindAll(uid);
    if (!find.Step()) {
        return false;
    }
    known.id = find.Int64(0);
    known.definition = find.String(1);
    known.name = find.String(2);
    known.published = find.IsNull(3) ? store::NO_REVISION : find.Int(3);
    known.working = find.IsNull(4) ? store::NO_REVISION : find.Int(4);
    known.lockUser = find.String(5);
    known.lockWorkspace = find.String(6);
    known.lockTime = find.Int64(7);
    known.deleted = find.Int64(8) != 0;
    return true;
}

store::EntityId ImportEntity(store::LibraryStore& store,
                             const EntityRecord& entity,
                             const store::AttributeList& shown) {
    Run(store,
        store::statements::IMPORT_ENTITY,
        entity.uid,
        entity.definition,
        entity.name,
        entity.revisions.back().number,
        entity.created,
        entity.creator,
        entity.workspace,
        TextOrNull(entity.branchUid),
        NumberOrNull(entity.branchRevision));
    const store::EntityId id = store.Connection().LastInsertId();
    for (const RevisionRecord& revision : entity.revisions) {
        InsertRevision(store, id, entity, revision);
    }
    store.AddHeadValues(id, false, shown, entity.revisions.back().displayName);
    for (const FileRecord& file : entity.files) {
        InsertFile(store, id, file, file.from, file.to);
    }
    return id;
}

void AppendRevisions(store::LibraryStore& store,
                     store::EntityId id,
                     const EntityRecord& entity,
                     int first,
                     const store::AttributeList& shown) {
    Run(store, store::statements::MARK_FILES, id, first);
    Run(store, store::statements::MARK_LINKS, id, first);
    for (const RevisionRecord& revision : entity.revisions) {
        if (revision.number >= first) {
            InsertRevision(store, id, entity, revision);
        }
    }
    const RevisionRecord& newest = entity.revisions.back();
    Run(store, store::statements::SET_NEWEST, id, newest.number);
    Run(store, store::statements::DROP_HEADS, id);
    store.AddHeadValues(id, false, shown, newest.displayName);
    for (const FileRecord& file : entity.files) {
        if (file.to <= first) {
            continue;
        }
        bool goesOn = false;
        if (file.from < first) {
            Run(store,
                store::statements::UNMARK_FILE,
                id,
                file.name,
                file.to == OPEN ? std::nullopt : std::optional(file.to),
                first);
            goesOn = store.Connection().Changes() != 0;
        }
        if (!goesOn) {
            InsertFile(store, id, file, std::max(file.from, first), file.to);
        }
    }
    Run(store, store::statements::CLOSE_FILES, id);
}

void FinishAppended(store::LibraryStore& store, store::EntityId id, int newest) {
    Run(store, store::statements::CLOSE_LINKS, id, newest);
}

void ImportFiles(store::LibraryStore& store,
                 store::EntityId id,
                 const EntityRecord& entity,
                 int newest) {
    for (const FileRecord& file : entity.files) {
        if (file.from > newest) {
            continue;
        }
        // Behind the document's newest revision nobody knows of them.
        const int behind = entity.revisions.back().number + 1;
        const int to = file.to == OPEN && behind <= newest ? behind : file.to;
        InsertFile(store, id, file, file.from, to > newest ? OPEN : to);
    }
}

bool HasFiles(store::LibraryStore& store, store::EntityId id) {
    sql::Statement find(store.Connection(), store::statements::HAS_FILES);
    find.BindAll(id);
    return find.Step();
}

void NoteArrival(store::LibraryStore& store, const std::string& uid, const Arrival& arrival) {
    Run(store,
        store::statements::NOTE_ARRIVED,
        uid,
        arrival.origin,
        arrival.id,
        arrival.mode,
        arrival.known,
        arrival.first,
        arrival.newest,
        arrival.diverged);
}

bool FindArrival(store::LibraryStore& store, const std::string& uid, Arrival& arrival) {
    sql::Statement find(store.Connection(), store::statements::ARRIVED);
    find.BindAll(uid);
    if (!find.Step()) {
        return false;
    }
    arrival.origin = find.Int64(0);
    arrival.id = find.Int64(1);
    arrival.mode = static_cast<ArrivalMode>(find.Int(2));
    arrival.known = find.Int(3);
    arrival.first = find.Int(4);
    arrival.newest = find.Int(5);
    arrival.diverged = find.Int(6);
    return true;
}

bool IsLinkThere(store::LibraryStore& store, const ImportedLink& link) {
    const auto& closed = store::BorneByParent(link.kind) ? store::statements::CLOSED_LINK_THERE
                                                         : store::statements::CLOSED_PLACE_THERE;
    for (const auto* named : {&store::statements::OPEN_LINK_THERE, &closed}) {
        sql::Statement find(store.Connection(), *named);
        find.BindAll(link.first,
                     link.kind,
                     link.name,
                     link.second,
                     NumberOrNull(link.exact),
                     link.from,
                     link.to);
        if (find.Step()) {
            return true;
        }
    }
    return false;
}

bool LetLinkGoOn(store::LibraryStore& store, const ImportedLink& link, int first) {
    Run(store,
        store::statements::UNMARK_LINK,
        link.first,
        link.kind,
        link.name,
        link.second,
        NumberOrNull(link.exact),
        link.to == OPEN ? std::nullopt : std::optional(link.to),
        first);
    return store.Connection().Changes() != 0;
}

std::int64_t LastPosition(store::LibraryStore& store,
                          store::EntityId first,
                          store::LinkKind kind,
                          std::string_view name) {
    sql::Statement find(store.Connection(), store::statements::LAST_POSITION);
    find.BindAll(first, kind, name);
    return find.Step() ? find.Int64(0) : 0;
}

void ImportLink(store::LibraryStore& store,
                const ImportedLink& link,
                std::int64_t position,
                int ending) {
    Run(store,
        store::statements::IMPORT_LINK,
        link.first,
        link.kind,
        link.name,
        link.second,
        NumberOrNull(link.exact),
        link.to,
        position,
        link.from,
        NumberOrNull(ending),
        link.composition);
}

store::EntityId Await(store::LibraryStore& store, const std::string& uid) {
    sql::Statement find(store.Connection(), store::statements::AWAITED);
    find.BindAll(uid);
    if (find.Step()) {
        return find.Int64(0);
    }
    Run(store, store::statements::AWAIT, uid);
    return store.Connection().LastInsertId();
}

store::EntityId MakeRoom(store::LibraryStore& store, const std::string& uid) {
    sql::Statement find(store.Connection(), store::statements::AWAITED);
    find.BindAll(uid);
    if (!find.Step()) {
        return 0;
    }
    const store::EntityId awaited = find.Int64(0);
    Run(store, store::statements::GIVE_UID_BACK, awaited);
    return awaited;
}

void LetLinksArrive(store::LibraryStore& store,
                    store::EntityId awaited,
                    store::EntityId id,
                    const std::function<bool(const AwaitingLink&)>& take) {
    AwaitingLink link;
    while (NextAwaiting(store, awaited, link)) {
        const bool taken = take(link);
        const auto change = [&](const sql::NamedStatement& named, auto... more) {
            Run(store,
                named,
                awaited,
                link.first,
                link.kind,
                link.to,
                link.name,
                link.position,
                link.from,
                more...);
        };
        if (taken) {
            change(store::statements::LET_LINK_ARRIVE, id);
        } else {
            change(store::statements::DROP_AWAITING_LINK);
        }
    }
    Run(store, store::statements::DROP_AWAITED, awaited);
}

bool MayStayOn(store::LibraryStore& store, store::EntityId id, int revision) {
    if (revision == store::NO_REVISION) {
        return true;
    }
    sql::Statement number(store.Connection(), store::statements::EXCHANGE_REVISION_NUMBERS);
    number.BindAll(store::RevisionId(id, revision), store::RevisionId(id, revision));
    if (number.Step()) {
        return true;
    }
    sql::Statement first(store.Connection(), store::statements::FIRST_REVISION);
    first.BindAll(id);
    return first.Step() && revision < first.Int(0);
}

bool HasOtherPlace(store::LibraryStore& store, const ImportedLink& link) {
    sql::Statement find(store.Connection(), store::statements::OTHER_PLACE);
    find.BindAll(link.first, link.kind, link.second);
    return find.Step();
}

std::string OtherOwner(store::LibraryStore& store, const ImportedLink& link) {
    sql::Statement find(store.Connection(), store::statements::OTHER_OWNER);
    find.BindAll(link.first, link.second, link.composition);
    return find.Step() ? find.String(0) : std::string();
}

std::vector<store::EntityId> LeftPlaces(store::LibraryStore& store, store::EntityId id, int first) {
    std::vector<store::EntityId> places;
    sql::Statement find(store.Connection(), store::statements::LEFT_PLACES);
    find.BindAll(id, first);
    while (find.Step()) {
        places.push_back(find.Int64(0));
    }
    return places;
}

}  // namespace kxudm::exchange
