// Zstandard as the vault uses it: one frame for each file, then a seal. Different frames may say
// the same content, so a content's hash doesn't prove every byte of its frame; the seal does. It is
// a skippable frame (24 bytes) that holds the first 16 digits of the SHA-256 of what comes before
// it, so the command line tool `zstd` reads these files as well.
//
// Objects keep their working memory (a few MiB) from one content to the next. A large content is
// compressed by several threads, which end with it; its frame does not depend on their number.
#ifndef KXUDMRT_VAULT_COMPRESSION_H
#define KXUDMRT_VAULT_COMPRESSION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "vault/Sha256.h"

struct ZSTD_CCtx_s;
struct ZSTD_DCtx_s;

namespace kxudm::vault {

// How much of a file is in memory at a time.
constexpr std::size_t kBlock = std::size_t{1} << 20;
// From this size on threads of its own are worth their start.
constexpr std::uint64_t kLarge = std::uint64_t{4} << 20;

class Compressor {
  public:
    using Sink = std::function<void(const char*, std::size_t)>;

    Compressor();
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor() = default;

    // Whether the content that begins with these bytes, at most kBlock, is likely to shrink by a
    // tenth or more: from samples spread over them.
    bool LooksWorthwhile(std::string_view beginning);
    // A whole content of at most kBlock. Empty if it doesn't shrink by a tenth; else valid until
    // the next call.
    std::string_view CompressWhole(std::string_view content);

    // A content of any size, which must be exactly `size` in the end.
    void Begin(std::uint64_t size);
    void Put(std::string_view bytes, const Sink& sink);
    void End(const Sink& sink);
    // Instead of End, for a content that is given up.
    void Stop() noexcept { team_.reset(); }

  private:
    struct Free {
        void operator()(ZSTD_CCtx_s* context) const;
    };
    using Context = std::unique_ptr<ZSTD_CCtx_s, Free>;

    static Context NewContext();
    void BeginTeam(std::uint64_t size);
    std::size_t Once(std::string_view bytes);
    void Run(std::string_view bytes, bool last, const Sink& sink);

    Context context_;
    Context team_;  // with threads, for the large content that is being compressed
    std::size_t capacity_;
    std::unique_ptr<char[]> output_;
    Sha256 written_;
};

class Decompressor {
  public:
    Decompressor();
    ~Decompressor();
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    void Begin();

    struct Step {
        std::size_t taken = 0;  // of the input
        std::size_t made = 0;   // of the output
        // None, or why the input is no file of ours.
        const char* problem = nullptr;
    };
    // Decompresses as much of `input` as fits into the output.
    Step Run(std::string_view input, char* output, std::size_t size);
    // At the end of the input: none, or why it is not what a Compressor made.
    const char* Finish();

  private:
    ZSTD_DCtx_s* context_;
    bool frameEnded_ = false;
    Sha256 read_;
    std::string seal_;
};

}  // namespace kxudm::vault

#endif
