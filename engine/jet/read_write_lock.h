// A readers-writer lock.
//
//   jet::ReadWriteLock gate;
//   {
//       std::shared_lock reading{gate};
//       show(text);
//   }
//   std::unique_lock writing{gate};
//
// Any thread may call. A waiting writer goes before readers that come after it, so a thread must
// not share the lock twice.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace jet {

/// Replaces std::shared_mutex, whose MinGW implementation sometimes admits readers beside a writer.
class ReadWriteLock {
public:
    /// Named for use with the standard's lock classes.
    void lock();
    void unlock();
    void lock_shared();
    void unlock_shared();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint32_t readers_ = 0;
    std::uint32_t waitingWriters_ = 0;
    bool writing_ = false;
};

}  // namespace jet
