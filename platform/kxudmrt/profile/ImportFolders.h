// The library's folders of a bulk import: found where they are there, made where a file needs them.
//
// Layer: profile.
#pragma once

#include <map>
#include <vector>

#include "profile/Session.h"

namespace kxudm::profile {

class ImportFolders {
  public:
    struct Place {
        kxString name;
        Place* parent = nullptr;  // null for the top itself
        Session::State folder;    // null for the top, and while it is not known to be there
        bool sought = false;

        [[nodiscard]] bool IsTop() const { return parent == nullptr; }
        // In links; 0 for the top.
        [[nodiscard]] store::EntityId Id() const { return folder ? folder->Id() : 0; }
    };

    explicit ImportFolders(Session& session) : _session(session) {}

    // The place of a path "/A/B"; "" is the top. Stays where it is as long as this object lives.
    Place& At(const kxString& path);
    // Whether there is anything in it that was there before. Looks into the library once.
    bool IsThere(Place& place);
    // What the folder is of, or will be.
    [[nodiscard]] const catalogue::ContentDefinition& DefinitionOf(Place& place);
    // Makes the folder if it is missing, with those above it; null for the top. Throws
    // UDMNotFoundException if it was deleted since it was found.
    Session::State Make(Operation& operation, Place& place);

    // What was made since the last call of either was committed, or was rolled back.
    void Keep() { _made.clear(); }
    void Forget();

  private:
    Session& _session;
    std::map<kxString, Place> _places;
    std::vector<Place*> _made;
};

}  // namespace kxudm::profile
