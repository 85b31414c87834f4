// Who is told what when a step in the life of a revision changes what others see.
//
// Layer: profile. Sessions of the step's own user and workspace have seen the working revision
// grow; all others come upon it as a whole when it is published.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "profile/Session.h"

namespace kxudm::profile {

// Folders and classifications that a content has come to or left in its working revision. Asked
// for before the step, which settles it.
[[nodiscard]] std::vector<store::MovedPlace> MovedPlaces(Session& session,
                                                         const EntityState& working);

// After a publish: places that others now find the content in, or not any more.
void RecordPublishedPlaces(Session& session,
                           Operation& operation,
                           const Session::State& published,
                           const std::vector<store::MovedPlace>& moved);
struct RevisionOf {
    store::EntityId id = 0;
    int revision = 0;
};
// A kind of link, and the code that tells a parent of it.
struct KindTold {
    store::LinkKind kind;
    SignalOption code;
};
using ParentVisit = std::function<void(SignalOption code, store::EntityRow&& parent)>;

// Parents and places of a revision as the viewer sees them, kind by kind.
void VisitParents(Session& session,
                  const RevisionOf& child,
                  std::span<const KindTold> kinds,
                  const store::Viewer& viewer,
                  const ParentVisit& visit);
// Others who have the entity or a parent of it in work, and may see what nobody else does.
[[nodiscard]] std::vector<store::Holder> HoldersElsewhere(Session& session, store::EntityId id);
// After a first publish: parents that others now find the content below, the published ones and,
// for whoever made them, branches of such that are still in work.
void RecordPublishedParents(Session& session,
                            Operation& operation,
                            const Session::State& published);
// An undo puts the content back: first out of the places that it had come to, then, after the undo
// itself is told, into those that it had left.
void RecordUndonePlaces(Session& session,
                        Operation& operation,
                        const Session::State& content,
                        const std::vector<store::MovedPlace>& moved,
                        bool entered);
// A branch shows up where its origin lay.
void RecordPlacesOfBranch(Session& session, Operation& operation, const Session::State& branch);

}  // namespace kxudm::profile
