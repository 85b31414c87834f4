#include "profile/StateCache.h"

#include <utility>

namespace kxudm::profile {

EntityState* StateCache::Chain(std::string_view baseUid) const {
    const auto head = _heads.find(baseUid);
    return head == _heads.end() ? nullptr : *head;
}

StateCache::State StateCache::Newest(std::string_view baseUid) const {
    for (EntityState* state = Chain(baseUid); state != nullptr; state = state->next) {
        if (state->IsNewest()) {
            return state->weak_from_this().lock();
        }
    }
    return {};
}

StateCache::State StateCache::Revision(std::string_view baseUid, int revision) const {
    for (EntityState* state = Chain(baseUid); state != nullptr; state = state->next) {
        if (state->Revision() == revision) {
            return state->weak_from_this().lock();
        }
    }
    return {};
}

bool StateCache::Insert(EntityState& state) {
    const auto [head, added] = _heads.insert(&state);
    if (!added) {
        state.next = (*head)->next;
        (*head)->next = &state;
    }
    return added;
}

void StateCache::Remove(EntityState& state) noexcept {
    const auto found = _heads.find(state.BaseUid());
    if (found == _heads.end()) {
        return;
    }
    EntityState* head = *found;
    if (head != &state) {
        while (head != nullptr && head->next != &state) {
            head = head->next;
        }
        if (head != nullptr) {
            head->next = state.next;
        }
        return;
    }
    if (state.next == nullptr) {
        _heads.erase(found);
        return;
    }
    // The key lies in the head itself: the node goes over to the next one, of equal key.
    auto node = _heads.extract(found);
    node.value() = state.next;
    _heads.insert(std::move(node));
}

void StateCache::MarkNewest(EntityState& state) {
    for (EntityState* other = Chain(state.BaseUid()); other != nullptr; other = other->next) {
        other->SetNewest(other == &state);
    }
}

std::size_t StateCache::Count() const {
    std::size_t count = 0;
    ForEach([&](const EntityState&) { ++count; });
    return count;
}

}  // namespace kxudm::profile
