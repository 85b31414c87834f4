#include "profile/RevisionsTold.h"

#include <algorithm>
#include <utility>

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

void RecordPublishedParents(Session& session,
                            Operation& operation,
                            const Session::State& published) {
    std::vector<store::LinkedRow> parents;
    for (const auto& [kind, code] : {std::pair(LinkKind::Owner, SIGNAL_CHILD_ADDED),
                                     std::pair(LinkKind::Reference, SIGNAL_REFERENCE_ADDED),
                                     std::pair(LinkKind::Relation, SIGNAL_REFERENCE_ADDED)}) {
        parents.clear();
        session.Store().Parents(
            published->Id(), published->Revision(), kind, {}, store::THE_PUBLIC, parents);
        for (store::LinkedRow& parent : parents) {
            operation.Record(Change::Of(code, session.StateOf(std::move(parent.entity), false))
                                 .For(Audience::Elsewhere));
        }
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
