#include "engine/jet/long_value.h"

#include "engine/jet/bytes.h"

#include <string>
#include <unordered_set>

namespace jet {

namespace layout = format::long_value;

void LongValueReader::turnTo(PageNumber number) {
    page_.reset();
    const Bytes bytes = pages_.page(number);
    if (DataPage::hasPossibleSlotCount(bytes)) {
        page_.emplace(bytes, number);
        return;
    }
    page_ = DataPage::withSlotsThatMakeSense(bytes, number);
    pages_.doubt({number, format::data_page::kMaxSlots - 1},
                 "The number of its long values is damaged; found " +
                     std::to_string(page_->slotCount()) + ".");
}

/// Another value stands where this one should: the page is not what it was.
void LongValueReader::throwOtherLength(PageNumber page) {
    throwDamaged(page, "a long value is not as long as its record says");
}

Bytes LongValueReader::rowBytes(RowId row) {
    if (!page_ || page_->number() != row.page()) turnTo(row.page());
    const auto slot = page_->slot(row.slot());
    if (slot && !slot->deleted && !slot->pointer) return slot->bytes;
    const Bytes bytes = page_->bytesWhateverTheSlotSays(row.slot());
    if (bytes.empty()) throwDamaged(row.page(), "a long value is missing");
    pages_.doubt(row, "row " + std::to_string(row.slot()) +
                          ": A record's long value is here, but the slot is marked as "
                          "something else or not counted.");
    return bytes;
}

Bytes LongValueReader::readOther(Bytes header, PageNumber page, Binary& scratch) {
    if (header.empty()) return header;
    if (header.size() < layout::kHeadSize) {
        throwDamaged(page, "the head of a long value is cut short");
    }
    const std::uint32_t word = load(header, layout::kLength);
    const std::size_t length = word & layout::kLengthMask;
    if ((word & layout::kInline) != 0) {
        const Bytes value = header.subspan(layout::kHeadSize);
        if (value.size() < length) throwDamaged(page, "a long value is cut short");
        return value.first(length);
    }
    if (length == 0) return {};
    return chain(load(header, layout::kRow), length, scratch);
}

/// Memory is allocated only as rows arrive, so a false length does no harm, and no row is read
/// twice, so a cyclic chain ends.
Bytes LongValueReader::chain(RowId row, std::size_t length, Binary& scratch) {
    std::unordered_set<std::uint32_t> visited;
    PageNumber page = row.page();
    scratch.clear();
    while (scratch.size() < length) {
        if (!visited.insert(row.packed()).second) {
            throwDamaged(row.page(), "a long value runs in a ring");
        }
        const Bytes bytes = rowBytes(row);
        page = row.page();
        if (bytes.size() <= layout::kPiece) {
            throwDamaged(row.page(), "a piece of a long value is empty");
        }
        const Bytes data = bytes.subspan(layout::kPiece);
        scratch.insert(scratch.end(), data.begin(), data.end());
        const RowId next = load(bytes, layout::kNext);
        if (scratch.size() < length && next.page() == kNoPage) {
            throwDamaged(row.page(), "a long value ends early");
        }
        if (scratch.size() > pages_.storage().size()) {
            throwDamaged(row.page(), "a long value is larger than the file");
        }
        row = next;
    }
    if (scratch.size() != length) throwOtherLength(page);
    return scratch;
}

Bytes readLongValue(PageReader& pages, Bytes header, PageNumber page, Binary& scratch) {
    return LongValueReader{pages}.read(header, page, scratch);
}

}  // namespace jet
