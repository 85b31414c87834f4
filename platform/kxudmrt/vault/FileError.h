// A file operation that the machine refused.
//
// Layer: vault. Every errno leaves the vault as this exception; its text is one line: the path,
// what could not be done, the machine's own words as the cause, and what would be right. The code
// is for the few callers that go on after a failure.
#ifndef KXUDMRT_VAULT_FILEERROR_H
#define KXUDMRT_VAULT_FILEERROR_H

#include <kxudm/UDMException.h>

#include <string>

namespace kxudm::vault {

class FileError : public UDMStoreException {
  public:
    // `action` ends the phrase "can't be", for example "read". `code` is an errno.
    FileError(int code, const std::string& action, const std::string& path);
    // The same failure as part of a larger task, for example "'a.inp' was not stored".
    FileError(const std::string& task, const FileError& cause);

    [[nodiscard]] int Code() const noexcept { return code_; }

  private:
    int code_;
};

}  // namespace kxudm::vault

#endif
