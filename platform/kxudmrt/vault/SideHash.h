// SHA-256 of a stream that can be computed beside what its user does with the same bytes: hashing
// takes about as long as reading and writing them, and a large file then takes half.
//
//     hash.Begin();
//     hash.GoBeside();                       // from a few MiB on; else it is done within Update
//     while (const auto bytes = Next()) {
//         hash.Update(bytes);                // returns at once
//         Write(bytes);                      // reading `bytes` is allowed, nothing else
//     }
//     const std::string name = hash.Finish();
//
// Layer: vault, inside. A thread of its own lives from GoBeside to Finish, Begin or the end.
#ifndef KXUDMRT_VAULT_SIDEHASH_H
#define KXUDMRT_VAULT_SIDEHASH_H

#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "vault/Sha256.h"

namespace kxudm::vault {

class SideHash {
  public:
    SideHash() = default;
    ~SideHash() { Stop(); }
    SideHash(const SideHash&) = delete;
    SideHash& operator=(const SideHash&) = delete;

    // Forgets what came; no bytes are read any more.
    void Begin();
    // From now on beside. Where the machine gives no thread, all stays as it was.
    void GoBeside();
    // Beside: waits until the bytes before were read; these have to stay until the next Update,
    // Wait, Finish or Begin.
    void Update(const char* bytes, std::size_t size);
    // Until all bytes were read.
    void Wait();
    // Of what came since Begin; begins anew.
    std::string Finish();
    // Ends the thread; no bytes are read any more. Only Begin may follow.
    void Stop() noexcept;

  private:
    void Work() noexcept;

    Sha256 hash_;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::string_view bytes_;  // being read, under the mutex
    bool ending_ = false;
    std::exception_ptr failure_;
};

}  // namespace kxudm::vault

#endif
