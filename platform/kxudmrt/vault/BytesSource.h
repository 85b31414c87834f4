// A content that is in memory, on its way into the vault.
#ifndef KXUDMRT_VAULT_BYTESSOURCE_H
#define KXUDMRT_VAULT_BYTESSOURCE_H

#include <algorithm>
#include <string_view>

#include "vault/SourceFile.h"

namespace kxudm::vault {

class BytesSource final : public Source {
  public:
    // The bytes outlive the source.
    explicit BytesSource(std::string_view content) : size_(content.size()), left_(content) {}

    std::size_t Fill(char* bytes, std::size_t size) override {
        const std::size_t count = left_.copy(bytes, std::min(size, left_.size()));
        left_.remove_prefix(count);
        return count;
    }
    void CheckUnchanged() override {}
    [[nodiscard]] std::uint64_t Size() const override { return size_; }
    [[nodiscard]] std::int64_t Modified() const override { return 0; }

  private:
    const std::size_t size_;
    std::string_view left_;
};

}  // namespace kxudm::vault

#endif
