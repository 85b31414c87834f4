// Contents on their way out of vaults: read, decompressed, verified and written under a temporary
// name, in one pass. One fetcher serves one thread, for any number of vaults and contents; several
// may read one vault at the same time, also beside what that vault's own thread does.
//
//     Fetcher fetcher;
//     auto file = fetcher.Fetch(vault, hash, "/home/u/deck.inp", {});
//     file->MoveTo("/home/u/deck.inp");
//
// Layer: vault. Memory is a few MiB. A large content is hashed by a second thread while it is read
// and written; that thread ends with the call.
#ifndef KXUDMRT_VAULT_FETCHER_H
#define KXUDMRT_VAULT_FETCHER_H

#include <memory>
#include <string>

#include "vault/ContentReader.h"
#include "vault/TemporaryFile.h"

namespace kxudm::vault {

class Vault;
struct Finding;
struct RetrieveOptions;
struct VerifyOptions;

class Fetcher {
  public:
    // As Vault::Fetch.
    [[nodiscard]] std::unique_ptr<TemporaryFile> Fetch(const Vault& vault,
                                                       const std::string& hash,
                                                       const std::string& target,
                                                       const RetrieveOptions& options);

    // As Vault::Verify.
    Finding Verify(const Vault& vault, const std::string& hash, const VerifyOptions& options);

    // For other uses of a vault's own fetcher.
    [[nodiscard]] char* Block();
    [[nodiscard]] const std::shared_ptr<ReaderMemory>& Memory();

  private:
    void MakeMemory();

    std::shared_ptr<ReaderMemory> memory_;
    std::unique_ptr<char[]> blocks_;  // two
};

}  // namespace kxudm::vault

#endif
