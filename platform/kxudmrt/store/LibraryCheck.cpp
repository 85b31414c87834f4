#include "store/LibraryCheck.h"

#include <charconv>
#include <map>
#include <utility>

#include "store/HeadValue.h"
#include "store/MaintenanceStatements.h"

namespace kxudm::store {
namespace {

constexpr std::string_view JOURNAL_TRIMMED = "journal_trimmed";

using Kind = UDMFindingKind;
using Heads = std::map<std::string, sql::Value, std::less<>>;

constexpr const char* RESTORE = "; restore the library from a backup";

void ReportRows(LibraryStore& store,
                const sql::NamedStatement& named,
                Kind kind,
                const Report& report) {
    sql::Statement find(store.Connection(), named);
    while (find.Step()) {
        report(kind, find.String(0), find.String(1) + RESTORE);
    }
}

void CheckDatabase(LibraryStore& store, const Report& report) {
    for (const std::string& problem : store.Connection().IntegrityProblems()) {
        report(Kind::Database, store.Connection().File(), problem + RESTORE);
    }
}

void CheckAttributes(LibraryStore& store, const Report& report) {
    sql::Statement find(store.Connection(), statements::ALL_ATTRIBUTES);
    while (find.Step()) {
        try {
            static_cast<void>(UnpackAttributes(find.Bytes(1)));
        } catch (const DamagedAttributes& damage) {
            report(Kind::AttributesDamaged, find.String(0), damage.Cause() + RESTORE);
        }
    }
}

// --- Search attributes ---

// What a revision says; false if that can't be read, which is reported already.
bool HeadsOfRevision(const sql::Statement& row, int displayName, const Shown& shown, Heads& heads) {
    if (row.IsNull(displayName)) {
        return false;
    }
    try {
        AttributeList attributes = UnpackAttributes(row.Bytes(displayName + 1));
        shown(row.String(6), attributes);
        for (const auto& [name, value] : attributes) {
            if (!value.IsEmpty()) {
                heads[name] = HeadValue(value);
            }
        }
    } catch (const DamagedAttributes&) {
        return false;
    }
    heads["displayname"] = row.String(displayName);
    return true;
}

sql::Value ValueOf(const sql::Statement& row, int column) {
    switch (row.Kind(column)) {
        case sql::ColumnKind::Null:
            return {};
        case sql::ColumnKind::Integer:
            return row.Int64(column);
        case sql::ColumnKind::Real:
            return row.Double(column);
        default:
            return row.String(column);
    }
}

// The rows of an entity: those of the published revision, and how queries of the holder see it.
void ReadHeads(LibraryStore& store, EntityId id, Heads& published, Heads& seen) {
    Heads working;
    sql::Statement find(store.Connection(), statements::HEADS_OF);
    find.BindAll(id);
    while (find.Step()) {
        Heads& heads = find.Int(1) != 0 ? working : published;
        heads[find.String(0)] = ValueOf(find, 2);
    }
    seen = published;
    for (auto& [name, value] : working) {
        if (std::holds_alternative<std::monostate>(value)) {
            seen.erase(name);
        } else {
            seen[name] = std::move(value);
        }
    }
}

std::string Difference(const Heads& expected, const Heads& found) {
    for (const auto& [name, value] : expected) {
        const auto there = found.find(name);
        if (there == found.end() || there->second != value) {
            return name;
        }
    }
    for (const auto& [name, value] : found) {
        if (expected.find(name) == expected.end()) {
            return name;
        }
    }
    return {};
}

void CheckHeads(LibraryStore& store, const Shown& shown, const Report& report) {
    const auto compare =
        [&](const std::string& uid, const char* which, const Heads& expected, const Heads& found) {
            if (const std::string name = Difference(expected, found); !name.empty()) {
                report(Kind::SearchAttributes,
                       uid,
                       "queries see another \"" + name + "\" than its " + which +
                           " revision says; set the attribute anew");
            }
        };
    sql::Statement find(store.Connection(), statements::ALL_NEWEST);
    while (find.Step()) {
        Heads published;
        Heads seen;
        ReadHeads(store, find.Int64(0), published, seen);
        Heads expected;
        const bool hasPublished = HeadsOfRevision(find, 2, shown, expected);
        if (hasPublished) {
            compare(find.String(1), "published", expected, published);
        }
        Heads working;
        if (HeadsOfRevision(find, 4, shown, working) && (!hasPublished || published == expected)) {
            compare(find.String(1), "working", working, seen);
        }
    }
}

}  // namespace

void CheckRows(LibraryStore& store, const Shown& shown, const Report& report) {
    CheckDatabase(store, report);
    ReportRows(store, statements::NEWEST_MISSING, Kind::RevisionMissing, report);
    ReportRows(store, statements::STRAY_REVISIONS, Kind::RevisionStray, report);
    ReportRows(store, statements::STRAY_LOCKS, Kind::RevisionStray, report);
    CheckAttributes(store, report);
    CheckHeads(store, shown, report);
    ReportRows(store, statements::WRONG_FOLDING, Kind::SearchAttributes, report);
    ReportRows(store, statements::LINK_INTERVALS, Kind::LinkInterval, report);
    ReportRows(store, statements::LINKS_TWICE, Kind::LinkInterval, report);
    ReportRows(store, statements::DANGLING_LINKS, Kind::LinkDangling, report);
    CheckCycles(store, report);
    ReportRows(store, statements::TWO_OWNERS, Kind::OwnedTwice, report);
    ReportRows(store, statements::TWO_FOLDERS, Kind::InTwoFolders, report);
    ReportRows(store, statements::WRONG_ENTRIES, Kind::FolderEntry, report);
    ReportRows(store, statements::FILE_INTERVALS, Kind::FileInterval, report);
    ReportRows(store, statements::FILES_TWICE, Kind::FileInterval, report);
    ReportRows(store, statements::DANGLING_FILES, Kind::FileDangling, report);
    ReportRows(store, statements::STRAY_ROWS, Kind::StrayRow, report);
}

std::vector<DefinitionUse> DefinitionsInUse(LibraryStore& store) {
    std::vector<DefinitionUse> uses;
    sql::Statement find(store.Connection(), statements::DEFINITIONS_USED);
    while (find.Step()) {
        uses.push_back({find.String(0), find.String(1), find.Int64(2)});
    }
    return uses;
}

std::vector<ContentUse> ContentsInUse(LibraryStore& store) {
    std::vector<ContentUse> uses;
    sql::Statement find(store.Connection(), statements::CONTENTS_USED);
    while (find.Step()) {
        uses.push_back({find.String(0),
                        find.String(1),
                        find.String(2),
                        static_cast<std::uint64_t>(find.Int64(3)),
                        find.Int64(4)});
    }
    return uses;
}

bool IsContentUsed(sql::Connection& library, const std::string& vault, const std::string& hash) {
    sql::Statement find(library, statements::IS_CONTENT_USED);
    find.BindAll(hash, vault);
    return find.Step();
}

std::vector<std::string> VaultsOfFiles(sql::Connection& library) {
    std::vector<std::string> vaults;
    sql::Statement find(library, statements::VAULTS_OF_FILES);
    while (find.Step()) {
        vaults.push_back(find.String(0));
    }
    return vaults;
}

std::vector<DeletedEntity> DeletedEntities(LibraryStore& store) {
    std::vector<DeletedEntity> deleted;
    sql::Statement find(store.Connection(), statements::DELETED_ENTITIES);
    while (find.Step()) {
        DeletedEntity& each = deleted.emplace_back();
        each.id = find.Int64(0);
        each.uid = find.String(1);
        each.definition = find.String(2);
        each.name = find.String(3);
        each.published = find.IsNull(4) ? NO_REVISION : find.Int(4);
        each.working = find.IsNull(5) ? NO_REVISION : find.Int(5);
        each.deletion = find.Int64(6);
        each.time = find.IsNull(7) ? 0 : find.Int64(7);
        each.lockUser = find.String(8);
        each.lockWorkspace = find.String(9);
    }
    return deleted;
}

std::size_t PurgeDeleted(LibraryStore& store, Microseconds time) {
    return store.Update(
        [&] {
            sql::Statement youngest(store.Connection(), statements::YOUNGEST_ENTITY);
            const EntityId last = youngest.Step() ? youngest.Int64(0) : 0;
            std::size_t purged = 0;
            for (const DeletedEntity& each : DeletedEntities(store)) {
                if (each.id == last || each.time >= time) {
                    continue;
                }
                for (const auto* named : {&statements::PURGE_REVISIONS,
                                          &statements::PURGE_HEADS,
                                          &statements::PURGE_LINKS,
                                          &statements::PURGE_FILES,
                                          &statements::PURGE_ENTITY}) {
                    sql::Statement remove(store.Connection(), *named);
                    remove.BindAll(each.id);
                    remove.Run();
                }
                ++purged;
            }
            sql::Statement(store.Connection(), statements::PURGE_AWAITED).Run();
            return purged;
        },
        sql::Transaction::Durability::Full);
}

std::size_t TrimJournal(LibraryStore& store, Microseconds time) {
    return store.Update([&]() -> std::size_t {
        sql::Statement begin(store.Connection(), statements::JOURNAL_BEGIN);
        begin.BindAll(time);
        const std::int64_t first = begin.Step() && !begin.IsNull(0) ? begin.Int64(0) : 0;
        sql::Statement trim(store.Connection(), statements::TRIM_JOURNAL);
        trim.BindAll(first);
        trim.Run();
        const auto trimmed = static_cast<std::size_t>(store.Connection().Changes());
        if (trimmed > 0) {
            store.SetNote(JOURNAL_TRIMMED, std::to_string(first - 1));
        }
        return trimmed;
    });
}

std::int64_t JournalTrimmed(LibraryStore& store) {
    const std::string text = store.Note(JOURNAL_TRIMMED);
    std::int64_t sequence = 0;
    std::from_chars(text.data(), text.data() + text.size(), sequence);
    return sequence;
}

std::vector<Holder> HoldersNear(LibraryStore& store, EntityId id) {
    std::vector<Holder> holders;
    sql::Statement find(store.Connection(), statements::HOLDERS_NEAR);
    find.BindAll(id);
    while (find.Step()) {
        holders.push_back({find.String(0), find.String(1)});
    }
    return holders;
}

std::vector<EntityId> DeletedPlaces(LibraryStore& store, EntityId id, LinkKind kind) {
    std::vector<EntityId> places;
    sql::Statement find(store.Connection(), statements::DELETED_PLACES);
    find.BindAll(id, kind);
    while (find.Step()) {
        places.push_back(find.Int64(0));
    }
    return places;
}

std::string OwnedTwiceNear(LibraryStore& store, EntityId id) {
    sql::Statement find(store.Connection(), statements::OWNED_TWICE_NEAR);
    find.BindAll(id);
    return find.Step() ? find.String(0) : std::string();
}

}  // namespace kxudm::store
