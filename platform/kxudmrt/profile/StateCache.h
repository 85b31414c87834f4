// Finds the living states of a session by UID.
//
// Layer: profile. Doesn't own: a state takes itself out at its end. A hash table by base UID whose
// chains go through the states themselves: a state costs no block of memory of its own there, and
// the table grows and shrinks with what lives. There is one state for each revision in use.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <functional>
#include <string_view>
#include <vector>

#include "profile/EntityState.h"

namespace kxudm::profile {

class StateCache {
  public:
    using State = boost::shared_ptr<EntityState>;

    // Null if there is none that lives.
    [[nodiscard]] State Newest(std::string_view baseUid) const;
    [[nodiscard]] State Revision(std::string_view baseUid, int revision) const;

    // Whether it is the only one of its entity.
    bool Insert(EntityState& state);
    // One that was never inserted is left alone.
    void Remove(EntityState& state) noexcept;
    // Makes `state` the only newest one of its entity.
    void MarkNewest(EntityState& state);

    // Both visit in no particular order. No state may begin or end meanwhile.
    template <typename Visit>
    void ForEach(Visit&& visit) const {
        for (EntityState* first : _buckets) {
            for (EntityState* state = first; state != nullptr; state = state->next) {
                visit(*state);
            }
        }
    }
    // The states of one entity.
    template <typename Visit>
    void ForRevisions(std::string_view baseUid, Visit&& visit) const {
        static_cast<void>(Find(baseUid, [&](EntityState& state) {
            visit(state);
            return false;
        }));
    }
    [[nodiscard]] std::size_t Count() const { return _count; }

  private:
    static std::uint32_t Hash(std::string_view baseUid) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>()(baseUid));
    }
    [[nodiscard]] std::size_t BucketOf(std::uint32_t hash) const {
        return hash & (_buckets.size() - 1);
    }
    // The first state of the entity that passes.
    template <typename Test>
    [[nodiscard]] EntityState* Find(std::string_view baseUid, Test&& test) const {
        if (_count == 0) {
            return nullptr;
        }
        const std::uint32_t hash = Hash(baseUid);
        EntityState* state = _buckets[BucketOf(hash)];
        while (state != nullptr &&
               !(state->hash == hash && state->BaseUid() == baseUid && test(*state))) {
            state = state->next;
        }
        return state;
    }
    void Resize(std::size_t buckets);

    std::vector<EntityState*> _buckets;  // a power of two, or none
    std::size_t _count = 0;
};

}  // namespace kxudm::profile
