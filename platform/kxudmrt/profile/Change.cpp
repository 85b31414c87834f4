#include "profile/Change.h"

#include <utility>

namespace kxudm::profile {

// Whether telling it twice says nothing new.
bool ChangeList::Repeats(const Change& change) {
    return change.child == nullptr && change.subject != nullptr;
}

void ChangeList::Add(Change change) {
    if (Repeats(change) &&
        !_known.insert(Key(change.code, change.subject.get(), change.revision, change.audience))
             .second) {
        return;
    }
    _changes.push_back(std::move(change));
}

void ChangeList::Append(ChangeList&& later) {
    for (Change& change : later._changes) {
        Add(std::move(change));
    }
    later = {};
}

}  // namespace kxudm::profile
