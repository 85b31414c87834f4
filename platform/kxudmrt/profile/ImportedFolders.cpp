#include "profile/ImportedFolders.h"

#include "exchange/LibraryExchange.h"
#include "profile/Folders.h"
#include "store/ExchangeStatements.h"
#include "store/RowReader.h"

namespace kxudm::profile {

namespace {

// Rows that are written together: each by itself takes several times as long.
constexpr std::size_t kGroup = 1000;

template <typename... Values>
void Run(store::LibraryStore& store, const sql::NamedStatement& named, const Values&... values) {
    sql::Statement statement(store.Connection(), named);
    statement.BindAll(values...);
    statement.Run();
}

}  // namespace

void ImportedFolders::Note(const exchange::EntityRecord& folder) {
    _unwritten.emplace_back(folder.uid, folder.name);
    if (_unwritten.size() == kGroup) {
        Write();
    }
}

void ImportedFolders::NoteLink(const std::string& first, const exchange::LinkRecord& link) {
    if (link.kind != store::LinkKind::Folder || link.to != exchange::kOpen) {
        return;
    }
    _unwrittenLinks.emplace_back(first, link.other);
    if (_unwrittenLinks.size() == kGroup) {
        Write();
    }
}

void ImportedFolders::Write() {
    const auto folders = std::exchange(_unwritten, {});
    const auto links = std::exchange(_unwrittenLinks, {});
    _store.View([&] {
        for (const auto& [uid, name] : folders) {
            Run(_store, store::statements::NOTE_FOLDER, uid, name);
        }
        // Links of what is no folder change nothing.
        for (const auto& [uid, parent] : links) {
            Run(_store, store::statements::NOTE_FOLDER_ABOVE, uid, parent);
        }
    });
}

std::optional<ImportedFolders::Target> ImportedFolders::Find(const std::string& uid) const {
    sql::Statement find(_store.Connection(), store::statements::SAME_FOLDER);
    find.BindAll(uid);
    return find.Step() ? std::optional(Target{find.Int64(0), find.String(1)}) : std::nullopt;
}

void ImportedFolders::Read(sql::Statement& find, Folder& folder) {
    folder.number = find.Int64(0);
    folder.uid = find.String(1);
    folder.name = find.String(2);
    folder.parent = find.String(3);
    folder.progress = static_cast<Progress>(find.Int(4));
    folder.id = find.Int64(5);
    folder.isRefused = find.Int(6) != 0;
}

bool ImportedFolders::FindBehind(std::int64_t number, Folder& folder) {
    sql::Statement find(_store.Connection(), store::statements::FOLDER_BEHIND);
    find.BindAll(number);
    const bool found = find.Step();
    if (found) {
        Read(find, folder);
    }
    return found;
}

bool ImportedFolders::FindOfUid(const std::string& uid, Folder& folder) {
    sql::Statement find(_store.Connection(), store::statements::FOLDER_OF_UID);
    find.BindAll(uid);
    const bool found = find.Step();
    if (found) {
        Read(find, folder);
    }
    return found;
}

void ImportedFolders::Resolve(Session& session) {
    Write();
    Folder folder;
    while (FindBehind(folder.number, folder)) {
        Resolve(session, folder);
    }
}

// The folders above first. A circle of them is refused when its links are made.
void ImportedFolders::Resolve(Session& session, Folder folder) {
    std::vector<std::int64_t> way;
    while (folder.progress == Progress::Open) {
        Run(_store, store::statements::FOLDER_BEGUN, folder.number);
        way.push_back(folder.number);
        if (!FindOfUid(std::string(folder.parent), folder)) {
            break;
        }
    }
    for (auto at = way.rbegin(); at != way.rend(); ++at) {
        if (FindBehind(*at - 1, folder)) {
            ResolveIn(session, folder);
        }
    }
}

void ImportedFolders::ResolveIn(Session& session, Folder& folder) {
    exchange::KnownEntity known;
    const auto resolved = [&](store::EntityId id, bool isRefused, const std::string* same) {
        Run(_store,
            store::statements::FOLDER_RESOLVED,
            folder.number,
            id,
            isRefused,
            same == nullptr ? std::nullopt : std::optional<std::string_view>(*same));
    };
    if (exchange::FindKnown(_store, folder.uid, known)) {
        resolved(known.deleted ? 0 : known.id, known.deleted, nullptr);
        return;
    }
    store::EntityId above = 0;
    std::string place;
    Folder parent;
    if (FindOfUid(folder.parent, parent)) {
        above = parent.id;
        place = above == 0 && !parent.isRefused ? folder.parent : std::string();
    } else if (exchange::FindKnown(_store, folder.parent, known) && !known.deleted) {
        above = known.id;
    }
    store::EntityRow row;
    if (place.empty() && FindFolder(session, above, kxString(folder.name), false, row)) {
        const std::string same(row.uid);
        resolved(row.id, false, &same);
        return;
    }
    resolved(0, false, nullptr);
    NoteComing(folder, place.empty() ? "#" + std::to_string(above) : place);
}

void ImportedFolders::NoteComing(const Folder& folder, const std::string& place) {
    Run(_store, store::statements::NOTE_COMING, place, folder.name, folder.uid);
    if (_store.Connection().Changes() != 0) {
        return;
    }
    sql::Statement find(_store.Connection(), store::statements::COMING);
    find.BindAll(place, folder.name);
    Folder other;
    if (find.Step() && FindOfUid(find.String(0), other) && other.parent == folder.parent) {
        // They lie beside each other there, too.
        return;
    }
    throw UDMException("The folders " + other.uid + " and " + folder.uid +
                       " of the archive, both named \"" + catalogue::Printable(folder.name) +
                       "\", would come to lie in one place; rename one of them there");
}

}  // namespace kxudm::profile
