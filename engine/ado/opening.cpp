#include "engine/ado/opening.h"

namespace ado {

Opening::Opening(std::shared_ptr<RowSet> set, std::shared_ptr<Scheduler> scheduler,
                 OpeningEvents events)
    : set_{std::move(set)}, scheduler_{std::move(scheduler)}, events_{std::move(events)} {}

Opening::~Opening() {
    if (fetch_) set_->setLosses(fetch_->outcome().losses);
}

void Opening::fetchAll() {
    if (!set_->scanned()) return;
    Fetch fetch{set_->query(), set_->scanned(), {}};
    fetch.runHere();
    const FetchOutcome outcome = fetch.outcome();
    if (outcome.error) std::rethrow_exception(outcome.error);
    set_->setLosses(outcome.losses);
}

void Opening::fetchInBackground(std::uint32_t firstRows) {
    // Handlers may destroy this opening, so what calls them is a copy.
    const auto progress = [this](std::uint32_t rows) {
        const auto handler = events_.progress;
        handler(rows);
    };
    auto fetch = std::make_unique<Fetch>(set_->query(), set_->scanned(),
                                         FetchEvents{scheduler_, progress, [this] { complete(); }});
    fetch->start(firstRows);
    fetch->waitForFirstRows();
    const FetchOutcome outcome = fetch->outcome();
    if (outcome.error && set_->rows().count() == 0) std::rethrow_exception(outcome.error);
    fetch_ = std::move(fetch);
    fetching_ = true;
}

void Opening::completeLater() {
    fetching_ = true;
    scheduler_->post([this, weak = weak_from_this()] {
        if (!weak.expired()) complete();
    });
}

void Opening::complete() {
    std::exception_ptr failure;
    if (fetch_) {
        const FetchOutcome outcome = fetch_->outcome();
        set_->setLosses(outcome.losses);
        failure = outcome.error;
        fetch_.reset();
    }
    fetching_ = false;
    const auto handler = events_.complete;
    handler(failure);
}

jet::Losses Opening::losses() const {
    if (fetch_) set_->setLosses(fetch_->outcome().losses);
    return set_->losses();
}

}  // namespace ado
