// A database in memory whose reads a test can hold up or make fail.
#pragma once

#include "engine/jet/storage.h"

#include <atomic>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>

/// The test's hands on the storage; outlives it. Any thread.
class Gate {
public:
    /// Reads of the byte at `place` fail from now on.
    void failAt(std::uint64_t place) { failAt_ = place; }

    /// All reads fail from now on.
    void failAlways() { failAlways_ = true; }

    /// Reads of the byte at `place` wait until release().
    void holdAt(std::uint64_t place) {
        const std::lock_guard lock{mutex_};
        holdAt_ = place;
    }

    void release() {
        const std::lock_guard lock{mutex_};
        holdAt_ = kNowhere;
        changed_.notify_all();
    }

    /// Waits until a read is held up.
    void waitUntilHeld() {
        std::unique_lock lock{mutex_};
        changed_.wait(lock, [this] { return held_ > 0; });
    }

    /// Waits until no read is held up any more.
    void waitUntilPassed() {
        std::unique_lock lock{mutex_};
        changed_.wait(lock, [this] { return held_ == 0; });
    }

    /// Called for every read. Throws jet::Error{ReadFailed}.
    void pass(std::uint64_t offset, std::size_t length) {
        const auto touches = [&](std::uint64_t place) { return place - offset < length; };
        std::unique_lock lock{mutex_};
        if (touches(holdAt_)) {
            ++held_;
            changed_.notify_all();
            changed_.wait(lock, [&] { return !touches(holdAt_); });
            --held_;
            changed_.notify_all();
        }
        lock.unlock();
        if (failAlways_.load() || touches(failAt_.load())) {
            throw jet::Error{jet::Fault::ReadFailed, "the disk is gone"};
        }
    }

private:
    static constexpr std::uint64_t kNowhere = std::numeric_limits<std::uint64_t>::max();

    std::atomic<std::uint64_t> failAt_{kNowhere};
    std::atomic<bool> failAlways_{false};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t holdAt_ = kNowhere;
    int held_ = 0;
};

class GatedStorage : public jet::MemoryStorage {
public:
    GatedStorage(std::vector<std::uint8_t> content, std::shared_ptr<Gate> gate)
        : MemoryStorage{std::move(content)}, gate_{std::move(gate)} {}

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        gate_->pass(offset, buffer.size());
        return MemoryStorage::readAt(offset, buffer);
    }

private:
    std::shared_ptr<Gate> gate_;
};
