#include "profile/SlotList.h"

#include <algorithm>
#include <utility>

namespace kxudm::profile {

namespace {

void Keep(std::exception_ptr& failure) {
    if (!failure) {
        failure = std::current_exception();
    }
}

}  // namespace

std::vector<SlotList::Entry>::iterator SlotList::Find(const Slot& slot) {
    return std::find_if(
        _entries.begin(), _entries.end(), [&](const Entry& entry) { return entry.slot == slot; });
}

void SlotList::Connect(const Slot& slot, const kxString& sessionId) {
    if (!slot) {
        throw UDMException("A null slot can't be connected to session " + sessionId +
                           "; it must point to an observer");
    }
    if (Find(slot) != _entries.end()) {
        throw UDMException("The slot is connected to session " + sessionId +
                           " already; disconnect it first");
    }
    _entries.push_back({slot, _frontNumber + _queue.size()});
    try {
        slot->connected(sessionId);
    } catch (...) {
        if (const auto entry = Find(slot); entry != _entries.end()) {
            entry->slot.reset();
        }
        throw;
    }
}

void SlotList::Disconnect(const Slot& slot, const kxString& sessionId) {
    const auto entry = slot ? Find(slot) : _entries.end();
    if (entry == _entries.end()) {
        throw UDMNotFoundException("The slot is not connected to session " + sessionId +
                                   "; only a connected one can be disconnected");
    }
    const Slot leaving = std::move(entry->slot);
    entry->slot.reset();
    if (_depth == 0) {
        _entries.erase(entry);
    }
    leaving->disconnected(sessionId);
}

bool SlotList::Empty() const {
    return Count() == 0;
}

std::size_t SlotList::Count() const {
    return static_cast<std::size_t>(
        std::count_if(_entries.begin(), _entries.end(), [](const Entry& entry) {
            return entry.slot != nullptr;
        }));
}

void SlotList::Queue(UDMProfileUpdate update) {
    _queue.push_back(std::move(update));
}

// The place in queue and list is shared with rounds further out, which go on from where this one
// stopped. A slot may change the list, so nothing refers to an entry across the call.
void SlotList::TellNext(std::exception_ptr& failure) {
    if (_next >= _entries.size()) {
        _queue.pop_front();
        ++_frontNumber;
        _next = 0;
        return;
    }
    const std::size_t at = _next++;
    Entry& entry = _entries[at];
    if (!entry.slot || entry.failed || entry.since > _frontNumber) {
        return;
    }
    const Slot slot = entry.slot;
    const UDMProfileUpdate update = _queue.front();
    const bool begins = !std::exchange(entry.inRound, true);
    try {
        if (begins) {
            slot->beginUpdates();
        }
        slot->update(update);
    } catch (...) {
        _entries[at].failed = true;
        Keep(failure);
    }
}

void SlotList::EndRound(std::exception_ptr& failure) {
    for (std::size_t i = 0; i < _entries.size(); ++i) {
        _entries[i].failed = false;
        if (!std::exchange(_entries[i].inRound, false) || !_entries[i].slot) {
            continue;
        }
        const Slot slot = _entries[i].slot;
        try {
            slot->endUpdates();
        } catch (...) {
            Keep(failure);
        }
    }
}

std::exception_ptr SlotList::Tell() {
    std::exception_ptr failure;
    if (_queue.empty()) {
        return failure;
    }
    ++_depth;
    while (!_queue.empty()) {
        TellNext(failure);
        // What a slot does at the end of a round may make further updates.
        if (_queue.empty() && _depth == 1) {
            EndRound(failure);
        }
    }
    if (--_depth == 0) {
        std::erase_if(_entries, [](const Entry& entry) { return entry.slot == nullptr; });
    }
    return failure;
}

void SlotList::Clear(const kxString& sessionId) noexcept {
    std::vector<Slot> leaving;
    for (Entry& entry : _entries) {
        if (entry.slot) {
            leaving.push_back(std::exchange(entry.slot, nullptr));
        }
    }
    if (_depth == 0) {
        _entries.clear();
    }
    for (const Slot& slot : leaving) {
        try {
            slot->disconnected(sessionId);
        } catch (...) {
            // The session is at its end: there is nobody left to tell.
            continue;
        }
    }
}

}  // namespace kxudm::profile
