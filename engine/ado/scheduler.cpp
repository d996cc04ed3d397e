#include "engine/ado/scheduler.h"

namespace ado {

void HandPump::post(std::function<void()> task) {
    {
        const std::lock_guard lock{mutex_};
        tasks_.push_back(std::move(task));
    }
    posted_.notify_one();
}

std::size_t HandPump::run() {
    std::size_t count = pending();
    for (std::size_t i = 0; i < count; ++i) {
        std::unique_lock lock{mutex_};
        if (tasks_.empty()) return i;  // a task has turned the pump itself
        const auto task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
    }
    return count;
}

bool HandPump::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        {
            std::unique_lock lock{mutex_};
            if (!posted_.wait_until(lock, end, [this] { return !tasks_.empty(); })) return false;
        }
        run();
    }
    return true;
}

std::size_t HandPump::pending() const {
    const std::lock_guard lock{mutex_};
    return tasks_.size();
}

}  // namespace ado
