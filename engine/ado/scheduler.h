// How events reach the owner's thread.
//
//   auto pump = std::make_shared<ado::HandPump>();
//   ado::Recordset recordset{pump};
//   pump->runUntil([&] { return done; }, std::chrono::seconds{10});
//
// Any thread may post.
//
// A program with windows posts a message to itself; a program without windows runs the pump.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace ado {

class Scheduler {
public:
    virtual ~Scheduler() = default;

    /// Queues `task` to run on the owner's thread, in the order of the posts, and returns at once.
    /// Any thread may call.
    virtual void post(std::function<void()> task) = 0;
};

/// Runs the tasks when its owner calls run() or runUntil().
class HandPump : public Scheduler {
public:
    void post(std::function<void()> task) override;

    /// Runs all tasks posted so far and returns their number.
    std::size_t run();

    /// Runs tasks as they arrive until `done` returns true or the time is up; returns done().
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

    /// Tasks in the queue.
    std::size_t pending() const;

private:
    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> tasks_;
};

}  // namespace ado
