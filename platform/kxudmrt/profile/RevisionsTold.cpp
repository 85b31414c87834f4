#include "profile/RevisionsTold.h"

#include <algorithm>
#include <utility>

#include "store/LibraryCheck.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;
using store::MovedPlace;

// Whether the place was both left and come to: all in all nothing happened there.
bool IsAnnulled(const MovedPlace& place, const std::vector<MovedPlace>& moved) {
    return std::any_of(moved.begin(), moved.end(), [&](const MovedPlace& other) {
        return other.kind == place.kind && other.place == place.place &&
               other.entered != place.entered;
    });
}

// The change at one place, if it is there for the viewer.
void RecordPlace(Session& session,
                 Operation& operation,
                 const Session::State& content,
                 const MovedPlace& moved,
                 bool entered,
                 const store::Viewer& viewer,
                 Audience audience) {
    store::EntityRow row;
    if (!session.Store().FindById(moved.place, viewer, row)) {
        return;
    }
    const Session::State place = session.StateOf(std::move(row));
    operation.Record((entered ? Change::Of(SIGNAL_CONTAINER_ENTERED, place)
                              : Change::OfChild(SIGNAL_CONTAINER_LEFT, place, content))
                         .For(audience));
}

constexpr KindTold PARENTS[] = {{LinkKind::Owner, SIGNAL_CHILD_ADDED},
                                {LinkKind::Reference, SIGNAL_REFERENCE_ADDED},
                                {LinkKind::Relation, SIGNAL_REFERENCE_ADDED}};

}  // namespace

std::vector<MovedPlace> MovedPlaces(Session& session, const EntityState& working) {
    std::vector<MovedPlace> moved;
    session.Store().MovedPlaces(working.Id(), working.Revision(), moved);
    std::vector<MovedPlace> real;
    std::copy_if(
        moved.begin(), moved.end(), std::back_inserter(real), [&](const MovedPlace& place) {
            return !IsAnnulled(place, moved);
        });
    return real;
}

void RecordPublishedPlaces(Session& session,
                           Operation& operation,
                           const Session::State& published,
                           const std::vector<MovedPlace>& moved) {
    for (const bool entered : {false, true}) {
        for (const MovedPlace& place : moved) {
            if (place.entered == entered) {
                RecordPlace(session,
                            operation,
                            published,
                            place,
                            entered,
                            store::THE_PUBLIC,
                            Audience::Elsewhere);
            }
        }
    }
}

std::vector<store::Holder> HoldersElsewhere(Session& session, store::EntityId id) {
    std::vector<store::Holder> holders = store::HoldersNear(session.Store(), id);
    const store::Viewer own = session.Viewer();
    holders.erase(std::remove_if(holders.begin(),
                                 holders.end(),
                                 [&](const store::Holder& holder) {
                                     return holder.user == own.user &&
                                            holder.workspace == own.workspace;
                                 }),
                  holders.end());
    return holders;
}

void VisitParents(Session& session,
                  const RevisionOf& child,
                  std::span<const KindTold> kinds,
                  const store::Viewer& viewer,
                  const ParentVisit& visit) {
    std::vector<store::LinkedRow> parents;
    for (const auto& [kind, code] : kinds) {
        parents.clear();
        session.Store().Parents(child.id, child.revision, kind, {}, viewer, parents);
        for (store::LinkedRow& parent : parents) {
            visit(code, std::move(parent.entity));
        }
    }
}

void RecordPublishedParents(Session& session,
                            Operation& operation,
                            const Session::State& published) {
    const RevisionOf child{published->Id(), published->Revision()};
    VisitParents(
        session, child, PARENTS, store::THE_PUBLIC, [&](SignalOption code, store::EntityRow&& row) {
            operation.Record(
                Change::Of(code, session.StateOf(std::move(row), false)).For(Audience::Elsewhere));
        });
    for (const store::Holder& holder : HoldersElsewhere(session, published->Id())) {
        const auto tell = [&](SignalOption code, store::EntityRow&& row) {
            if (row.published == store::NO_REVISION) {
                const Session::State branch = session.StateElsewhere(std::move(row));
                operation.Record(Change::Of(code, branch).Only(holder));
            }
        };
        VisitParents(session, child, PARENTS, holder.AsViewer(), tell);
    }
}

void RecordUndonePlaces(Session& session,
                        Operation& operation,
                        const Session::State& content,
                        const std::vector<MovedPlace>& moved,
                        bool entered) {
    for (const MovedPlace& place : moved) {
        if (place.entered != entered) {
            RecordPlace(
                session, operation, content, place, entered, session.Viewer(), Audience::Here);
        }
    }
}

void RecordPlacesOfBranch(Session& session, Operation& operation, const Session::State& branch) {
    std::vector<store::LinkedRow> places;
    for (const LinkKind kind : {LinkKind::Folder, LinkKind::Category}) {
        session.Store().Parents(
            branch->Id(), branch->Revision(), kind, {}, session.Viewer(), places);
    }
    for (store::LinkedRow& place : places) {
        operation.Record(
            Change::Of(SIGNAL_CONTAINER_ENTERED, session.StateOf(std::move(place.entity), false))
                .For(Audience::Here));
    }
}

}  // namespace kxudm::profile
