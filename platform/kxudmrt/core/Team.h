// A few threads for the time of one call: they share the items of a list and have all ended when
// the call returns. They never call the host: progress is told on the calling thread.
//
//     Team team(Team::UsefulThreads(files.size()));
//     team.Run(
//         files.size(),
//         [&] {
//             auto reader = std::make_shared<Reader>();  // one for each thread
//             return [&, reader](std::size_t i) { reader->Read(files[i], team); };
//         },
//         [&] { Tell(done); });
//
// Layer: core. Workers block all signals, so that a host's handlers run on the host's threads.
#ifndef KXUDMRT_CORE_TEAM_H
#define KXUDMRT_CORE_TEAM_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kxudm::core {

class Team {
  public:
    using Work = std::function<void(std::size_t item)>;

    // As many as there are processors, at most four and at most one for each item.
    [[nodiscard]] static std::size_t UsefulThreads(std::size_t items);

    explicit Team(std::size_t threads) : threads_(threads) {}
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;
    ~Team() = default;

    // Works on the items from 0 to `count`, in this order as far as several threads can. Each
    // thread makes its own Work first. `meanwhile` is called on the calling thread, every 20 ms or
    // so and once more in the end; what it throws stops the others and comes out, and so does the
    // first failure of a work; then some items are left undone. Where the machine gives no thread,
    // the calling thread works.
    void Run(std::size_t count,
             const std::function<Work()>& makeWork,
             const std::function<void()>& meanwhile);

    // For works in the middle of something long: whether it is of no use any more.
    [[nodiscard]] bool Stopped() const { return stopped_.load(std::memory_order_relaxed); }

  private:
    void WorkOn(std::size_t count, const std::function<Work()>& makeWork) noexcept;
    std::vector<std::thread> Start(std::size_t count, const std::function<Work()>& makeWork);

    const std::size_t threads_;
    std::atomic<bool> stopped_{false};
    std::atomic<std::size_t> next_{0};
    std::mutex mutex_;
    std::condition_variable ended_;
    std::size_t working_ = 0;
    std::exception_ptr failure_;
};

}  // namespace kxudm::core

#endif
