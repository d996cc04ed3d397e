// Patience with a file that somebody else is using: it is tried again for up to a second.
//
//   jet::BusyWait wait;
//   while (std::filesystem::exists(path) && wait.again()) {}
//
// Belongs to one thread.
#pragma once

#include <chrono>
#include <random>
#include <thread>

namespace jet {

class BusyWait {
public:
    static constexpr std::chrono::milliseconds kMaxWait{1000};

    /// Sleeps some milliseconds and returns true; false if the attempts have taken a second.
    /// Attempts less than a second apart are one series: a caller who repeats what was refused does
    /// not wait again each time.
    bool again() {
        const auto now = Clock::now();
        if (now - last_ > kMaxWait) deadline_ = now + kMaxWait;
        last_ = now;
        if (now >= deadline_) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds{pause_(random_)});
        last_ = Clock::now();
        return true;
    }

    /// Call after success: the next refusal begins a new series.
    void reset() { last_ = {}; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point last_{};
    Clock::time_point deadline_{};
    // Several that wait for the same file do not wake at the same time.
    std::minstd_rand random_{std::random_device{}()};
    std::uniform_int_distribution<int> pause_{1, 4};
};

}  // namespace jet
