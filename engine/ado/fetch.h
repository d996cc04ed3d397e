// Fills a row store from a scan of the table, on a thread of its own or on the caller's.
//
//   ado::Fetch fetch{query, rows, {.scheduler = pump, .progress = show, .complete = sort}};
//   fetch.start(100);
//   fetch.waitForFirstRows();  // the rest follows in the background
//
// One thread: the owner's. Events arrive on that thread through the scheduler, and never after
// cancel().
#pragma once

#include "engine/ado/scanned_rows.h"
#include "engine/ado/scheduler.h"

#include <exception>
#include <functional>
#include <memory>
#include <thread>

namespace ado {

/// How a fetch ended.
struct FetchOutcome {
    bool finished = false;
    std::exception_ptr error;  ///< null if every row was read
    jet::Losses losses;        ///< what could not be read, also while it runs
};

struct FetchEvents {
    std::shared_ptr<Scheduler> scheduler;

    /// Rows so far, a multiple of 1,000. At most one event is pending: an owner that falls behind
    /// gets only the latest number.
    std::function<void(std::uint32_t rows)> progress;

    std::function<void()> complete;
};

class Fetch {
public:
    Fetch(std::shared_ptr<const sql::Query> query, std::shared_ptr<ScannedRows> rows,
          FetchEvents events);

    /// Cancels.
    ~Fetch();
    Fetch(const Fetch&) = delete;
    Fetch& operator=(const Fetch&) = delete;

    /// Starts on a new thread. `firstRows` rows are published as soon as they have been read.
    void start(std::uint32_t firstRows);

    /// Fetches all rows on the calling thread, without events.
    void runHere();

    /// Waits for the first rows or the end of the fetch, or until so many rows have been scanned
    /// that a longer wait would be noticeable.
    void waitForFirstRows();

    /// Cancels the fetch and its events. Returns within 50 ms: if the storage has not answered by
    /// then, the thread is detached and ends when it does.
    void cancel();

    FetchOutcome outcome() const;

private:
    struct Shared;
    class Worker;

    std::shared_ptr<Shared> shared_;
    std::shared_ptr<FetchEvents> events_;  ///< the only owner; the thread sees it weakly
    std::thread thread_;
};

}  // namespace ado
