#include "engine/jet/read_write_lock.h"

namespace jet {

void ReadWriteLock::lock() {
    std::unique_lock held{mutex_};
    ++waitingWriters_;
    changed_.wait(held, [this] { return !writing_ && readers_ == 0; });
    --waitingWriters_;
    writing_ = true;
}

void ReadWriteLock::unlock() {
    {
        const std::lock_guard held{mutex_};
        writing_ = false;
    }
    changed_.notify_all();
}

void ReadWriteLock::lock_shared() {
    std::unique_lock held{mutex_};
    changed_.wait(held, [this] { return !writing_ && waitingWriters_ == 0; });
    ++readers_;
}

void ReadWriteLock::unlock_shared() {
    bool last = false;
    {
        const std::lock_guard held{mutex_};
        last = --readers_ == 0;
    }
    if (last) changed_.notify_all();
}

}  // namespace jet
