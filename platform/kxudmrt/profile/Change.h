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

// Seen from the session that makes a change.
enum class Audience : unsigned char {
    Everybody,
    Here,      // its user in its workspace
    Elsewhere  // everybody else
};

struct Change {
    using State = boost::shared_ptr<EntityState>;

    // An entity or the structure below it changed: codes 3, 5, 10, 35, 40, 42. Code 39 with the
    // revision that stands again; the one behind it is gone.
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
        audience = isPrivate ? Audience::Here : Audience::Everybody;
        return std::move(*this);
    }
    Change&& For(Audience told) && {
        audience = told;
        return std::move(*this);
    }
    // It is about another revision of the subject: for those elsewhere.
    Change&& At(int number) && {
        revision = number;
        return std::move(*this);
    }
    [[nodiscard]] int Revision() const {
        return revision == store::NO_REVISION ? subject->Revision() : revision;
    }

    SignalOption code;
    State subject = {};
    State child = {};
    store::DeletedRow deleted = {};
    Audience audience = Audience::Everybody;
    int revision = store::NO_REVISION;  // the subject's own
};

class ChangeList {
  public:
    void Add(Change change);
    void Append(ChangeList&& later);
    [[nodiscard]] const std::vector<Change>& All() const { return _changes; }

  private:
    using Key = std::tuple<int, const EntityState*, int, Audience>;

    static bool Repeats(const Change& change);

    std::vector<Change> _changes;
    std::set<Key> _known;
};

}  // namespace kxudm::profile
