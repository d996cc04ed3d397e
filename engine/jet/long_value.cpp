// Memo and Ole values. In the record stands a header:
//
//   offset  size  meaning
//   0       4     bits 0-29 length in bytes; bit 31: the data follow; bit 30: in one row elsewhere;
//                 neither: in a chain of rows
//   4       4     row id of the (first) row
//   8       4     stamp of a chain
//
// A row of a chain begins with the row id of the next one, 0 in the last.
#include "engine/jet/bytes.h"
#include "engine/jet/data_page.h"
#include "engine/jet/value.h"

#include <unordered_set>

namespace jet {
namespace {

constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kLinkSize = 4;
constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
constexpr std::uint32_t kInlineFlag = 0x80000000;
constexpr std::uint32_t kSingleFlag = 0x40000000;

Bytes longValueRow(PageReader& pages, RowId row) {
    const DataPage page{pages.page(row.page()), row.page()};
    const auto slot = page.slot(row.slot());
    if (page.owner() != kLongValueOwner || !slot || slot->deleted || slot->pointer) {
        throwDamaged(row.page(), "a long value is missing");
    }
    return slot->bytes;
}

Bytes readSingle(PageReader& pages, RowId row, std::size_t length) {
    const Bytes bytes = longValueRow(pages, row);
    if (bytes.size() < length) throwDamaged(row.page(), "a long value is cut short");
    return bytes.first(length);
}

/// Memory is taken only as rows arrive, so a false length costs nothing, and no row is taken twice,
/// so a chain that runs in a ring ends.
Bytes readChain(PageReader& pages, RowId row, std::size_t length, Binary& scratch) {
    std::unordered_set<std::uint32_t> visited;
    scratch.clear();
    while (scratch.size() < length) {
        if (!visited.insert(row.packed()).second) {
            throwDamaged(row.page(), "a long value runs in a ring");
        }
        const Bytes bytes = longValueRow(pages, row);
        if (bytes.size() <= kLinkSize) throwDamaged(row.page(), "a piece of a long value is empty");
        const Bytes data = bytes.subspan(kLinkSize);
        scratch.insert(scratch.end(), data.begin(), data.end());
        const auto next = RowId::fromPacked(load<std::uint32_t>(bytes, 0));
        if (scratch.size() < length && next.page() == kNoPage) {
            throwDamaged(row.page(), "a long value ends early");
        }
        if (scratch.size() > pages.storage().size()) {
            throwDamaged(row.page(), "a long value is larger than the file");
        }
        row = next;
    }
    scratch.resize(length);
    return scratch;
}

}  // namespace

Bytes readLongValue(PageReader& pages, Bytes header, PageNumber page, Binary& scratch) {
    if (header.empty()) return header;
    if (header.size() < kHeaderSize) throwDamaged(page, "the head of a long value is cut short");
    const auto word = load<std::uint32_t>(header, 0);
    const std::size_t length = word & kLengthMask;
    const auto row = RowId::fromPacked(load<std::uint32_t>(header, 4));

    if ((word & kInlineFlag) != 0) {
        if (header.size() - kHeaderSize < length) throwDamaged(page, "a long value is cut short");
        return header.subspan(kHeaderSize, length);
    }
    if (length == 0) return {};
    if ((word & kSingleFlag) != 0) return readSingle(pages, row, length);
    return readChain(pages, row, length, scratch);
}

}  // namespace jet
