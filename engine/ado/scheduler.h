// How events reach the owner's thread.
//
//   auto pump = std::make_shared<ado::HandPump>();
//   ado::Recordset recordset{pump};
//   pump->runUntil([&] { return done; }, std::chrono::seconds{10});
//
// Any thread may post.
//
// A program with windows posts a message to itself; a program without them turns the pump by hand.
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

    /// Has `task` run on the owner's thread, later and in the order of the posts. Any thread may
    /// call it; it returns at once.
    virtual void post(std::function<void()> task) = 0;
};

/// Runs the tasks when its owner asks for it.
class HandPump : public Scheduler {
public:
    void post(std::function<void()> task) override;

    /// Runs what has been posted until now; returns how many tasks that were.
    std::size_t run();

    /// Runs tasks as they come until `done` says so or the time is over; returns done().
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

    /// Tasks that wait to be run.
    std::size_t pending() const;

private:
    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> tasks_;
};

}  // namespace ado
