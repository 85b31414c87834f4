// Contents that will be in the vault: files that equal them need not be written.
//
// Layer: vault, inside. Any thread.
#ifndef KXUDMRT_VAULT_EXPECTED_H
#define KXUDMRT_VAULT_EXPECTED_H

#include <mutex>
#include <string>
#include <unordered_map>

#include "vault/Stored.h"

namespace kxudm::vault {

class Expected {
  public:
    bool Find(const std::string& hash, Stored& stored) const {
        const std::lock_guard lock(mutex_);
        const auto found = contents_.find(hash);
        if (found == contents_.end()) {
            return false;
        }
        stored = found->second;
        return true;
    }
    void Add(const Stored& stored) {
        const std::lock_guard lock(mutex_);
        contents_.emplace(stored.hash, stored);
    }
    void Clear() {
        const std::lock_guard lock(mutex_);
        contents_.clear();
    }
    [[nodiscard]] bool IsEmpty() const {
        const std::lock_guard lock(mutex_);
        return contents_.empty();
    }

  private:
    mutable std::mutex mutex_;
    std::unordered_map<std::string, Stored> contents_;
};

}  // namespace kxudm::vault

#endif
