#include "src/ui/main/trace_source.h"

#include "src/text/text.h"

#include <algorithm>
#include <cstddef>

namespace {

bool isNumber(int type) {
    switch (type) {
        case ado::adSmallInt:
        case ado::adInteger:
        case ado::adSingle:
        case ado::adDouble:
        case ado::adCurrency:
        case ado::adUnsignedTinyInt:
        case ado::adNumeric:
            return true;
        default:
            return false;
    }
}

}  // namespace

bool TraceSource::isOpen() const { return recordset_.state() != ado::adStateClosed; }

int TraceSource::columnCount() const {
    return isOpen() ? static_cast<int>(recordset_.fields().count()) : 0;
}

std::wstring TraceSource::fieldName(int column) const {
    return toWide(recordset_.fields()[column].name());
}

/// The headings are painted as they were while another database takes this one's place.
grid::Alignment TraceSource::alignment(int column) const {
    const auto place = static_cast<std::size_t>(column);
    if (!isOpen()) return place < alignments_.size() ? alignments_[place] : grid::Alignment::left;
    const bool number = isNumber(recordset_.fields()[column].type());
    alignments_.resize(std::max(alignments_.size(), place + 1), grid::Alignment::left);
    return alignments_[place] = number ? grid::Alignment::right : grid::Alignment::left;
}

std::int64_t TraceSource::rowCount() const { return isOpen() ? recordset_.rowCount() : 0; }

void TraceSource::cellText(std::int64_t row, int column, std::wstring& text) const {
    cell_.clear();
    if (isOpen()) {
        recordset_.textAt(static_cast<std::uint32_t>(row), static_cast<std::size_t>(column), cell_);
    }
    text.assign(cell_.begin(), cell_.end());
}

std::vector<std::uint32_t> TraceSource::valueRanks(int column) const {
    if (!isOpen()) return {};
    return recordset_.valueRanks(static_cast<std::size_t>(column));
}

std::int64_t TraceSource::currentRow() const {
    if (!isOpen()) return -1;
    const int position = recordset_.absolutePosition();
    return position < 1 ? -1 : position - 1;
}

void TraceSource::setCurrentRow(std::int64_t row) {
    if (isOpen() && row >= 0) recordset_.setAbsolutePosition(static_cast<int>(row) + 1);
}
