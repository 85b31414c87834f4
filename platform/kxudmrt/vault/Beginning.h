// The first bytes of a content, for those who look at texts.
//
//     std::string text;
//     Beginning beginning(text, limit);
//     beginning.Append(...);  // piece by piece
//     beginning.End();
//
// Layer: vault, inside.
#ifndef KXUDMRT_VAULT_BEGINNING_H
#define KXUDMRT_VAULT_BEGINNING_H

#include <string>

namespace kxudm::vault {

class Beginning {
  public:
    // Writes into `text`, at most `limit` bytes.
    Beginning(std::string& text, std::size_t limit);

    // Does nothing once the limit is passed.
    void Append(const char* bytes, std::size_t count);
    // Whether there was more.
    [[nodiscard]] bool IsCut() const { return isCut_; }
    // Takes away a character of UTF-8 that was cut.
    void End();

  private:
    std::string& text_;
    const std::size_t limit_;
    bool isCut_ = false;
};

}  // namespace kxudm::vault

#endif
