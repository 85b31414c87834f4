// SHA-256 of bytes that come piece by piece, as 64 lower-case hexadecimal digits: the name of a
// content. An object is used for one content after the other.
#ifndef KXUDMRT_VAULT_SHA256_H
#define KXUDMRT_VAULT_SHA256_H

#include <cstddef>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

namespace kxudm::vault {

class Sha256 {
  public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Update(const char* bytes, std::size_t size);
    // Of what came since the last call; begins anew.
    std::string Finish();
    // Forgets what came.
    void Begin();

  private:
    evp_md_ctx_st* context_;
};

// Whether a text has the form of a hash.
bool IsHash(std::string_view text);
// Throws UDMException that shows the text if not.
void CheckHash(const std::string& text);

}  // namespace kxudm::vault

#endif
