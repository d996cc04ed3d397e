// One opening of a recordset, from open() or clone() to close(): its rows, and the fetch that adds
// them. Keep a std::weak_ptr to it to check later whether the recordset has been closed or
// reopened.
//
//   auto set = std::make_shared<ado::RowSet>(query);
//   auto opening = std::make_shared<ado::Opening>(set, scheduler, ado::OpeningEvents{});
//   opening->fetchAll();
//   show(set->rows().count());
//
// One thread: the owner's. Events arrive there, and never after it is destroyed.
#pragma once

#include "engine/ado/fetch.h"
#include "engine/ado/row_set.h"

#include <exception>
#include <functional>
#include <memory>

namespace ado {

struct OpeningEvents {
    /// Rows so far, a multiple of 1,000.
    std::function<void(std::uint32_t rows)> progress;

    /// The fetch has ended; `failure` is null if every row could be read.
    std::function<void(const std::exception_ptr& failure)> complete;
};

class Opening : public std::enable_shared_from_this<Opening> {
public:
    Opening(std::shared_ptr<RowSet> set, std::shared_ptr<Scheduler> scheduler,
            OpeningEvents events);

    /// Cancels a running fetch, without its event.
    ~Opening();
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

    RowSet& set() const { return *set_; }
    const std::shared_ptr<RowSet>& sharedSet() const { return set_; }

    /// Fetches all rows, without an event. Throws the failure of the fetch: jet::Error, sql::Error.
    void fetchAll();

    /// Returns when `firstRows` rows have been read; the rest follows. Throws as fetchAll() if the
    /// fetch fails before its first row. Requires: a scheduler.
    void fetchInBackground(std::uint32_t firstRows);

    /// Posts the completion event for rows that are all in memory. Requires: a scheduler.
    void completeLater();

    /// Whether complete() is still to come.
    bool isFetching() const { return fetching_; }

    /// What could not be read so far.
    jet::Losses losses() const;

private:
    void complete();

    std::shared_ptr<RowSet> set_;
    std::shared_ptr<Scheduler> scheduler_;
    OpeningEvents events_;
    std::unique_ptr<Fetch> fetch_;  ///< while it runs in the background
    bool fetching_ = false;
};

}  // namespace ado
