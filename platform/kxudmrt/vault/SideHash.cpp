#include "vault/SideHash.h"

#include <system_error>
#include <utility>

#include "core/Worker.h"

namespace kxudm::vault {

void SideHash::Begin() {
    Stop();
    hash_.Begin();
}

void SideHash::GoBeside() {
    if (thread_.joinable()) {
        return;
    }
    ending_ = false;
    failure_ = nullptr;
    try {
        thread_ = core::StartWorker([this] { Work(); });
    } catch (const std::system_error&) {
        // Then within Update.
    }
}

void SideHash::Update(const char* bytes, std::size_t size) {
    if (!thread_.joinable()) {
        hash_.Update(bytes, size);
        return;
    }
    Wait();
    const std::lock_guard<std::mutex> lock(mutex_);
    bytes_ = {bytes, size};
    changed_.notify_all();
}

void SideHash::Wait() {
    if (!thread_.joinable()) {
        return;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return bytes_.empty(); });
    if (failure_) {
        std::rethrow_exception(failure_);
    }
}

std::string SideHash::Finish() {
    Wait();
    Stop();
    return hash_.Finish();
}

void SideHash::Work() noexcept {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || !bytes_.empty(); });
        if (bytes_.empty()) {
            return;
        }
        const std::string_view bytes = bytes_;
        lock.unlock();
        std::exception_ptr failure;
        try {
            hash_.Update(bytes.data(), bytes.size());
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        failure_ = failure_ ? failure_ : failure;
        bytes_ = {};
        changed_.notify_all();
    }
}

void SideHash::Stop() noexcept {
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

}  // namespace kxudm::vault
