#include "profile/StateCache.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

namespace kxudm::profile {

namespace {

constexpr std::size_t FEWEST_BUCKETS = 256;
// A table with so many buckets for each state is made smaller: a search in it would find nothing in
// the processor's caches.
constexpr std::size_t SPARSE = 8;

StateCache::State Shared(EntityState* state) {
    return state == nullptr ? StateCache::State() : state->weak_from_this().lock();
}

}  // namespace

StateCache::State StateCache::Newest(std::string_view baseUid) const {
    return Shared(Find(baseUid, [](const EntityState& state) { return state.IsNewest(); }));
}

StateCache::State StateCache::Revision(std::string_view baseUid, int revision) const {
    return Shared(
        Find(baseUid, [&](const EntityState& state) { return state.Revision() == revision; }));
}

bool StateCache::Insert(EntityState& state) {
    if (_count == _buckets.size()) {
        Resize(std::max(FEWEST_BUCKETS, 2 * _count));
    }
    const bool alone = Find(state.BaseUid(), [](const EntityState&) { return true; }) == nullptr;
    state.hash = Hash(state.BaseUid());
    state.next = std::exchange(_buckets[BucketOf(state.hash)], &state);
    ++_count;
    return alone;
}

void StateCache::Remove(EntityState& state) noexcept {
    if (_buckets.empty()) {
        return;
    }
    for (EntityState** at = &_buckets[BucketOf(state.hash)]; *at != nullptr; at = &(*at)->next) {
        if (*at == &state) {
            *at = state.next;
            --_count;
            break;
        }
    }
    if (_buckets.size() > FEWEST_BUCKETS && _count * SPARSE < _buckets.size()) {
        try {
            Resize(std::max(FEWEST_BUCKETS, std::bit_ceil(2 * _count)));
        } catch (const std::bad_alloc&) {
            // Then it stays as large as it is.
        }
    }
}

void StateCache::MarkNewest(EntityState& state) {
    ForRevisions(state.BaseUid(), [&](EntityState& other) { other.SetNewest(&other == &state); });
}

void StateCache::Resize(std::size_t buckets) {
    const std::vector<EntityState*> former =
        std::exchange(_buckets, std::vector<EntityState*>(buckets));
    for (EntityState* first : former) {
        while (first != nullptr) {
            EntityState* state = std::exchange(first, first->next);
            state->next = std::exchange(_buckets[BucketOf(state->hash)], state);
        }
    }
}

}  // namespace kxudm::profile
