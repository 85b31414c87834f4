// What the vault tells about a file that it has taken in, and what it can be told before.
#ifndef KXUDMRT_VAULT_STORED_H
#define KXUDMRT_VAULT_STORED_H

#include <kxudm/UDMException.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kxudm::vault {

struct Stored {
    std::string hash = {};         // SHA-256 of the file as it is
    std::uint64_t size = 0;        // bytes of the file
    std::uint64_t storedSize = 0;  // bytes that the vault keeps
    std::int64_t modified = 0;     // of the file, microseconds since 1970
    bool isText = false;           // its beginning is plain text in an encoding of single bytes
    bool compressed = false;
    bool wasThere = false;  // nothing was written, the vault had the content
};

// Hears of bytes that were done since the last call; false stops the operation. It must not use the
// vault that calls it.
using Progress = std::function<bool(std::uint64_t bytes)>;

// An operation that its progress stopped. Nothing of it remains.
class StoppedException : public UDMException {
  public:
    using UDMException::UDMException;
};

struct AddOptions {
    // False keeps the file as it is, whatever a sample says.
    bool mayCompress = true;
    Progress progress = {};
    // Hears of the beginning of the file, up to 1 MiB, before anything is written.
    std::function<void(std::string_view beginning)> beginning = {};
};

}  // namespace kxudm::vault

#endif
