#include "core/Team.h"

#include <algorithm>
#include <chrono>
#include <system_error>

#include "core/Worker.h"

namespace kxudm::core {
namespace {

constexpr std::size_t kMost = 4;
constexpr std::chrono::milliseconds kBetweenCalls{20};

}  // namespace

std::size_t Team::UsefulThreads(std::size_t items) {
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    return std::min({processors, kMost, items});
}

void Team::Run(std::size_t count,
               const std::function<Work()>& makeWork,
               const std::function<void()>& meanwhile) {
    std::vector<std::thread> threads = Start(count, makeWork);
    std::exception_ptr own;
    const auto tell = [&] {
        try {
            meanwhile();
        } catch (...) {
            own = std::current_exception();
            stopped_ = true;
        }
    };
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_.wait_for(lock, kBetweenCalls, [this] { return working_ == 0; })) {
        if (!own) {
            lock.unlock();
            tell();
            lock.lock();
        }
    }
    lock.unlock();
    for (std::thread& thread : threads) {
        thread.join();
    }
    if (!own && !failure_) {
        tell();
    }
    if (own || failure_) {
        std::rethrow_exception(own ? own : failure_);
    }
}

std::vector<std::thread> Team::Start(std::size_t count, const std::function<Work()>& makeWork) {
    std::vector<std::thread> threads;
    threads.reserve(threads_);
    working_ = threads_;
    try {
        while (threads.size() < threads_) {
            threads.push_back(StartWorker([this, count, &makeWork] {
                WorkOn(count, makeWork);
                const std::lock_guard<std::mutex> lock(mutex_);
                --working_;
                ended_.notify_one();
            }));
        }
    } catch (const std::system_error&) {
        // Those that are there do it all.
        const std::lock_guard<std::mutex> lock(mutex_);
        working_ -= threads_ - threads.size();
    }
    if (threads.empty()) {
        WorkOn(count, makeWork);
    }
    return threads;
}

void Team::WorkOn(std::size_t count, const std::function<Work()>& makeWork) noexcept {
    try {
        const Work work = makeWork();
        std::size_t item = 0;
        while (!Stopped() && (item = next_++) < count) {
            work(item);
        }
    } catch (...) {
        // What others throw because they were stopped says less.
        if (!stopped_.exchange(true)) {
            const std::lock_guard<std::mutex> lock(mutex_);
            failure_ = std::current_exception();
        }
    }
}

}  // namespace kxudm::core
