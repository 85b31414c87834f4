// How an entity of an archive becomes one of the library: new, equal, behind what is there, or a
// branch of it. docs/exchange-format.md numbers the cases.
//
// Layer: profile. Works within the import's operation; nothing that is there is changed, but for
// revisions, and files that were missing, which come behind it.
#pragma once

#include "exchange/LibraryExchange.h"
#include "profile/ImportNotes.h"
#include "profile/ImportedFolders.h"
#include "profile/LinkImport.h"

namespace kxudm::profile {

// Throws UDMException, naming the entity, if it doesn't fit its definition in this catalogue.
void RequireFitting(const catalogue::Catalogue& catalogue, const exchange::EntityRecord& entity);

// The UID of the branch that a line becomes which has another revision than the library: made of
// that revision, so that the same line is the same branch in every library, however often it comes.
[[nodiscard]] std::string BranchUid(const std::string& origin,
                                    const exchange::RevisionRecord& first);

class EntityImport {
  public:
    EntityImport(store::LibraryStore& store,
                 const catalogue::Catalogue& catalogue,
                 const ImportedFolders& folders,
                 LinkImport& links,
                 ImportNotes& notes)
        : _store(store), _catalogue(catalogue), _folders(folders), _links(links), _notes(notes) {}

    void Take(exchange::EntityRecord&& entity);

  private:
    using EntityRecord = exchange::EntityRecord;
    struct Result {
        exchange::Arrival arrival;
        UDMImportedEntity told;
    };

    Result Place(const EntityRecord& entity, int depth);
    Result Insert(const EntityRecord& entity);
    Result Meet(const EntityRecord& entity, const exchange::KnownEntity& known, int depth);
    Result MeetUnversioned(const EntityRecord& entity, const exchange::KnownEntity& known);
    Result MakeBranch(const EntityRecord& entity,
                      const exchange::KnownEntity& known,
                      const EntityRecord& ours,
                      const exchange::RevisionRecord& differing,
                      int depth);
    Result Append(const EntityRecord& entity, const exchange::KnownEntity& known);
    Result Refuse(const exchange::KnownEntity& known, const std::string& why);
    void AddMissingFiles(const EntityRecord& entity, const exchange::KnownEntity& known);
    [[nodiscard]] store::AttributeList Shown(const EntityRecord& entity) const;

    store::LibraryStore& _store;
    const catalogue::Catalogue& _catalogue;
    const ImportedFolders& _folders;
    LinkImport& _links;
    ImportNotes& _notes;
};

}  // namespace kxudm::profile
