// How a library's rows become records of a document.
#include <algorithm>
#include <iterator>
#include <utility>

#include "exchange/LibraryExchange.h"
#include "store/ExchangeStatements.h"
#include "store/RowReader.h"

namespace kxudm::exchange {
namespace {

constexpr int PORTION = 1000;

template <typename... Values>
void Run(store::LibraryStore& store, const sql::NamedStatement& named, const Values&... values) {
    sql::Statement statement(store.Connection(), named);
    statement.BindAll(values...);
    statement.Run();
}

// An interval of revisions as those that are exported show it; nothing of it may be left.
bool Clip(const std::vector<RevisionRecord>& revisions, int from, int to, int& first, int& end) {
    const auto at = [&](int number) {
        return std::lower_bound(
            revisions.begin(), revisions.end(), number, [](const RevisionRecord& each, int n) {
                return each.number < n;
            });
    };
    const auto begin = at(from);
    const auto behind = at(to);
    if (begin >= behind) {
        return false;
    }
    first = begin->number;
    end = behind == revisions.end() ? kOpen : behind->number;
    return true;
}

void ReadSavePoints(store::LibraryStore& store, store::EntityId id, RevisionRecord& revision) {
    for (store::SavePoint& point : store.SavePoints(id, revision.number)) {
        revision.savePoints.push_back(
            {point.time, std::move(point.user), std::move(point.comment)});
    }
}

store::AttributeList Sorted(store::AttributeList attributes) {
    std::sort(attributes.begin(), attributes.end(), [](const auto& a, const auto& b) {
        return a.first < b.first;
    });
    return attributes;
}

store::AttributeList AttributesOf(std::string_view packed, const std::string& uid, int revision) {
    try {
        return Sorted(store::UnpackAttributes(packed));
    } catch (const store::DamagedAttributes& damage) {
        throw store::DamagedAttributes(uid + ":" + std::to_string(revision), damage.Cause());
    }
}

void ReadRevisions(
    store::LibraryStore& store, store::EntityId id, int least, int most, EntityRecord& entity) {
    sql::Statement read(store.Connection(), store::statements::EXCHANGE_REVISIONS);
    read.BindAll(store::RevisionId(id, least), store::RevisionId(id, most));
    while (read.Step()) {
        RevisionRecord& revision = entity.revisions.emplace_back();
        revision.number = read.Int(0);
        revision.displayName = read.String(1);
        revision.created = read.Int64(2);
        revision.creator = read.String(3);
        revision.modified = read.Int64(4);
        revision.modifier = read.String(5);
        revision.published = read.Int64(6);
        revision.publisher = read.String(7);
        revision.workspace = read.String(8);
        revision.comment = read.String(9);
        revision.attributes = AttributesOf(read.Bytes(10), entity.uid, revision.number);
        entity.versioned =
            static_cast<store::RevisionState>(read.Int(11)) != store::RevisionState::Unversioned;
        ReadSavePoints(store, id, revision);
    }
}

void ReadFiles(store::LibraryStore& store,
               store::EntityId id,
               EntityRecord& entity,
               const std::function<void(const FileRecord&, std::string_view vault)>& note) {
    sql::Statement read(store.Connection(), store::statements::EXCHANGE_FILES);
    read.BindAll(id);
    while (read.Step()) {
        FileRecord file;
        if (!Clip(entity.revisions, read.Int(8), read.Int(9), file.from, file.to)) {
            continue;
        }
        file.name = read.String(0);
        file.hash = read.String(1);
        file.size = static_cast<std::uint64_t>(read.Int64(2));
        file.modified = read.Int64(3);
        file.added = read.Int64(4);
        file.isText = read.Int(5) != 0;
        file.externalPath = read.String(6);
        note(file, read.Text(7));
        entity.files.push_back(std::move(file));
    }
}

// Without revisions and files.
EntityRecord ReadEntity(store::LibraryStore& store, store::EntityId id, int& published) {
    EntityRecord entity;
    sql::Statement read(store.Connection(), store::statements::EXCHANGE_ENTITY);
    read.BindAll(id);
    if (!read.Step()) {
        throw UDMNotFoundException("entity #" + std::to_string(id) + " is not in the library");
    }
    entity.uid = read.String(0);
    entity.definition = read.String(1);
    entity.name = read.String(2);
    entity.created = read.Int64(3);
    entity.creator = read.String(4);
    entity.workspace = read.String(5);
    entity.branchUid = read.String(6);
    entity.branchRevision = read.IsNull(7) ? store::NO_REVISION : read.Int(7);
    published = read.IsNull(8) ? store::NO_REVISION : read.Int(8);
    return entity;
}

}  // namespace

void BeginExchange(store::LibraryStore& store) {
    store.Connection().Execute(store::statements::EXCHANGE_TABLES);
}

bool ExportSelection::Add(store::EntityId id) {
    Run(store_, store::statements::SELECT_ONE, id);
    int published = store::NO_REVISION;
    static_cast<void>(ReadEntity(store_, id, published));
    return published != store::NO_REVISION;
}

void ExportSelection::AddAll() {
    Run(store_, store::statements::SELECT_ALL);
}

void ExportSelection::AddOwned() {
    Run(store_, store::statements::SELECT_OWNED, scope_ == Scope::AllWithFiles);
}

void ExportSelection::AddPlaces() {
    Run(store_, store::statements::SELECT_PLACES, scope_ == Scope::AllWithFiles);
}

std::int64_t ExportSelection::Count() {
    sql::Statement count(store_.Connection(), store::statements::COUNT_SELECTED);
    return count.Step() ? count.Int64(0) : 0;
}

std::vector<std::string> ExportSelection::Definitions() {
    std::vector<std::string> names;
    sql::Statement read(store_.Connection(), store::statements::SELECTED_DEFINITIONS);
    while (read.Step()) {
        names.push_back(read.String(0));
    }
    return names;
}

void ExportSelection::Visit(const std::function<void(store::EntityId)>& visit) {
    std::vector<store::EntityId> portion{0};
    while (!portion.empty()) {
        const store::EntityId last = portion.back();
        portion.clear();
        {
            sql::Statement read(store_.Connection(), store::statements::SELECTED_BEHIND);
            read.BindAll(last, PORTION);
            while (read.Step()) {
                portion.push_back(read.Int64(0));
            }
        }
        for (const store::EntityId id : portion) {
            visit(id);
        }
    }
}

EntityRecord ExportSelection::Read(store::EntityId id) {
    int published = store::NO_REVISION;
    EntityRecord entity = ReadEntity(store_, id, published);
    const bool all = scope_ == Scope::AllWithFiles;
    ReadRevisions(store_, id, all ? 0 : published, published, entity);
    if (scope_ != Scope::Newest) {
        ReadFiles(store_, id, entity, [&](const FileRecord& file, std::string_view vault) {
            if (!file.IsExternal()) {
                NoteContent(store_, {file.hash, std::string(vault), file.size});
            }
        });
    }
    return entity;
}

void ExportSelection::VisitLinks(
    const std::function<void(const std::string& first, LinkRecord&&)>& visit) {
    Visit([&](store::EntityId id) { VisitLinksOf(id, visit); });
}

void ExportSelection::VisitLinksOf(
    store::EntityId id, const std::function<void(const std::string& first, LinkRecord&&)>& visit) {
    std::vector<RevisionRecord> revisions;
    std::string uid;
    sql::Statement read(store_.Connection(), store::statements::EXCHANGE_LINKS);
    read.BindAll(id);
    while (read.Step()) {
        if (revisions.empty()) {
            uid = ReadNumbers(id, revisions);
        }
        LinkRecord link;
        if (!Clip(revisions, read.Int(3), read.Int(4), link.from, link.to)) {
            continue;
        }
        link.kind = static_cast<store::LinkKind>(read.Int(0));
        link.name = read.String(1);
        link.other = read.String(2);
        link.exact = read.IsNull(5) ? store::NO_REVISION : read.Int(5);
        link.composition = read.Int(6) != 0;
        visit(uid, std::move(link));
    }
}

std::string ExportSelection::ReadNumbers(store::EntityId id,
                                         std::vector<RevisionRecord>& revisions) {
    int published = store::NO_REVISION;
    std::string uid = ReadEntity(store_, id, published).uid;
    const int least = scope_ == Scope::AllWithFiles ? 0 : published;
    sql::Statement read(store_.Connection(), store::statements::EXCHANGE_REVISION_NUMBERS);
    read.BindAll(store::RevisionId(id, least), store::RevisionId(id, published));
    while (read.Step()) {
        revisions.emplace_back().number = read.Int(0);
    }
    return uid;
}

EntityRecord ReadKnown(store::LibraryStore& store, store::EntityId id) {
    int published = store::NO_REVISION;
    EntityRecord entity = ReadEntity(store, id, published);
    if (published != store::NO_REVISION) {
        ReadRevisions(store, id, 0, published, entity);
        ReadFiles(store, id, entity, [](const FileRecord&, std::string_view) {});
    }
    return entity;
}

}  // namespace kxudm::exchange
