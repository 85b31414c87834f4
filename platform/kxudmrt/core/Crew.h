// A few threads that take tasks beside the one who gives them, for as long as the crew lives.
//
//     Crew crew(Team::UsefulThreads(files.size()));
//     std::deque<std::future<Stored>> stored;
//     for (const File& file : files) {
//         stored.push_back(crew.Do([&file] { return Take(file); }));
//     }
//
// Tasks are begun in the order in which they were given. What one throws comes out of its future.
// They never call the host.
//
// Layer: core. Lives no longer than the call that needed it; Team.h serves where the items are
// known before.
#ifndef KXUDMRT_CORE_CREW_H
#define KXUDMRT_CORE_CREW_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace kxudm::core {

class Crew {
  public:
    // The threads are begun one by one as tasks come.
    explicit Crew(std::size_t threads) : _most(threads) {}
    // Waits for the tasks that were begun and drops the others.
    ~Crew();
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    // Where the machine gives no thread, the task is done before this returns.
    template <typename Deed>
    [[nodiscard]] auto Do(Deed&& deed) -> std::future<std::invoke_result_t<std::decay_t<Deed>&>> {
        using Result = std::invoke_result_t<std::decay_t<Deed>&>;
        std::packaged_task<Result()> task(std::forward<Deed>(deed));
        std::future<Result> result = task.get_future();
        Give(Task(std::move(task)));
        return result;
    }
    // Does the next task that nobody has begun, on the calling thread: better than to sleep until
    // the crew is done. False if there is none.
    bool Help();
    // What one of its tasks gives or throws; helps until that is done.
    template <typename Result>
    Result Await(std::future<Result>& result) {
        while (result.wait_for(std::chrono::seconds(0)) != std::future_status::ready && Help()) {
        }
        return result.get();
    }

  private:
    using Task = std::packaged_task<void()>;

    void Give(Task task);
    void BeginThread();
    void Work();

    const std::size_t _most;
    std::vector<std::thread> _threads;

    std::mutex _mutex;  // of what follows
    std::condition_variable _changed;
    std::deque<Task> _waiting;
    std::size_t _idle = 0;
    bool _ending = false;
};

}  // namespace kxudm::core

#endif
