// Reads the contents of a library's vaults, for those who verify it: whether each is what its name
// says, and what words it has.
//
//     ContentsCheck check(session);
//     check.Begin(uses, true);
//     ...                          // look at rows meanwhile
//     for (const store::ContentUse& use : uses) {
//         Tell(use, check.Next());
//     }
//
// A crew reads them, a group at a time; the calling thread helps where it would wait.
//
// Layer: profile. Memory is a few MiB for each thread, and what Next has not given yet.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/Crew.h"
#include "profile/Session.h"
#include "store/LibraryCheck.h"
#include "vault/Vault.h"

namespace kxudm::profile {

class ContentsCheck {
  public:
    struct Result {
        vault::Finding finding = {};
        // FullText::SumOf its words; of a sound content that has a document in the index, if asked
        // for.
        std::optional<std::uint64_t> words = std::nullopt;
    };

    // The session outlives it.
    explicit ContentsCheck(Session& session) : _session(session) {}
    // Stops what is under way.
    ~ContentsCheck();
    ContentsCheck(const ContentsCheck&) = delete;
    ContentsCheck& operator=(const ContentsCheck&) = delete;

    // Once. `uses` outlives it.
    void Begin(const std::vector<store::ContentUse>& uses, bool withWords);
    // Of one use after the other; as often as there are some.
    [[nodiscard]] Result Next();

  private:
    struct Content {
        const store::ContentUse* use = nullptr;
        const vault::Vault* vault = nullptr;  // null if it can't be opened
        std::string problem = {};             // then
        bool withWords = false;
    };
    using Group = std::vector<Content>;
    struct Reader {
        vault::Fetcher fetcher;
        std::string text;
    };

    [[nodiscard]] Content Find(const store::ContentUse& use, bool withWords);
    void Give(Group&& group);
    std::deque<Result> Read(const Group& group);
    Result ReadOne(const Content& content, Reader& reader) const;
    std::unique_ptr<Reader> Borrow();

    Session& _session;
    std::atomic<bool> _stopped = false;
    std::mutex _mutex;
    std::vector<std::unique_ptr<Reader>> _readers;  // that no thread uses just now
    std::deque<std::future<std::deque<Result>>> _coming;
    std::deque<Result> _results;
    std::unique_ptr<core::Crew> _crew;  // ends first: it uses what stands above
};

}  // namespace kxudm::profile
