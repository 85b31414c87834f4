#include "profile/DeletionsTold.h"

#include <array>
#include <set>
#include <tuple>
#include <utility>

namespace kxudm::profile {

namespace {

using store::LinkKind;

constexpr std::array<std::pair<LinkKind, SignalOption>, 5> PLACES{
    {{LinkKind::Folder, SIGNAL_CONTAINER_LEFT},
     {LinkKind::Category, SIGNAL_CONTAINER_LEFT},
     {LinkKind::Reference, SIGNAL_REFERENCE_REMOVED},
     {LinkKind::Relation, SIGNAL_REFERENCE_REMOVED},
     {LinkKind::Owner, SIGNAL_OWNED_CHILD_DELETED}}};

// An entity that is gone, as the session saw it.
struct Gone {
    const store::DeletedRow& row;
    Session::State seen;  // null: it saw nothing of it
};

// Tells each place once of each entity, by whatever number of links it lay there.
class Places {
  public:
    explicit Places(Session& session) : _session(session) {}

    void Queue(const Gone& gone, LinkKind kind, SignalOption code) {
        // Relations to an exact revision go with it, whichever it is.
        const int revision =
            kind == LinkKind::Relation ? store::NO_REVISION : gone.seen->Revision();
        std::vector<store::LinkedRow> places;
        _session.Store().Parents(gone.row.id, revision, kind, {}, _session.Viewer(), places);
        for (store::LinkedRow& place : places) {
            if (_told.emplace(code, place.entity.id, gone.row.id).second) {
                const Session::State holder = _session.StateOf(std::move(place.entity), false);
                _session.Slots().Queue(UDMProfileUpdate::OfChild(
                    code, UDMItemHandle(holder), UDMItemHandle(gone.seen)));
            }
        }
    }

  private:
    Session& _session;
    std::set<std::tuple<SignalOption, store::EntityId, store::EntityId>> _told;
};

// One record for each revision that the session has seen, oldest first, the newest one in any case.
void QueueEntity(Session& session, const Gone& gone) {
    std::set<int> revisions;
    session.States().ForRevisions(
        gone.row.uid, [&](const EntityState& state) { revisions.insert(state.Revision()); });
    if (gone.seen != nullptr) {
        revisions.insert(gone.seen->Revision());
    }
    for (const int revision : revisions) {
        session.Slots().Queue(
            UDMProfileUpdate::OfDeletion(UDMUID(RevisionedUid(gone.row.uid, revision))));
    }
}

}  // namespace

Session::State SeenOfDeleted(Session& session, store::EntityId id) {
    store::EntityRow row;
    if (!session.Store().FindEvenDeleted(id, session.Viewer(), row)) {
        return {};
    }
    if (Session::State known = session.States().Revision(row.uid, row.revision)) {
        return known;
    }
    const bool readable = session.Catalogue()->Find(row.definition) != nullptr;
    auto state =
        readable ? boost::make_shared<EntityState>(session.Link(), std::move(row), false)
                 : boost::make_shared<EntityState>(session.Link(), kxString(row.uid), row.revision);
    state->SetGone();
    return state;
}

void QueueDeletions(Session& session, const std::vector<store::DeletedRow>& gone) {
    if (session.Slots().Empty()) {
        return;
    }
    std::vector<Gone> all;
    all.reserve(gone.size());
    for (const store::DeletedRow& row : gone) {
        all.push_back(Gone{row, SeenOfDeleted(session, row.id)});
    }
    Places places(session);
    for (const auto& [kind, code] : PLACES) {
        for (const Gone& each : all) {
            if (each.seen != nullptr) {
                places.Queue(each, kind, code);
            }
        }
    }
    for (const Gone& each : all) {
        QueueEntity(session, each);
    }
}

}  // namespace kxudm::profile
