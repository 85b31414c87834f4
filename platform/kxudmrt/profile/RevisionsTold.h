// Who is told what when a step in the life of a revision changes what others see.
//
// Layer: profile. Sessions of the step's own user and workspace have seen the working revision
// grow; all others come upon it as a whole when it is published.
#pragma once

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
// After a first publish: published parents that others now find the content below.
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
