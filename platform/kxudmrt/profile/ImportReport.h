// What a bulk import tells while it runs: how far it is, and what failed.
//
// Layer: profile. Speaks to the session's listener, if there is one. What that throws is kept, ends
// the import like a cancellation, and comes out of RequireGoingOn.
#pragma once

#include <kxudm/UDMProgress.h>

#include <cstdint>
#include <exception>
#include <string>

namespace kxudm::profile {

class ImportReport {
  public:
    // `listener` may be null. `strict`: the first failure ends the import.
    ImportReport(IUDMProgressListener* listener, bool strict)
        : _listener(listener), _strict(strict) {}

    // An item that is left out. Strict: throws UDMException with the reason.
    void Fail(const std::string& item, const std::string& reason);

    void SetTotal(std::uint64_t items, std::uint64_t bytes);
    // Work begins at this item. False once the listener has cancelled.
    bool Begin(const std::string& item);
    // So many bytes of the item were done since the last call. Answers like Begin.
    bool Advance(std::uint64_t bytes);
    // The item, which was announced with this size, is done.
    void End(std::uint64_t bytes);
    [[nodiscard]] bool IsCancelled() const { return _cancelled; }
    // Throws what the listener has thrown. Strict: UDMCancelledException if it has cancelled.
    void RequireGoingOn() const;

  private:
    bool Tell();

    IUDMProgressListener* _listener;
    bool _strict;
    bool _cancelled = false;
    std::exception_ptr _failure;
    UDMProgress _progress;
    std::uint64_t _ended = 0;  // bytes of the items that are done
};

}  // namespace kxudm::profile
