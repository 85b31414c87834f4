// How the links of an archive become links of the library, once all its entities are there; and how
// those that waited for one of these come to lead there.
//
// Layer: profile. Works within the import's operation. What the library can't hold (a circle, a
// second folder, a second owner) is left out and noted; a link whose other end has not come is kept
// where nobody sees it, until the import that brings it.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "exchange/LibraryExchange.h"
#include "profile/ImportNotes.h"

namespace kxudm::profile {

class LinkImport {
  public:
    LinkImport(store::LibraryStore& store,
               const catalogue::Catalogue& catalogue,
               ImportNotes& notes)
        : _store(store), _catalogue(catalogue), _notes(notes) {}

    // An entity has come, or what stands for it here: links lead to `id` that led to `awaited`,
    // which held its place (0: nothing did).
    void Arrive(store::EntityId awaited, const std::string& uid, store::EntityId id);
    // All links of an entity come one behind the other.
    void Take(const std::string& first, const exchange::LinkRecord& link);
    // After the last one: what was appended has the links that the archive says, and no others.
    void Finish();

  private:
    void Begin(const std::string& first);
    // The group's word on the link; throws where they contradict each other.
    void RequireFitting(const exchange::LinkRecord& link);
    // Of the entity whose links come; one that has links to be taken is here.
    const catalogue::ContentDefinition& Definition();
    // An entity at the other end: what became of that of the document, or, where the document has
    // none, the one of the library.
    struct Other {
        std::string uid = {};
        bool hasArrived = false;
        exchange::Arrival arrival = {};
        store::EntityId known = 0;
        bool isDeleted = false;
        store::EntityId awaited = 0;  // what stands for it, once a link leads there
    };
    Other& FindOther(const std::string& uid);
    // False if there can be no other end here.
    bool FindOther(const exchange::LinkRecord& link, exchange::ImportedLink& made);
    // False if the link is of revisions that the library has from elsewhere.
    bool ToLocal(const exchange::LinkRecord& link, exchange::ImportedLink& made) const;
    // Why the library can't hold it; empty if it can.
    std::string Obstacle(const exchange::ImportedLink& made);
    bool ClosesCircle(const exchange::ImportedLink& made);
    std::string Rival(const exchange::ImportedLink& made);
    void Insert(const exchange::LinkRecord& link, const exchange::ImportedLink& made);
    std::int64_t NextPosition(const exchange::ImportedLink& made);
    void Note(const exchange::ImportedLink& made, exchange::ArrivalMode mode);
    void InsertPutOff();

    // One that closes a circle as long as others have not ended.
    struct PutOff {
        std::string first;
        exchange::LinkRecord link;
        exchange::ImportedLink made;
        exchange::ArrivalMode mode;
        std::int64_t position;
    };

    store::LibraryStore& _store;
    const catalogue::Catalogue& _catalogue;
    ImportNotes& _notes;

    std::string _first;  // whose links come
    exchange::Arrival _arrival;
    const catalogue::ContentDefinition* _definition = nullptr;  // once it was asked for
    Other _other;                                               // the last one
    std::map<std::pair<store::LinkKind, std::string>, std::int64_t> _positions;
    std::vector<store::EntityId> _owned;  // that an owner got, or kept
    std::vector<PutOff> _putOff;
};

}  // namespace kxudm::profile
