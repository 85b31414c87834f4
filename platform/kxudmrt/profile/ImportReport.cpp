#include "profile/ImportReport.h"

#include <algorithm>

#include "vault/DocumentName.h"

namespace kxudm::profile {

void ImportReport::Fail(const std::string& item, const std::string& reason) {
    if (_strict) {
        throw UDMException("'" + vault::Printable(item) +
                           "' can't be imported, so that nothing was: " + reason);
    }
    if (_listener == nullptr || _failure) {
        return;
    }
    try {
        _listener->Failed(item, reason);
    } catch (...) {
        _failure = std::current_exception();
        _cancelled = true;
    }
}

void ImportReport::SetTotal(std::uint64_t items, std::uint64_t bytes) {
    _progress.total = items;
    _progress.totalBytes = bytes;
}

bool ImportReport::Tell() {
    if (_listener == nullptr || _cancelled) {
        return !_cancelled;
    }
    try {
        _cancelled = !_listener->Advance(_progress);
    } catch (...) {
        _failure = std::current_exception();
        _cancelled = true;
    }
    return !_cancelled;
}

bool ImportReport::Begin(const std::string& item) {
    _progress.name = item;
    return Tell();
}

bool ImportReport::Advance(std::uint64_t bytes) {
    _progress.doneBytes = std::min(_progress.doneBytes + bytes, _progress.totalBytes);
    return Tell();
}

void ImportReport::End(std::uint64_t bytes) {
    ++_progress.done;
    _ended += bytes;
    _progress.doneBytes = std::max(_progress.doneBytes, _ended);
}

void ImportReport::RequireGoingOn() const {
    if (_failure) {
        std::rethrow_exception(_failure);
    }
    if (_cancelled && _strict) {
        throw UDMCancelledException("The import was cancelled, and nothing of it was kept");
    }
}

}  // namespace kxudm::profile
