#include "profile/ImportedFolders.h"

#include "exchange/LibraryExchange.h"
#include "profile/Folders.h"

namespace kxudm::profile {

void ImportedFolders::Note(const exchange::EntityRecord& folder) {
    if (_byUid.emplace(folder.uid, _folders.size()).second) {
        _folders.push_back({folder.uid, folder.name});
    }
}

void ImportedFolders::NoteLink(const std::string& first, const exchange::LinkRecord& link) {
    const auto found = _byUid.find(first);
    if (found != _byUid.end() && link.kind == store::LinkKind::Folder &&
        link.to == exchange::kOpen) {
        _folders[found->second].parent = link.other;
    }
}

const ImportedFolders::Target* ImportedFolders::Find(const std::string& uid) const {
    const auto found = _targets.find(uid);
    return found == _targets.end() ? nullptr : &found->second;
}

void ImportedFolders::Resolve(Session& session) {
    for (std::size_t i = 0; i < _folders.size(); ++i) {
        Resolve(session, i);
    }
}

// The folders above first. A circle of them is refused when its links are made.
void ImportedFolders::Resolve(Session& session, std::size_t index) {
    std::vector<std::size_t> way;
    for (std::size_t at = index; _folders[at].progress == Progress::Open;) {
        _folders[at].progress = Progress::UnderWay;
        way.push_back(at);
        const auto above = _byUid.find(_folders[at].parent);
        if (above == _byUid.end()) {
            break;
        }
        at = above->second;
    }
    for (auto at = way.rbegin(); at != way.rend(); ++at) {
        ResolveIn(session, _folders[*at]);
        _folders[*at].progress = Progress::Done;
    }
}

void ImportedFolders::ResolveIn(Session& session, Folder& folder) {
    exchange::KnownEntity known;
    if (exchange::FindKnown(session.Store(), folder.uid, known)) {
        folder.id = known.deleted ? 0 : known.id;
        folder.isRefused = known.deleted;
        return;
    }
    store::EntityId above = 0;
    std::string place;
    if (const auto found = _byUid.find(folder.parent); found != _byUid.end()) {
        const Folder& parent = _folders[found->second];
        above = parent.id;
        place = above == 0 && !parent.isRefused ? folder.parent : std::string();
    } else if (exchange::FindKnown(session.Store(), folder.parent, known) && !known.deleted) {
        above = known.id;
    }
    store::EntityRow row;
    if (place.empty() && FindFolder(session, above, kxString(folder.name), false, row)) {
        folder.id = row.id;
        _targets[folder.uid] = {row.id, row.uid};
        return;
    }
    const auto [other, added] = _coming.emplace(
        std::pair(place.empty() ? "#" + std::to_string(above) : place, folder.name), folder.uid);
    if (!added) {
        throw UDMException("The folders " + other->second + " and " + folder.uid +
                           " of the archive, both named \"" + catalogue::Printable(folder.name) +
                           "\", would come to lie in one place; rename one of them there");
    }
}

}  // namespace kxudm::profile
