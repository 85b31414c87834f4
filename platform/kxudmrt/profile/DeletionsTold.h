// What a session is told of deletions: each from its own point of view.
//
// Layer: profile. The links of what is deleted stay in the library, so that every session finds out
// by itself which revision it has seen and in which places, also of somebody's working revision
// that only its own workspace sees. Nothing of that has to stand in the journal.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// An entity that may be deleted, as the session sees it or saw it before. Null if it saw nothing of
// it, or if it was purged.
[[nodiscard]] Session::State SeenOfDeleted(Session& session, store::EntityId id);

// Queues the updates of what the session has noted as gone: first the places that stay, of all that
// is gone, folders and classifications before references before owners; then each entity. In this
// order a listener that drops what is deleted can still follow.
void QueueDeletions(Session& session, const std::vector<store::DeletedRow>& gone);

}  // namespace kxudm::profile
