#include "vault/Sha256.h"

#include <kxudm/UDMException.h>
#include <openssl/evp.h>

#include <algorithm>

#include "vault/DocumentName.h"

namespace kxudm::vault {
namespace {

// Looked up once: the library's search for an algorithm costs more than hashing a small file.
const EVP_MD* Algorithm() {
    static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return algorithm;
}

void Check(int result) {
    if (result != 1) {
        throw UDMStoreException(
            "SHA-256 can't be computed; check the installation of the OpenSSL library");
    }
}

}  // namespace

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
    try {
        Check(context_ != nullptr && Algorithm() != nullptr ? 1 : 0);
        Begin();
    } catch (...) {
        EVP_MD_CTX_free(context_);
        throw;
    }
}

Sha256::~Sha256() {
    EVP_MD_CTX_free(context_);
}

void Sha256::Begin() {
    Check(EVP_DigestInit_ex2(context_, Algorithm(), nullptr));
}

void Sha256::Update(const char* bytes, std::size_t size) {
    Check(EVP_DigestUpdate(context_, bytes, size));
}

std::string Sha256::Finish() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    Check(EVP_DigestFinal_ex(context_, digest, &length));
    Begin();
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * std::size_t{length});
    for (unsigned i = 0; i < length; ++i) {
        text += kDigits[digest[i] >> 4];
        text += kDigits[digest[i] & 15];
    }
    return text;
}

bool IsHash(std::string_view text) {
    return text.size() == 64 && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

void CheckHash(const std::string& text) {
    if (!IsHash(text)) {
        throw UDMException("'" + Printable(text) +
                           "' names no content of a vault; it takes 64 lower-case hexadecimal "
                           "digits");
    }
}

}  // namespace kxudm::vault
