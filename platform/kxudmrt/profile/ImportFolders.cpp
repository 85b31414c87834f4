#include "profile/ImportFolders.h"

#include "profile/Creation.h"
#include "profile/Folders.h"
#include "profile/Groups.h"

namespace kxudm::profile {

ImportFolders::Place& ImportFolders::At(const kxString& path) {
    const auto [at, isNew] = _places.try_emplace(path);
    Place& place = at->second;
    if (isNew && !path.empty()) {
        const std::size_t slash = path.rfind('/');
        place.name = path.substr(slash + 1);
        place.parent = &At(kxString(path.substr(0, slash)));
    }
    return place;
}

bool ImportFolders::IsThere(Place& place) {
    if (place.IsTop()) {
        return true;
    }
    if (!place.sought) {
        store::EntityRow row;
        if (IsThere(*place.parent) &&
            FindFolder(_session, place.parent->Id(), place.name, false, row)) {
            place.folder = _session.StateOf(std::move(row), false);
        }
        place.sought = true;
    }
    return place.folder != nullptr;
}

const catalogue::ContentDefinition& ImportFolders::DefinitionOf(Place& place) {
    return IsThere(place) ? *place.folder->Definition() : FolderDefinition(_session);
}

Session::State ImportFolders::Make(Operation& operation, Place& place) {
    if (place.IsTop()) {
        return {};
    }
    if (place.folder) {
        place.folder->Current();
        return place.folder;
    }
    const Session::State parent = Make(operation, *place.parent);
    store::EntityRow row;
    // Somebody else may have made it meanwhile.
    if (FindFolder(_session, place.parent->Id(), place.name, false, row)) {
        place.folder = _session.StateOf(std::move(row), false);
        return place.folder;
    }
    const catalogue::ContentDefinition& definition = FolderDefinition(_session);
    place.folder =
        CreateState(_session, operation, definition, CheckedName(definition, place.name));
    _made.push_back(&place);
    if (parent) {
        PutIntoFolder(_session, operation, place.folder, parent);
    }
    return place.folder;
}

void ImportFolders::Forget() {
    for (Place* place : _made) {
        place->folder.reset();
    }
    _made.clear();
}

}  // namespace kxudm::profile
