#include "engine/ado/fetch.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace ado {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kProgressStep = 1000;

/// Between two progress events: an owner that only counts rows would not get round to drawing.
constexpr auto kProgressPause = std::chrono::milliseconds{10};

/// Rows between two looks at progress.
constexpr std::uint64_t kStretch = 1024;

/// Rows of the table that may be tried before those that were found are shown, few as they are:
/// some 10 ms.
constexpr std::uint64_t kPatience = 65'536;

constexpr auto kCancelLimit = std::chrono::milliseconds{40};

/// Apart from the rest, because a task in the scheduler's queue must not keep the scheduler alive.
struct Progress {
    std::atomic<bool> pending{false};    // set by the worker, cleared by the owner
    std::atomic<std::uint32_t> rows{0};  // set by the worker, read by the owner
};

}  // namespace

/// What the owner's thread and the worker share.
struct Fetch::Shared {
    std::shared_ptr<const sql::Query> query;
    std::shared_ptr<ScannedRows> rows;
    std::shared_ptr<Scheduler> scheduler;
    std::weak_ptr<FetchEvents> events;
    std::uint32_t firstRows = 0;

    std::shared_ptr<Progress> progress = std::make_shared<Progress>();

    std::atomic<bool> cancelled{false};  // set by the owner, read by the worker

    std::mutex mutex;
    std::condition_variable changed;
    bool firstRowsReady = false;  // guarded by mutex, as is outcome
    FetchOutcome outcome;
};

/// The scan itself; runs on one thread from beginning to end.
class Fetch::Worker {
public:
    explicit Worker(std::shared_ptr<Shared> shared)
        : shared_{*shared}, keptAlive_{std::move(shared)}, store_{shared_.rows->store()} {}

    void run() {
        std::exception_ptr error;
        try {
            postProgress(0);
            if (!shared_.query->alwaysEmpty()) scan();
        } catch (...) {
            error = std::current_exception();
        }
        store_.finish();
        finish(error);
    }

private:
    void scan() {
        jet::TableScan scan{shared_.rows->table()};
        const auto filter = shared_.query->rowFilter();
        while (!shared_.cancelled.load(std::memory_order_relaxed) && scan.next()) {
            take(scan, filter.get());
            ++tried_;
            if (!firstRowsReady_ && store_.appended() >= shared_.firstRows) announceFirstRows(scan);
            if (tried_ % kStretch == 0) look(scan);
        }
        losses_ = scan.losses();
    }

    void take(jet::TableScan& scan, sql::RowFilter* filter) {
        const bool matches = !filter || filter->matches(scan.record(), scan.pages());
        if (filter && !filter->lost().empty()) scan.loseFields(filter->lost());
        if (!matches) return;
        store_.append(scan.rowId(), scan.record(), lost_);
        if (!lost_.empty()) scan.loseFields(lost_);
    }

    /// From time to time: shows rows that came slowly, and tells the owner how far it is.
    void look(const jet::TableScan& scan) {
        if (tried_ % kPatience == 0) {
            store_.publishIfDoubled();
            if (!firstRowsReady_) announceFirstRows(scan);
        }
        const std::uint32_t reached = store_.count() / kProgressStep * kProgressStep;
        if (reached <= reported_ || Clock::now() - lastPost_ < kProgressPause) return;
        losses_ = scan.losses();
        postProgress(reached);
    }

    void announceFirstRows(const jet::TableScan& scan) {
        firstRowsReady_ = true;
        store_.publish();
        const std::lock_guard lock{shared_.mutex};
        shared_.firstRowsReady = true;
        shared_.outcome.losses = scan.losses();
        shared_.changed.notify_all();
    }

    void postProgress(std::uint32_t rows) {
        reported_ = rows;
        lastPost_ = Clock::now();
        shared_.progress->rows.store(rows);
        {
            const std::lock_guard lock{shared_.mutex};
            shared_.outcome.losses = losses_;
        }
        if (!shared_.scheduler || shared_.progress->pending.exchange(true)) return;
        shared_.scheduler->post([progress = shared_.progress, weak = shared_.events] {
            progress->pending.store(false);
            if (const auto events = weak.lock()) events->progress(progress->rows.load());
        });
    }

    void finish(std::exception_ptr error) {
        const std::uint32_t reached = store_.count() / kProgressStep * kProgressStep;
        if (reached > reported_) postProgress(reached);
        {
            const std::lock_guard lock{shared_.mutex};
            shared_.outcome = {true, std::move(error), losses_};
            shared_.firstRowsReady = true;
            shared_.changed.notify_all();
        }
        if (!shared_.scheduler || shared_.cancelled.load()) return;
        shared_.scheduler->post([weak = shared_.events] {
            if (const auto events = weak.lock()) events->complete();
        });
    }

    Shared& shared_;
    const std::shared_ptr<Shared> keptAlive_;
    RowStore& store_;
    std::uint64_t tried_ = 0;
    std::uint32_t reported_ = 0;
    Clock::time_point lastPost_;
    bool firstRowsReady_ = false;
    jet::Losses losses_;
    std::vector<jet::LostField> lost_;  ///< of the current row
};

Fetch::Fetch(std::shared_ptr<const sql::Query> query, std::shared_ptr<ScannedRows> rows,
             FetchEvents events)
    : shared_{std::make_shared<Shared>()},
      events_{std::make_shared<FetchEvents>(std::move(events))} {
    shared_->query = std::move(query);
    shared_->rows = std::move(rows);
}

Fetch::~Fetch() { cancel(); }

void Fetch::start(std::uint32_t firstRows) {
    shared_->firstRows = firstRows;
    shared_->scheduler = events_->scheduler;
    shared_->events = events_;
    thread_ = std::thread{[shared = shared_]() mutable { Worker{std::move(shared)}.run(); }};
}

void Fetch::runHere() { Worker{shared_}.run(); }

void Fetch::waitForFirstRows() {
    std::unique_lock lock{shared_->mutex};
    shared_->changed.wait(lock, [this] { return shared_->firstRowsReady; });
}

void Fetch::cancel() {
    events_.reset();
    shared_->cancelled.store(true);
    if (!thread_.joinable()) return;
    std::unique_lock lock{shared_->mutex};
    const bool ended =
        shared_->changed.wait_for(lock, kCancelLimit, [this] { return shared_->outcome.finished; });
    lock.unlock();
    // The thread holds what it uses, so it may outlive this object.
    ended ? thread_.join() : thread_.detach();
}

FetchOutcome Fetch::outcome() const {
    const std::lock_guard lock{shared_->mutex};
    return shared_->outcome;
}

}  // namespace ado
