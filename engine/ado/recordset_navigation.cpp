// Moving about in an open recordset: position, order, search and the values of rows.
#include "engine/ado/find_criterion.h"
#include "engine/ado/recordset.h"

#include <algorithm>

namespace ado {

std::uint32_t Recordset::rowCount() const {
    requireOpen();
    return set_->rows->count();
}

int Recordset::recordCount() const { return static_cast<int>(rowCount()); }

bool Recordset::bof() const { return rowCount() == 0 || place_ == Place::Before; }

bool Recordset::eof() const { return rowCount() == 0 || place_ == Place::Behind; }

void Recordset::moveTo(Place place, std::uint32_t position) {
    const bool moved = place != place_ || (place == Place::On && position != position_);
    place_ = place;
    position_ = position;
    if (moved && moveComplete) moveComplete();
}

void Recordset::moveFirst() {
    if (rowCount() == 0) throwNoCurrentRecord();
    moveTo(Place::On, 0);
}

void Recordset::moveLast() {
    const std::uint32_t count = rowCount();
    if (count == 0) throwNoCurrentRecord();
    moveTo(Place::On, count - 1);
}

void Recordset::moveNext() {
    if (eof()) throwNoCurrentRecord();
    const std::uint32_t next = place_ == Place::Before ? 0 : position_ + 1;
    moveTo(next < rowCount() ? Place::On : Place::Behind, next);
}

void Recordset::movePrevious() {
    if (bof()) throwNoCurrentRecord();
    const std::uint32_t here = place_ == Place::Behind ? rowCount() : position_;
    moveTo(here > 0 ? Place::On : Place::Before, here > 0 ? here - 1 : 0);
}

int Recordset::absolutePosition() const {
    if (rowCount() == 0) return adPosUnknown;
    if (place_ == Place::Before) return adPosBOF;
    return place_ == Place::Behind ? adPosEOF : static_cast<int>(position_) + 1;
}

void Recordset::setAbsolutePosition(int position) {
    if (rowCount() == 0) throwNoCurrentRecord();
    if (position < 1) throwInvalidArgument("a position below 1.");
    const auto wanted = static_cast<std::uint32_t>(position - 1);
    moveTo(wanted < rowCount() ? Place::On : Place::Behind, wanted);
}

jet::Skipped Recordset::skipped() const {
    requireOpen();
    return fetch_ ? fetch_->outcome().skipped : set_->skipped;
}

void Recordset::setSort(std::u16string_view sort) {
    if (!set_ && sort.empty()) return;
    auto sortColumns = parseSort(sort, columns());
    order_ = translated(connection_->path(),
                        [&] { return set_->orders.order(*set_->rows, sortColumns); });
    sort_ = sort;
    sortColumns_ = std::move(sortColumns);
    place_ = Place::On;
    position_ = 0;
    if (orderChanged) orderChanged();
    if (moveComplete && set_) moveComplete();
}

std::uint32_t Recordset::currentRow() const {
    if (bof() || eof()) throwNoCurrentRecord();
    return order_.rowAt(position_);
}

void Recordset::find(std::u16string_view criterion, int skipRecords, int direction) {
    requireOpen();
    if (direction != adSearchForward && direction != adSearchBackward) {
        throwInvalidArgument("a direction that is neither forward nor backward.");
    }
    FindCriterion wanted{criterion, columns()};
    currentRow();
    const std::int64_t count = rowCount();
    std::int64_t position = std::int64_t{position_} + std::int64_t{skipRecords} * direction;
    if (position >= 0 && position < count) {
        const auto matches = textMatches(wanted);
        position = matches ? findText(*matches, position, direction)
                           : findRow(wanted, position, direction);
    }
    if (position < 0) return moveTo(Place::Before, 0);
    if (position >= count) return moveTo(Place::Behind, 0);
    moveTo(Place::On, static_cast<std::uint32_t>(position));
}

/// Null if the criterion is no search for a text in the file.
std::shared_ptr<TextMatches> Recordset::textMatches(const FindCriterion& criterion) {
    const std::u16string* const pattern = criterion.textPattern();
    auto rows = std::dynamic_pointer_cast<const ScannedRows>(set_->rows);
    if (pattern == nullptr || !rows) return nullptr;
    if (!set_->matches || !set_->matches->isFor(criterion.column(), *pattern)) {
        set_->matches =
            std::make_shared<TextMatches>(std::move(rows), criterion.column(), *pattern);
    }
    return set_->matches;
}

/// Who runs the search may let the owner do something else meanwhile, such as close this recordset.
std::int64_t Recordset::findText(TextMatches& matches, std::int64_t position, int direction) {
    const std::weak_ptr<int> opening = opening_;
    const RowOrder order = order_;
    const std::uint32_t count = rowCount();
    std::atomic<bool>& stop = connection_->stopFind_;
    stop = false;
    translated(std::filesystem::path{connection_->path()}, [&] {
        connection_->run([&] { position = matches.find(order, position, count, direction, stop); });
    });
    if (opening.expired()) throwClosed();
    if (stop) throwCancelled();
    return position;
}

std::int64_t Recordset::findRow(FindCriterion& criterion, std::int64_t position, int direction) {
    const std::int64_t count = rowCount();
    translated(connection_->path(), [&] {
        const Pass pass{*set_->rows};
        while (
            position >= 0 && position < count &&
            !criterion.matches(*set_->rows, order_.rowAt(static_cast<std::uint32_t>(position)))) {
            position += direction;
        }
    });
    return position;
}

std::u16string Recordset::getString(int format, int rows, std::u16string_view columnDelimiter,
                                    std::u16string_view rowDelimiter,
                                    std::u16string_view nullText) {
    requireOpen();
    if (format != adClipString) throwInvalidArgument("a format other than adClipString.");
    if (rows < adGetRowsRest) throwInvalidArgument("a negative number of rows.");
    currentRow();
    const std::uint32_t left = rowCount() - position_;
    const std::uint32_t wanted =
        rows == adGetRowsRest ? left : std::min(left, static_cast<std::uint32_t>(rows));
    std::u16string text;
    translated(connection_->path(), [&] {
        for (std::uint32_t i = 0; i < wanted; ++i) {
            appendRow(order_.rowAt(position_ + i), columnDelimiter, nullText, text);
            text.append(rowDelimiter);
        }
    });
    const std::uint32_t next = position_ + wanted;
    moveTo(next < rowCount() ? Place::On : Place::Behind, next);
    return text;
}

void Recordset::appendRow(std::uint32_t row, std::u16string_view columnDelimiter,
                          std::u16string_view nullText, std::u16string& out) {
    const std::size_t count = columns().size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) out.append(columnDelimiter);
        const std::size_t before = out.size();
        set_->rows->appendText(row, i, *formatter_, out);
        const bool maybeNull = out.size() == before && !nullText.empty();
        if (maybeNull && jet::isNull(set_->rows->value(row, i))) out.append(nullText);
    }
}

jet::Value Recordset::currentValue(std::size_t field) {
    requireOpen();
    const std::uint32_t row = currentRow();
    return translated(connection_->path(), [&] { return set_->rows->value(row, field); });
}

jet::Value Recordset::valueAt(std::uint32_t position, std::size_t field) {
    if (position >= rowCount() || field >= columns().size()) return {};
    try {
        return set_->rows->value(order_.rowAt(position), field);
    } catch (const jet::Error&) {
        return {};
    }
}

bool Recordset::textAt(std::uint32_t position, std::size_t field, std::u16string& out) {
    out.clear();
    if (position >= rowCount() || field >= columns().size()) return false;
    try {
        return set_->rows->appendText(order_.rowAt(position), field, *formatter_, out);
    } catch (const jet::Error&) {
        out.clear();
        return false;
    }
}

std::vector<std::uint32_t> Recordset::valueRanks(std::size_t field) {
    const std::uint32_t count = rowCount();
    const std::vector<std::uint32_t> ranks =
        translated(connection_->path(), [&] { return denseRanks(*set_->rows, field, count); });
    std::vector<std::uint32_t> byPosition(count);
    for (std::uint32_t position = 0; position < count; ++position) {
        byPosition[position] = ranks[order_.rowAt(position)];
    }
    return byPosition;
}

std::size_t Recordset::byteCount() const {
    requireOpen();
    const auto& permutation = order_.permutation();
    return set_->rows->byteCount() + (permutation ? permutation->byteCount() : 0);
}

}  // namespace ado
