// A stored content as a stream of its bytes, decompressed, and checked against its hash while it is
// read.
//
// Layer: vault. A reader owns its open file and memory and outlives the vault that gave it, but not
// the file layer. One thread at a time.
#ifndef KXUDMRT_VAULT_CONTENTREADER_H
#define KXUDMRT_VAULT_CONTENTREADER_H

#include <cstdint>
#include <memory>
#include <string>

#include "vault/Compression.h"
#include "vault/FileLayer.h"
#include "vault/SideHash.h"

namespace kxudm::vault {

// A stored file whose bytes aren't the content that it is named after.
class DamagedException : public UDMStoreException {
  public:
    using UDMStoreException::UDMStoreException;
};

// What reading needs beside the file, to be used for one content after the other.
class ReaderMemory {
  public:
    ReaderMemory();

  private:
    friend class ContentReader;
    SideHash hash_;
    Decompressor decompressor_;
    std::unique_ptr<char[]> input_;
};

class ContentReader {
  public:
    // Opens the stored file. Missing is FileError with ENOENT. The memory serves one reader at a
    // time.
    ContentReader(FileLayer& files,
                  const std::string& path,
                  std::string hash,
                  bool compressed,
                  std::shared_ptr<ReaderMemory> memory);

    // Ends what HashBeside began.
    ~ContentReader();
    ContentReader(const ContentReader&) = delete;
    ContentReader& operator=(const ContentReader&) = delete;

    // From now on another thread hashes what Read gives: the bytes stay as they are until the next
    // Read has returned, so the caller uses two buffers by turns.
    void HashBeside();

    // The next bytes, at least one; 0 at the end, then and only then is the content proven. Throws
    // DamagedException as soon as it is found to be something else.
    std::size_t Read(char* bytes, std::size_t size);

  private:
    std::size_t ReadPlain(char* bytes, std::size_t size);
    std::size_t ReadCompressed(char* bytes, std::size_t size);
    void CheckHashAtEnd();
    [[noreturn]] void Refuse(const std::string& reason) const;

    FileLayer& files_;
    const std::string path_;
    const std::string hash_;
    const bool compressed_;
    std::shared_ptr<ReaderMemory> memory_;
    FileHandle handle_;
    std::string_view input_ = {};
    bool inputEnded_ = false;
    bool proven_ = false;
    bool beside_ = false;
};

}  // namespace kxudm::vault

#endif
