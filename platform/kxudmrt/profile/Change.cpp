#include "profile/Change.h"

#include <iterator>
#include <utility>

namespace kxudm::profile {

namespace {

// What is told of a parent when a child comes, for what is told when one goes; else 0.
int OppositeOf(SignalOption code) {
    switch (code) {
        case SIGNAL_CHILD_REMOVED:
            return SIGNAL_CHILD_ADDED;
        case SIGNAL_REFERENCE_REMOVED:
            return SIGNAL_REFERENCE_ADDED;
        case SIGNAL_CONTAINER_LEFT:
            return SIGNAL_CONTAINER_ENTERED;
        default:
            return 0;
    }
}

// A step from one revision to another, or of the lock.
bool IsOfLife(SignalOption code) {
    return code == SIGNAL_STATE_CHANGED || code == SIGNAL_REVISION_ADVANCED ||
           code == SIGNAL_REVISION_UNDONE;
}

// Instead of a code: any step of an entity's life.
constexpr int LIFE = 0;

std::string NameOf(const std::optional<store::Holder>& holder) {
    return holder ? holder->user + '\0' + holder->workspace : std::string();
}

bool Reaches(Audience told, Audience side) {
    return told == Audience::Everybody || told == side;
}

}  // namespace

bool IsOfStructure(SignalOption code) {
    return code == SIGNAL_CHILD_ADDED || code == SIGNAL_REFERENCE_ADDED ||
           code == SIGNAL_CONTAINER_ENTERED;
}

// Whether telling it twice says nothing new.
bool ChangeList::Repeats(const Change& change) {
    return change.child == nullptr && change.subject != nullptr;
}

// What was told between and turned it round makes it worth telling again.
bool ChangeList::IsOvertaken(const Change& change, std::size_t when) const {
    const int kind = IsOfLife(change.code) ? LIFE : change.code;
    if (IsOfStructure(change.code) && _lastDeletion > when) {
        return true;
    }
    for (const Audience side : {Audience::Here, Audience::Elsewhere}) {
        const auto turn = _turns.find({kind, change.subject->Id(), side});
        if (Reaches(change.audience, side) && turn != _turns.end() && turn->second > when) {
            return true;
        }
    }
    return false;
}

void ChangeList::NoteTurn(int kind, const Change& change) {
    for (const Audience side : {Audience::Here, Audience::Elsewhere}) {
        if (Reaches(change.audience, side)) {
            _turns[{kind, change.subject->Id(), side}] = _count;
        }
    }
}

void ChangeList::Add(Change change) {
    ++_count;
    if (Repeats(change)) {
        AddOnce(std::move(change));
        return;
    }
    if (change.code == SIGNAL_ENTITY_DELETED) {
        // Its parents are found out when it is told.
        _lastDeletion = _count;
    } else if (const int opposite = OppositeOf(change.code)) {
        NoteTurn(opposite, change);
    }
    _changes.push_back(std::move(change));
}

void ChangeList::AddOnce(Change change) {
    const Key key(
        change.code, change.subject->Id(), change.Revision(), change.audience, NameOf(change.only));
    const auto known = _known.find(key);
    if (known != _known.end() && !IsOvertaken(change, known->second.when)) {
        return;
    }
    if (known != _known.end() && IsOfStructure(change.code)) {
        _changes.erase(known->second.place);
    }
    if (IsOfLife(change.code)) {
        NoteTurn(LIFE, change);
    }
    _changes.push_back(std::move(change));
    _known[key] = {std::prev(_changes.end()), _count};
}

void ChangeList::Append(ChangeList&& later) {
    for (Change& change : later._changes) {
        Add(std::move(change));
    }
    later = {};
}

}  // namespace kxudm::profile
