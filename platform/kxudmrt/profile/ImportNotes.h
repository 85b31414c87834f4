// What an import has done: for its report, and for the slots once it is committed.
//
// Layer: profile. Grows with what came behind known revisions and with the report, if one is
// wanted; entities that are merely new cost nothing.
#pragma once

#include <kxudm/UDMExchange.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "exchange/LibraryExchange.h"
#include "profile/Session.h"

namespace kxudm::profile {

class ImportNotes {
  public:
    // Entities with ids up to `youngest` were there before. `report` may be null.
    ImportNotes(store::EntityId youngest, UDMImportReport* report)
        : _youngest(youngest), _report(report) {}

    struct Appended {
        store::EntityId id = 0;
        kxString uid = {};
        int first = 0;  // revision that came
        int newest = 0;
    };

    void Entity(UDMImportedEntity&& entity);
    void LeftOut(const std::string& uid, const std::string& text);
    void Revisions(Appended&& appended) { _appended.push_back(std::move(appended)); }
    // A folder or classification that something came into; a parent of a child, reference or
    // relation that was missing before.
    void Entered(store::EntityId place) { Note(SIGNAL_CONTAINER_ENTERED, place); }
    void GotLink(store::EntityId parent, store::LinkKind kind);

    // Whether each entity came with all that the archive says of it.
    [[nodiscard]] bool AreAllNew() const { return _areAllNew; }
    [[nodiscard]] const std::vector<Appended>& AllAppended() const { return _appended; }
    // Journal and slots. Links of what was appended must be finished.
    void Record(Session& session, Operation& operation);
    // After a failure: nothing of this has been.
    void Forget(Session& session) const;

  private:
    void Note(SignalOption code, store::EntityId id);
    void RecordAppended(Session& session, Operation& operation, const Appended& appended);
    // To those who have it in work.
    static void RecordPrivate(Session& session,
                              Operation& operation,
                              SignalOption code,
                              store::EntityId id);

    const store::EntityId _youngest;
    UDMImportReport* const _report;
    bool _areAllNew = true;
    std::vector<Appended> _appended;
    std::set<std::pair<SignalOption, store::EntityId>> _structure;
};

}  // namespace kxudm::profile
