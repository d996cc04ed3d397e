// Opening, fetching and closing. Moving about is in recordset_navigation.cpp.
#include "engine/ado/recordset.h"

#include "engine/sql/parse/ast.h"

#include <algorithm>

namespace ado {
namespace {

const std::shared_ptr<const ValueFormatter>& defaultFormatter() {
    static const auto formatter = std::make_shared<const ValueFormatter>();
    return formatter;
}

void requirePositive(int rows) {
    if (rows < 1) throwInvalidArgument("a number of rows below 1.");
}

}  // namespace

Recordset::Recordset(std::shared_ptr<Scheduler> scheduler)
    : scheduler_{std::move(scheduler)}, formatter_{defaultFormatter()} {}

Recordset::~Recordset() {
    if (set_) close();
}

void Recordset::setCursorLocation(int location) {
    requireClosed();
    if (location != adUseServer && location != adUseClient) {
        throwInvalidArgument("an unknown cursor location.");
    }
    cursorLocation_ = location;
}

void Recordset::setPageSize(int rows) {
    requirePositive(rows);
    pageSize_ = rows;
}

void Recordset::setCacheSize(int rows) {
    requirePositive(rows);
    cacheSize_ = rows;
}

void Recordset::setFormatter(const std::shared_ptr<const ValueFormatter>& formatter) {
    formatter_ = formatter ? formatter : defaultFormatter();
}

void Recordset::open(std::u16string_view source, Connection& connection, int, int, int options) {
    requireClosed();
    const auto& database = connection.database();
    source_ = source;
    const auto statement =
        translated(connection.path(), [&] { return sql::parseStatement(source); });
    const auto* const select = std::get_if<sql::SelectStatement>(&statement);
    if (select == nullptr) return connection.change(statement, scheduler_);
    connection.commit();

    const bool asynchronous =
        options != adOptionUnspecified && (options & adAsyncFetch) != 0 && scheduler_;
    translated(connection.path(), [&] {
        auto query = sql::Query::prepare(database, *select);
        auto set = std::make_shared<RowSet>();
        set->query = query;
        attachTo(connection, std::move(set));
        try {
            openRows(std::move(query), asynchronous);
        } catch (...) {
            close();
            throw;
        }
    });
    if (asynchronous && !fetch_) postComplete();
}

void Recordset::attachTo(Connection& connection, std::shared_ptr<RowSet> set) {
    set_ = std::move(set);
    set_->views.push_back(this);
    connection_ = &connection;
    connection.attach(*this);
    opening_ = std::make_shared<int>();
    place_ = Place::On;
    position_ = 0;
}

void Recordset::openRows(std::shared_ptr<const sql::Query> query, bool asynchronous) {
    if (query->scannedTable()) {
        const auto rows = std::make_shared<ScannedRows>(std::move(query));
        set_->rows = rows;
        fetchRows(rows, asynchronous && cursorLocation_ == adUseClient);
        return;
    }
    const auto rows = std::make_shared<MaterialisedRows>(*query);
    set_->rows = rows;
    set_->skipped = rows->skipped();
}

void Recordset::fetchRows(const std::shared_ptr<ScannedRows>& rows, bool inBackground) {
    auto fetch = std::make_unique<Fetch>(
        set_->query, rows,
        FetchEvents{scheduler_, [this](std::uint32_t progress) { onProgress(progress); },
                    [this] { onComplete(); }});
    if (inBackground) {
        fetch->start(
            static_cast<std::uint32_t>(std::max(1, properties_[u"Initial Fetch Size"].value())));
        fetch->waitForFirstRows();
    } else {
        fetch->runHere();
    }
    const FetchOutcome outcome = fetch->outcome();
    const bool nothingRead = rows->count() == 0 || !inBackground;
    if (outcome.error && nothingRead) std::rethrow_exception(outcome.error);
    if (inBackground) {
        fetch_ = std::move(fetch);
        fetching_ = true;
    } else {
        set_->skipped = outcome.skipped;
    }
}

/// For rows that are all there when an asynchronous open returns.
void Recordset::postComplete() {
    fetching_ = true;
    scheduler_->post([this, weak = std::weak_ptr{opening_}] {
        if (weak.lock()) onComplete();
    });
}

void Recordset::onProgress(std::uint32_t progress) {
    if (!fetchProgress) return;
    const auto* rows = dynamic_cast<const ScannedRows*>(set_->rows.get());
    const std::uint32_t known = rows ? rows->table().definition().rowCount : 0;
    const auto handler = fetchProgress;  // which may close this recordset or put up another handler
    handler(progress, std::max(known, progress), adStatusOK);
}

void Recordset::onComplete() {
    std::optional<Error> failure;
    if (fetch_) {
        const FetchOutcome outcome = fetch_->outcome();
        set_->skipped = outcome.skipped;
        fetch_.reset();
        try {
            if (outcome.error) {
                translated(connection_->path(), [&] { std::rethrow_exception(outcome.error); });
            }
        } catch (const Error& error) {
            failure = error;
        } catch (const std::exception& error) {
            failure = Error{kErrorFile, error.what()};
        }
    }
    fetching_ = false;
    const std::weak_ptr<int> opening = opening_;
    sortViews();
    if (opening.expired() || !fetchComplete) return;
    const auto handler = fetchComplete;
    handler(failure ? &*failure : nullptr, failure ? adStatusErrorsOccurred : adStatusOK);
}

/// Handlers of orderChanged may close recordsets, this one included.
void Recordset::sortViews() {
    const auto set = set_;
    const auto views = set->views;
    for (Recordset* view : views) {
        if (std::find(set->views.begin(), set->views.end(), view) != set->views.end()) {
            view->sortAgain();
        }
    }
}

/// Sorts the rows that came after the sort among the others; the current record stays current. A
/// storage that fails leaves the order as it is: the rows are there all the same.
void Recordset::sortAgain() {
    const auto& permutation = order_.permutation();
    if (!permutation || permutation->count() == set_->rows->count()) return;
    try {
        const bool on = place_ == Place::On && position_ < set_->rows->count();
        const std::uint32_t row = on ? order_.rowAt(position_) : 0;
        order_ = set_->orders.order(*set_->rows, sortColumns_);
        if (on) position_ = order_.positionOf(row);
    } catch (const jet::Error&) {
        return;
    }
    if (orderChanged) orderChanged();
}

void Recordset::close() {
    requireOpen();
    if (fetch_) set_->skipped = fetch_->outcome().skipped;
    fetch_.reset();
    fetching_ = false;
    opening_.reset();
    std::erase(set_->views, this);
    connection_->detach(*this);
    connection_ = nullptr;
    set_.reset();
    order_ = {};
    sort_.clear();
    sortColumns_.clear();
}

int Recordset::state() const {
    if (!set_) return adStateClosed;
    return fetching_ ? adStateOpen | adStateFetching : adStateOpen;
}

std::unique_ptr<Recordset> Recordset::clone(int lockType) {
    requireOpen();
    if (lockType != adLockUnspecified && lockType != adLockReadOnly) {
        throwInvalidArgument("a lock type that a clone cannot have.");
    }
    auto copy = std::make_unique<Recordset>(scheduler_);
    copy->formatter_ = formatter_;
    copy->cursorLocation_ = cursorLocation_;
    copy->pageSize_ = pageSize_;
    copy->cacheSize_ = cacheSize_;
    copy->properties_ = properties_;
    copy->source_ = source_;
    copy->attachTo(*connection_, set_);
    return copy;
}

const sql::Query& Recordset::query() const {
    requireOpen();
    return *set_->query;
}

void Recordset::requireOpen() const {
    if (!set_) throwClosed();
}

void Recordset::requireClosed() const {
    if (set_) throwOpen();
}

}  // namespace ado
