// Finds the living states of a session by UID.
//
// Layer: profile. Doesn't own: a state takes itself out at its end. The states of one entity, one
// for each revision in use, form a chain.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <functional>
#include <string_view>
#include <unordered_set>

#include "profile/EntityState.h"

namespace kxudm::profile {

class StateCache {
  public:
    using State = boost::shared_ptr<EntityState>;

    // Null if there is none that lives.
    [[nodiscard]] State Newest(std::string_view baseUid) const;
    [[nodiscard]] State Revision(std::string_view baseUid, int revision) const;
    // First of the chain of the entity's states; null if there is none.
    [[nodiscard]] EntityState* Chain(std::string_view baseUid) const;

    // Whether it is the only one of its entity.
    bool Insert(EntityState& state);
    void Remove(EntityState& state) noexcept;
    // Makes `state` the only newest one of its entity.
    void MarkNewest(EntityState& state);

    template <typename Visit>
    void ForEach(Visit&& visit) const {
        for (EntityState* head : _heads) {
            for (EntityState* state = head; state != nullptr; state = state->next) {
                visit(*state);
            }
        }
    }
    [[nodiscard]] std::size_t Count() const;

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view base) const {
            return std::hash<std::string_view>()(base);
        }
        std::size_t operator()(const EntityState* state) const { return (*this)(state->BaseUid()); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(const EntityState* a, const EntityState* b) const {
            return a->BaseUid() == b->BaseUid();
        }
        bool operator()(std::string_view a, const EntityState* b) const {
            return a == b->BaseUid();
        }
        bool operator()(const EntityState* a, std::string_view b) const {
            return a->BaseUid() == b;
        }
    };

    std::unordered_set<EntityState*, Hash, Equal> _heads;
};

}  // namespace kxudm::profile
