#include "core/Crew.h"

#include <system_error>

#include "core/Worker.h"

namespace kxudm::core {

Crew::~Crew() {
    std::deque<Task> dropped;
    {
        const std::lock_guard lock(_mutex);
        _ending = true;
        dropped.swap(_waiting);
    }
    _changed.notify_all();
    for (std::thread& thread : _threads) {
        thread.join();
    }
}

void Crew::Give(Task task) {
    bool needsThread = false;
    {
        const std::lock_guard lock(_mutex);
        needsThread = _threads.size() < _most && _idle <= _waiting.size();
    }
    if (needsThread) {
        BeginThread();
    }
    if (_threads.empty()) {
        task();
        return;
    }
    {
        const std::lock_guard lock(_mutex);
        _waiting.push_back(std::move(task));
    }
    _changed.notify_one();
}

bool Crew::Help() {
    Task task;
    {
        const std::lock_guard lock(_mutex);
        if (_waiting.empty()) {
            return false;
        }
        task = std::move(_waiting.front());
        _waiting.pop_front();
    }
    task();
    return true;
}

void Crew::BeginThread() {
    try {
        _threads.push_back(StartWorker([this] { Work(); }));
    } catch (const std::system_error&) {
        // Those that are there do it all.
    }
}

void Crew::Work() {
    std::unique_lock lock(_mutex);
    while (true) {
        ++_idle;
        _changed.wait(lock, [this] { return _ending || !_waiting.empty(); });
        --_idle;
        if (_waiting.empty()) {
            return;
        }
        Task task = std::move(_waiting.front());
        _waiting.pop_front();
        lock.unlock();
        task();
        task = {};  // with all that it holds, while nobody waits
        lock.lock();
    }
}

}  // namespace kxudm::core
