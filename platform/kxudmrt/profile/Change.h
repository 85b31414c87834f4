// What an operation has done, as it goes into the journal and to the slots.
//
// Layer: profile. A list keeps one structure change per parent and one content change per revision,
// however many there were: a bulk edit tells a parent of 10,000 new children once.
#pragma once

#include <kxudm/UDMProfileUpdate.h>

#include <set>
#include <tuple>
#include <vector>

#include "profile/EntityState.h"

namespace kxudm::profile {

struct Change {
    using State = boost::shared_ptr<EntityState>;

    // An entity or the structure below it changed: codes 3, 10, 35, 40, 42.
    static Change Of(SignalOption code, const State& subject) { return {code, subject}; }
    // A child left a parent: codes 12, 36, 41, 43.
    static Change OfChild(SignalOption code, const State& parent, const State& child) {
        return {code, parent, child};
    }
    // Code 44.
    static Change OfDeletion(store::DeletedRow row) {
        Change change{SIGNAL_ENTITY_DELETED};
        change.deleted = std::move(row);
        return change;
    }
    // Only the session's user in its workspace sees it.
    Change&& Private(bool isPrivate) && {
        onlyHere = isPrivate;
        return std::move(*this);
    }

    SignalOption code;
    State subject = {};
    State child = {};
    store::DeletedRow deleted = {};
    bool onlyHere = false;
};

class ChangeList {
  public:
    void Add(Change change);
    void Append(ChangeList&& later);
    [[nodiscard]] const std::vector<Change>& All() const { return _changes; }

  private:
    // Code, subject and whether it is private.
    using Key = std::tuple<int, const EntityState*, bool>;

    static bool Repeats(const Change& change);

    std::vector<Change> _changes;
    std::set<Key> _known;
};

}  // namespace kxudm::profile
