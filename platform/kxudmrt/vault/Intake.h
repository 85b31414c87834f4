// Reads a file once, and in that pass hashes it, looks what it is, and writes it, compressed where
// that pays, under a temporary name into the vault. Memory does not depend on the file's size.
// A large file is hashed by a second thread and compressed by others while it is read and written;
// they end with the call.
//
// Layer: vault, inside. One thread at a time.
#ifndef KXUDMRT_VAULT_INTAKE_H
#define KXUDMRT_VAULT_INTAKE_H

#include <memory>
#include <string>

#include "vault/Compression.h"
#include "vault/Expected.h"
#include "vault/Layout.h"
#include "vault/SideHash.h"
#include "vault/SourceFile.h"
#include "vault/Stored.h"

namespace kxudm::vault {

// Whether what begins with these bytes is plain text in an encoding of single bytes, or empty.
[[nodiscard]] bool LooksLikeText(std::string_view beginning);

struct Incoming {
    Stored stored = {};
    // Whole, not yet flushed; none if the content is in the vault already.
    std::unique_ptr<TemporaryFile> file = nullptr;
    // A file of the vault that can't be this content though it bears its name; empty if there is
    // none.
    std::string impostor = {};
};

class Intake {
  public:
    explicit Intake(Layout& layout) : layout_(layout) {}

    // `expected`, if it holds the content's hash, stands for contents that will be in the vault.
    Incoming TakeIn(const std::string& path,
                    const AddOptions& options,
                    const Expected* expected = nullptr);
    // The same of another source, which has this name in messages.
    Incoming TakeIn(Source& source,
                    const std::string& name,
                    const AddOptions& options,
                    const Expected* expected = nullptr);

  private:
    struct Pass;

    void TakeSmall(Pass& pass, std::string_view content);
    void TakeLarge(Pass& pass, std::string_view beginning);
    bool IsThere(Incoming& incoming, const Expected* expected) const;
    [[nodiscard]] char* Block();

    Layout& layout_;
    // Made with the first file: a vault that is only read needs none of it.
    std::unique_ptr<char[]> blocks_;  // two
    std::unique_ptr<Compressor> compressor_;
    // Ends first: it may be reading a block.
    SideHash hash_;
};

}  // namespace kxudm::vault

#endif
