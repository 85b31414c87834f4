// What an export or an import tells its listener. A cancelled one throws.
//
// Layer: profile.
#pragma once

#include <kxudm/UDMProgress.h>

#include <cstdint>
#include <string>

namespace kxudm::profile {

class ExchangeProgress {
  public:
    // `listener` may be null; `deed` begins the text of the exception, as in "The export to ...".
    ExchangeProgress(IUDMProgressListener* listener, std::string deed)
        : _listener(listener), _deed(std::move(deed)) {}

    void SetTotal(std::uint64_t items, std::uint64_t bytes) {
        _progress.total = items;
        _progress.totalBytes = bytes;
    }
    // Work begins at this item. Each of these throws UDMCancelledException if the listener ends the
    // operation.
    void Begin(const std::string& item) {
        _progress.name = item;
        Tell();
    }
    void Advance(std::uint64_t bytes) {
        _progress.doneBytes += bytes;
        Tell();
    }
    // The item is done, of which nobody needs to hear.
    void End() { ++_progress.done; }
    void Finish() { Begin({}); }

  private:
    void Tell() {
        if (_listener != nullptr && !_listener->Advance(_progress)) {
            throw UDMCancelledException(_deed + " was cancelled; everything is as it was");
        }
    }

    IUDMProgressListener* const _listener;
    const std::string _deed;
    UDMProgress _progress;
};

}  // namespace kxudm::profile
