#include "vault/Beginning.h"

#include <algorithm>

namespace kxudm::vault {
namespace {

// Where a text that was cut ends, so that its last character is whole. Texts in other encodings
// lose at most three bytes.
std::size_t WholeCharacters(const std::string& text) {
    std::size_t start = text.size();
    for (std::size_t i = 1; i <= 4 && i <= text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[text.size() - i]);
        if ((byte & 0xC0U) == 0x80U) {
            continue;
        }
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (length > i) {
            start = text.size() - i;
        }
        break;
    }
    return start;
}

}  // namespace

Beginning::Beginning(std::string& text, std::size_t limit) : text_(text), limit_(limit) {
    text_.clear();
}

void Beginning::Append(const char* bytes, std::size_t count) {
    if (isCut_) {
        return;
    }
    isCut_ = count > limit_ - text_.size();
    text_.append(bytes, std::min(count, limit_ - text_.size()));
}

void Beginning::End() {
    if (isCut_) {
        text_.resize(WholeCharacters(text_));
    }
}

}  // namespace kxudm::vault
