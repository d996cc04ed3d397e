#include "engine/jet/write/long_value_writer.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/long_value.h"
#include "engine/jet/format/page.h"
#include "engine/jet/write/data_page_edit.h"

#include <algorithm>
#include <vector>

namespace jet {
namespace {

namespace layout = format::long_value;
namespace data_page = format::data_page;

void setHead(Binary& out, std::size_t word, RowId row, std::uint32_t stamp) {
    out.resize(layout::kHeadSize);
    store(out, layout::kLength, static_cast<std::uint32_t>(word));
    store(out, layout::kRow, row);
    store(out, layout::kStamp, stamp);
}

}  // namespace

void LongValueWriter::store(Bytes content, bool inRecord, Binary& field) {
    if (content.empty() || (inRecord && content.size() <= layout::kMaxInline)) {
        setHead(field, content.size() | layout::kInline, RowId{}, 0);
        field.insert(field.end(), content.begin(), content.end());
    } else if (content.size() <= layout::kMaxRow) {
        setHead(field, content.size() | layout::kSingle, storeRow(content), 0);
    } else {
        // The first page's number tells the chain from others as well as any number does.
        const RowId first = storeChain(content);
        setHead(field, content.size(), first, raw(first.page()));
    }
}

RowId LongValueWriter::storeRow(Bytes row) {
    UsageMapWriter& free = maps().free;
    constexpr int kAttempts = 3;
    PageNumber candidate =
        current_ != kNoPage ? current_ : free.lastBefore(format::page::kMaxCount);
    for (int attempt = 0; attempt < kAttempts && candidate != kNoPage; ++attempt) {
        const PagePtr page = pager_.page(candidate);
        const bool usable = DataPage{*page, candidate}.owner() == data_page::kLongValueOwner &&
                            (candidate == current_ || isSound(*page, candidate));
        if (usable && hasRoom(*page, row.size())) {
            current_ = candidate;
            return RowId{candidate, *appendRow(*pager_.edit(candidate), row, 0)};
        }
        if (!usable || freeBytes(*page) < data_page::kMinRoom ||
            slotCount(*page) >= data_page::kMaxSlotsWritten) {
            free.erase(candidate);
        }
        candidate = free.lastBefore(raw(candidate));
    }
    current_ = addPage();
    free.insert(current_);
    return RowId{current_, *appendRow(*pager_.edit(current_), row, 0)};
}

/// From the last piece to the first, as each row names the next one.
RowId LongValueWriter::storeChain(Bytes content) {
    RowId next;
    std::vector<std::uint8_t> row;
    for (std::size_t end = content.size(); end > 0;) {
        const std::size_t start = (end - 1) / layout::kMaxPiece * layout::kMaxPiece;
        row.clear();
        append(row, next.packed());
        const Bytes piece = content.subspan(start, end - start);
        row.insert(row.end(), piece.begin(), piece.end());
        const PageNumber number = addPage();
        const PageEdit page = pager_.edit(number);
        next = RowId{number, *appendRow(*page, row, 0)};
        if (start == 0) jet::store(*page, data_page::kStamp, raw(number));
        end = start;
    }
    return next;
}

PageNumber LongValueWriter::addPage() {
    const PageNumber number = allocator_.allocate();
    formatDataPage(*pager_.edit(number), data_page::kLongValueOwner);
    maps().owned.insert(number);
    return number;
}

void LongValueWriter::remove(Bytes field) {
    if (field.size() < layout::kHeadSize) return;
    const std::uint32_t word = load(field, layout::kLength);
    RowId row = load(field, layout::kRow);
    if ((word & layout::kInline) != 0 || (word & layout::kLengthMask) == 0) return;
    if ((word & layout::kSingle) != 0) return removeRow(row);
    // A ring ends where it comes back to a row that is gone.
    while (row.page() != kNoPage) {
        RowId next;
        {
            const PagePtr page = pager_.page(row.page());
            const auto slot = DataPage{*page, row.page()}.slot(row.slot());
            if (!slot || slot->deleted || slot->bytes.size() < layout::kPiece) return;
            next = load(slot->bytes, layout::kNext);
        }
        removeRow(row);
        row = next;
    }
}

void LongValueWriter::removeRow(RowId row) {
    // Not this column's: leave it alone.
    if (!maps().owned.contains(row.page())) return;
    if (DataPage{*pager_.page(row.page()), row.page()}.owner() != data_page::kLongValueOwner)
        return;
    const PageEdit page = pager_.edit(row.page());
    PageLayout layout{*page, row.page()};
    if (row.slot() >= layout.rows.size()) return;
    layout.rows[row.slot()] = {data_page::kDeleted, {}};
    layout.writeTo(*page);
    const bool empty = std::all_of(layout.rows.begin(), layout.rows.end(), [](const auto& other) {
        return other.flags == data_page::kDeleted;
    });
    if (empty) {
        maps().owned.erase(row.page());
        maps().free.erase(row.page());
        if (current_ == row.page()) current_ = kNoPage;
        allocator_.release(row.page());
    } else if (freeBytes(*page) >= data_page::kRoomAgain) {
        maps().free.insert(row.page());
    }
}

LongValueWriter::Maps& LongValueWriter::maps() {
    if (!maps_) {
        maps_.emplace(Maps{UsageMapWriter{pager_, column_.ownedMap},
                           UsageMapWriter{pager_, column_.freeMap}});
    }
    return *maps_;
}

void LongValueWriter::finish() {
    if (!maps_) return;
    maps_->owned.save(allocator_);
    maps_->free.save(allocator_);
}

}  // namespace jet
