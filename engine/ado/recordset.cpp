// What a recordset promises, put together from its parts: opening.h, view_order.h,
// current_record.h, record_search.h, cells.h and views.h.
#include "engine/ado/recordset.h"

#include "engine/ado/cells.h"
#include "engine/ado/record_search.h"
#include "engine/sql/parse/ast.h"

#include <algorithm>
#include <optional>

namespace ado {
namespace {

const std::shared_ptr<const ValueFormatter>& defaultFormatter() {
    static const auto formatter = std::make_shared<const ValueFormatter>();
    return formatter;
}

void requirePositive(int rows) {
    if (rows < 1) throwInvalidArgument("a number of rows below 1.");
}

/// The failure as one of this layer; nothing if there is none.
std::optional<Error> toFailure(const std::exception_ptr& failure,
                               const std::filesystem::path& path) {
    if (!failure) return std::nullopt;
    try {
        translated(path, [&] { std::rethrow_exception(failure); });
    } catch (const Error& error) {
        return error;
    } catch (const std::exception& error) {
        return Error{kErrorFile, error.what()};
    }
    return std::nullopt;
}

}  // namespace

Recordset::Recordset(std::shared_ptr<Scheduler> scheduler)
    : scheduler_{std::move(scheduler)}, formatter_{defaultFormatter()} {}

Recordset::~Recordset() {
    if (opening_) close();
}

// ---- Settings -----------------------------------------------------------------------------------

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

// ---- Opening and closing ------------------------------------------------------------------------

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
    const sql::Definitions& definitions = connection.definitions();
    std::shared_ptr<Opening> opening;
    const auto fetch = [&] {
        opening = fetched(sql::Query::prepare(database, *select, definitions), asynchronous);
    };
    const bool isLong = definitions.findQuery(select->table) != nullptr;
    translated(connection.path(), [&] { isLong ? connection.run(fetch) : fetch(); });
    attachTo(connection, std::move(opening));
    if (asynchronous && !opening_->isFetching()) opening_->completeLater();
}

/// The rows of a query, all of them or, in the background, the first ones.
std::shared_ptr<Opening> Recordset::fetched(std::shared_ptr<const sql::Query> query,
                                            bool asynchronous) {
    auto opening = openingOf(std::make_shared<RowSet>(std::move(query)));
    if (asynchronous && cursorLocation_ == adUseClient && opening->set().scanned()) {
        opening->fetchInBackground(
            static_cast<std::uint32_t>(std::max(1, properties_[u"Initial Fetch Size"].value())));
    } else {
        opening->fetchAll();
    }
    return opening;
}

std::shared_ptr<Opening> Recordset::openingOf(std::shared_ptr<RowSet> set) {
    return std::make_shared<Opening>(
        std::move(set), scheduler_,
        OpeningEvents{[this](std::uint32_t progress) { onProgress(progress); },
                      [this](const std::exception_ptr& failure) { onComplete(failure); }});
}

void Recordset::attachTo(Connection& connection, std::shared_ptr<Opening> opening) {
    opening_ = std::move(opening);
    opening_->set().views().add(*this);
    connection_ = &connection;
    connection.attach(*this);
    current_ = {};
}

void Recordset::close() {
    requireOpen();
    opening_->set().views().remove(*this);
    connection_->detach(*this);
    connection_ = nullptr;
    opening_.reset();
    order_ = {};
}

int Recordset::state() const {
    if (!opening_) return adStateClosed;
    return opening_->isFetching() ? adStateOpen | adStateFetching : adStateOpen;
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
    copy->attachTo(*connection_, copy->openingOf(opening_->sharedSet()));
    return copy;
}

void Recordset::requireOpen() const {
    if (!opening_) throwClosed();
}

void Recordset::requireClosed() const {
    if (opening_) throwOpen();
}

RowSet& Recordset::set() const {
    requireOpen();
    return opening_->set();
}

// ---- Events -------------------------------------------------------------------------------------

void Recordset::onProgress(std::uint32_t progress) {
    if (!fetchProgress) return;
    const auto handler = fetchProgress;  // which may close this recordset or put up another handler
    handler(progress, std::max(set().expectedRows(), progress), adStatusOK);
}

/// Handlers of orderChanged may close recordsets, this one included.
void Recordset::onComplete(const std::exception_ptr& failure) {
    const std::optional<Error> error = toFailure(failure, connection_->path());
    const std::weak_ptr<Opening> opening = opening_;
    const std::shared_ptr<RowSet> set = opening_->sharedSet();
    set->views().each([](Recordset& view) { view.sortAgain(); });
    if (opening.expired() || !fetchComplete) return;
    const auto handler = fetchComplete;
    handler(error ? &*error : nullptr, error ? adStatusErrorsOccurred : adStatusOK);
}

// ---- Order --------------------------------------------------------------------------------------

void Recordset::setSort(std::u16string_view sort) {
    if (!opening_ && sort.empty()) return;
    requireOpen();
    translated(connection_->path(), [&] { order_.sort(set(), sort); });
    current_ = {};
    if (orderChanged) orderChanged();
    if (moveComplete && opening_) moveComplete();
}

/// Sorts the rows that came after the sort among the others; the current record stays current.
void Recordset::sortAgain() {
    const std::uint32_t count = rowCount();
    const bool on = !current_.bof(count) && !current_.eof(count);
    const std::uint32_t row = on ? order_.rowAt(current_.position()) : 0;
    if (!order_.sortAgain(set())) return;
    if (on) current_ = CurrentRecord::at(order_.rows().positionOf(row), count);
    if (orderChanged) orderChanged();
}

// ---- The current record -------------------------------------------------------------------------

std::uint32_t Recordset::rowCount() const { return set().rows().count(); }

int Recordset::recordCount() const { return static_cast<int>(rowCount()); }

jet::Losses Recordset::losses() const {
    requireOpen();
    return opening_->losses();
}

bool Recordset::bof() const { return current_.bof(rowCount()); }

bool Recordset::eof() const { return current_.eof(rowCount()); }

int Recordset::absolutePosition() const { return current_.absolutePosition(rowCount()); }

void Recordset::moveTo(const CurrentRecord& wanted) {
    const bool moved = wanted != current_;
    current_ = wanted;
    if (moved && moveComplete) moveComplete();
}

void Recordset::moveFirst() { moveTo(CurrentRecord::first(rowCount())); }

void Recordset::moveLast() { moveTo(CurrentRecord::last(rowCount())); }

void Recordset::moveNext() { moveTo(current_.next(rowCount())); }

void Recordset::movePrevious() { moveTo(current_.previous(rowCount())); }

void Recordset::setAbsolutePosition(int position) {
    const std::uint32_t count = rowCount();
    if (count == 0) throwNoCurrentRecord();
    if (position < 1) throwInvalidArgument("a position below 1.");
    moveTo(CurrentRecord::at(static_cast<std::uint32_t>(position - 1), count));
}

std::uint32_t Recordset::currentPosition() const {
    current_.requireRow(rowCount());
    return current_.position();
}

jet::Value Recordset::currentValue(std::size_t field) {
    const std::uint32_t row = order_.rowAt(currentPosition());
    return translated(connection_->path(), [&] { return set().rows().value(row, field); });
}

// ---- Search and texts ---------------------------------------------------------------------------

void Recordset::find(std::u16string_view criterion, int skipRecords, int direction) {
    requireOpen();
    if (direction != adSearchForward && direction != adSearchBackward) {
        throwInvalidArgument("a direction that is neither forward nor backward.");
    }
    FindCriterion wanted{criterion, columns()};
    const std::int64_t start =
        std::int64_t{currentPosition()} + std::int64_t{skipRecords} * direction;
    const std::uint32_t count = rowCount();
    std::optional<std::int64_t> found = start;
    if (start >= 0 && start < count) {
        const std::weak_ptr<Opening> opening = opening_;
        RecordSearch search{opening_->sharedSet(), order_.rows(), *connection_};
        found = translated(std::filesystem::path{connection_->path()},
                           [&] { return search.find(wanted, start, direction); });
        if (opening.expired()) throwClosed();
        if (!found) throwCancelled();
    }
    if (*found < 0) return moveTo(CurrentRecord::before());
    if (*found >= count) return moveTo(CurrentRecord::behind());
    moveTo(CurrentRecord::at(static_cast<std::uint32_t>(*found), count));
}

std::u16string Recordset::getString(int format, int rows, std::u16string_view columnDelimiter,
                                    std::u16string_view rowDelimiter,
                                    std::u16string_view nullText) {
    requireOpen();
    if (format != adClipString) throwInvalidArgument("a format other than adClipString.");
    if (rows < adGetRowsRest) throwInvalidArgument("a negative number of rows.");
    const std::uint32_t first = currentPosition();
    const std::uint32_t left = rowCount() - first;
    const std::uint32_t wanted =
        rows == adGetRowsRest ? left : std::min(left, static_cast<std::uint32_t>(rows));
    std::u16string text;
    translated(connection_->path(), [&] {
        const Cells cells = this->cells();
        for (std::uint32_t position = first; position < first + wanted; ++position) {
            cells.appendLine(position, *formatter_, columnDelimiter, nullText, text);
            text.append(rowDelimiter);
        }
    });
    moveTo(CurrentRecord::at(first + wanted, rowCount()));
    return text;
}

// ---- Any row ------------------------------------------------------------------------------------

Cells Recordset::cells() const { return {set(), order_.rows()}; }

jet::Value Recordset::valueAt(std::uint32_t position, std::size_t field) {
    return cells().value(position, field);
}

bool Recordset::textAt(std::uint32_t position, std::size_t field, std::u16string& out) {
    out.clear();  // also where the recordset is closed
    return cells().text(position, field, *formatter_, out);
}

std::vector<std::uint32_t> Recordset::valueRanks(std::size_t field) {
    const Cells cells = this->cells();
    return translated(connection_->path(), [&] { return cells.ranks(field); });
}

std::size_t Recordset::byteCount() const { return set().rows().byteCount() + order_.byteCount(); }

}  // namespace ado
