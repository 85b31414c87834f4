// Full text search of a session: the store's index, and the vaults that its contents come from.
//
// Layer: profile. Whoever brings files into the library by other means than AddFile or an import of
// folders has to do nothing for search: the first search reads the new contents. Where they are at
// hand in memory, as in an import, TextPreparer and store::AddContentText spare that search the
// time.
#pragma once

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <string>
#include <thread>

#include "profile/Session.h"
#include "store/FullText.h"

namespace kxudm::profile {

// The words of contents in the vaults of a session, which outlives the reader.
[[nodiscard]] store::TextReader TextsOf(Session& session);

// Indexes what is new, as far as nobody else is writing just then. What is left is no less found.
// Not inside of a transaction, except that of a bulk edit.
void BringTextsForward(Session& session);

// Prepares the texts of files in a thread of its own, beside the caller who has read them and has
// to hash, compress and write them.
class TextPreparer {
  public:
    TextPreparer() = default;
    // Waits for what was begun.
    ~TextPreparer();
    TextPreparer(const TextPreparer&) = delete;
    TextPreparer& operator=(const TextPreparer&) = delete;

    // Takes the beginning of a file, as much of it as is looked at. Where too much is waiting, the
    // caller does the work himself.
    [[nodiscard]] std::future<std::string> Prepare(std::string_view beginning);

  private:
    using Task = std::packaged_task<std::string()>;

    bool Begin();
    void Work();

    std::mutex _mutex;  // of what follows
    std::condition_variable _changed;
    std::deque<std::pair<Task, std::size_t>> _waiting;  // with their bytes
    std::size_t _waitingBytes = 0;
    bool _ended = false;

    std::thread _thread;  // begun with the first text
};

}  // namespace kxudm::profile
