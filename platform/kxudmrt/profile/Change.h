// What an operation has done, as it goes into the journal and to the slots.
//
// Layer: profile. A list keeps one structure change per parent and one content change per revision,
// however many there were: a bulk edit tells a parent of 10,000 new children once. Whoever follows
// the changes in their order ends at what is there: where children left a parent after others came,
// and more came then, the parent's coming ones are told behind; a step of an entity's life that was
// taken again after another one is told again.
#pragma once

#include <kxudm/UDMProfileUpdate.h>

#include <cstddef>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "profile/EntityState.h"

namespace kxudm::profile {

// Seen from the session that makes a change.
enum class Audience : unsigned char {
    Everybody,
    Here,      // its user in its workspace
    Elsewhere  // everybody else
};

// Whether what comes to a parent makes such a change.
[[nodiscard]] bool IsOfStructure(SignalOption code);

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
    // Only this other user in this workspace sees it.
    Change&& Only(const store::Holder& holder) && {
        audience = Audience::Elsewhere;
        only = holder;
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
    int revision = store::NO_REVISION;       // the subject's own
    std::optional<store::Holder> only = {};  // of those elsewhere
};

class ChangeList {
  public:
    void Add(Change change);
    void Append(ChangeList&& later);
    [[nodiscard]] const std::list<Change>& All() const { return _changes; }

  private:
    using Key = std::tuple<int, store::EntityId, int, Audience, std::string>;

    struct Known {
        std::list<Change>::iterator place;
        std::size_t when;
    };
    using Turn = std::tuple<int, store::EntityId, Audience>;

    static bool Repeats(const Change& change);
    bool IsOvertaken(const Change& change, std::size_t when) const;
    void NoteTurn(int kind, const Change& change);
    void AddOnce(Change change);

    std::list<Change> _changes;
    std::map<Key, Known> _known;
    std::map<Turn, std::size_t> _turns;
    std::size_t _lastDeletion = 0;
    std::size_t _count = 0;
};

}  // namespace kxudm::profile
