// How the library starts a thread, which then lives no longer than the call that needed it.
//
//     std::thread worker = StartWorker([&] { ... });
//
// Layer: core.
#ifndef KXUDMRT_CORE_WORKER_H
#define KXUDMRT_CORE_WORKER_H

#include <pthread.h>
#include <signal.h>

#include <thread>
#include <utility>

namespace kxudm::core {

// New threads inherit what is blocked: a host's signal handlers run on the host's threads alone.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &_before);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

  private:
    sigset_t _before{};
};

// Throws std::system_error where the machine gives no thread.
template <typename Function>
[[nodiscard]] std::thread StartWorker(Function&& function) {
    const NoSignals noSignals;
    return std::thread(std::forward<Function>(function));
}

}  // namespace kxudm::core

#endif
