#include "engine/jet/write/long_value_writer.h"

#include "engine/jet/bytes.h"
#include "engine/jet/write/data_page_edit.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace jet {
namespace {

constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kLinkSize = 4;
constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
constexpr std::uint32_t kInlineFlag = 0x80000000;
constexpr std::uint32_t kSingleFlag = 0x40000000;

/// The original engine's limits of the forms.
constexpr std::size_t kMaxInRecord = 64;
constexpr std::size_t kMaxInRow = 4076;
constexpr std::size_t kChunk = kMaxInRow - kLinkSize;

/// A page with less than this is not looked at for more values; one that has this much again is.
constexpr std::size_t kMinRoom = 50;
constexpr std::size_t kRoomAgain = 100;

template <typename T>
void append(Binary& out, T value) {
    const auto* const at = reinterpret_cast<const std::uint8_t*>(&value);
    out.insert(out.end(), at, at + sizeof value);
}

void appendHeader(Binary& out, std::size_t word, RowId row, std::uint32_t stamp) {
    append(out, static_cast<std::uint32_t>(word));
    append(out, row.packed());
    append(out, stamp);
}

}  // namespace

void LongValueWriter::store(Bytes content, bool inRecord, Binary& field) {
    field.clear();
    if (content.empty() || (inRecord && content.size() <= kMaxInRecord)) {
        appendHeader(field, content.size() | kInlineFlag, RowId{}, 0);
        field.insert(field.end(), content.begin(), content.end());
    } else if (content.size() <= kMaxInRow) {
        appendHeader(field, content.size() | kSingleFlag, storeRow(content), 0);
    } else {
        // The first page's number tells the chain from others as well as any number does.
        const RowId first = storeChain(content);
        appendHeader(field, content.size(), first, raw(first.page()));
    }
}

RowId LongValueWriter::storeRow(Bytes row) {
    UsageMapWriter& free = maps().free;
    constexpr int kAttempts = 3;
    PageNumber candidate = current_ != kNoPage ? current_ : free.lastBefore(kMaxFilePages);
    for (int attempt = 0; attempt < kAttempts && candidate != kNoPage; ++attempt) {
        const PagePtr page = pager_.page(candidate);
        const bool usable = DataPage{*page, candidate}.owner() == kLongValueOwner &&
                            (candidate == current_ || isSound(*page, candidate));
        if (usable && hasRoom(*page, row.size())) {
            current_ = candidate;
            return RowId{candidate, *appendRow(*pager_.edit(candidate), row, 0)};
        }
        if (!usable || freeBytes(*page) < kMinRoom || slotCount(*page) >= kMaxRows) {
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
        const std::size_t start = (end - 1) / kChunk * kChunk;
        row.clear();
        append(row, next.packed());
        const Bytes piece = content.subspan(start, end - start);
        row.insert(row.end(), piece.begin(), piece.end());
        const PageNumber number = addPage();
        const PageEdit page = pager_.edit(number);
        next = RowId{number, *appendRow(*page, row, 0)};
        if (start == 0) {
            const std::uint32_t stamp = raw(number);
            std::memcpy(page->data() + 8, &stamp, sizeof stamp);
        }
        end = start;
    }
    return next;
}

PageNumber LongValueWriter::addPage() {
    const PageNumber number = allocator_.allocate();
    formatDataPage(*pager_.edit(number), kLongValueOwner);
    maps().owned.insert(number);
    return number;
}

void LongValueWriter::remove(Bytes field) {
    if (field.size() < kHeaderSize) return;
    const auto word = load<std::uint32_t>(field, 0);
    auto row = RowId::fromPacked(load<std::uint32_t>(field, 4));
    if ((word & kInlineFlag) != 0 || (word & kLengthMask) == 0) return;
    if ((word & kSingleFlag) != 0) return removeRow(row);
    // A ring ends where it comes back to a row that is gone.
    while (row.page() != kNoPage) {
        RowId next;
        {
            const PagePtr page = pager_.page(row.page());
            const auto slot = DataPage{*page, row.page()}.slot(row.slot());
            if (!slot || slot->deleted || slot->bytes.size() < kLinkSize) return;
            next = RowId::fromPacked(load<std::uint32_t>(slot->bytes, 0));
        }
        removeRow(row);
        row = next;
    }
}

void LongValueWriter::removeRow(RowId row) {
    // Not this column's: leave it alone.
    if (!maps().owned.contains(row.page())) return;
    if (DataPage{*pager_.page(row.page()), row.page()}.owner() != kLongValueOwner) return;
    const PageEdit page = pager_.edit(row.page());
    PageLayout layout{*page, row.page()};
    if (row.slot() >= layout.rows.size()) return;
    layout.rows[row.slot()] = {kDeletedSlot, {}};
    layout.writeTo(*page);
    const bool empty = std::all_of(layout.rows.begin(), layout.rows.end(),
                                   [](const auto& other) { return other.flags == kDeletedSlot; });
    if (empty) {
        maps().owned.erase(row.page());
        maps().free.erase(row.page());
        if (current_ == row.page()) current_ = kNoPage;
        allocator_.release(row.page());
    } else if (freeBytes(*page) >= kRoomAgain) {
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
