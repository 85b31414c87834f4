// The slots of one session and the updates that wait for them.
//
// Layer: profile. Updates are queued while a change is made and told when it is committed. Telling
// is reentrant: a slot may connect or disconnect slots, or call back into the session, whose own
// updates are then told at once, behind those that were queued before. Each slot gets the updates
// in their order, and none that is older than its connection.
#pragma once

#include <kxudm/IUDMProfileSlot.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <deque>
#include <exception>
#include <vector>

namespace kxudm::profile {

class SlotList {
  public:
    using Slot = boost::shared_ptr<IUDMProfileSlot>;

    // Throws UDMException for a null slot and for one that is connected already.
    void Connect(const Slot& slot, const kxString& sessionId);
    // Throws UDMNotFoundException for a slot that isn't connected.
    void Disconnect(const Slot& slot, const kxString& sessionId);
    // Nobody listens: updates need not be made.
    [[nodiscard]] bool Empty() const;
    [[nodiscard]] std::size_t Count() const;

    void Queue(UDMProfileUpdate update);
    // Hands all queued updates to the slots. A slot that throws gets no further update of this
    // round; the first exception is returned, null if there was none.
    [[nodiscard]] std::exception_ptr Tell();
    // Disconnects all slots; what they throw is dropped.
    void Clear(const kxString& sessionId) noexcept;

  private:
    struct Entry {
        Slot slot;                // null once disconnected; taken out after the round
        std::uint64_t since = 0;  // number of the first update that is for it
        bool inRound = false;     // was told of the begin of the round
        bool failed = false;
    };

    std::vector<Entry>::iterator Find(const Slot& slot);
    void TellNext(std::exception_ptr& failure);
    void EndRound(std::exception_ptr& failure);

    std::vector<Entry> _entries;
    std::deque<UDMProfileUpdate> _queue;
    std::uint64_t _frontNumber = 0;  // number of the update at the front of the queue
    std::size_t _next = 0;           // the entry that gets it next
    int _depth = 0;
};

}  // namespace kxudm::profile
