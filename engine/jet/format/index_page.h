// Index pages: the nodes of a tree of sorted entries.
//
//   offset  size  meaning
//   0       1     4 leaf, 3 above the leaves
//   1       1     1
//   2       2     free bytes of the entry area
//   4       4     owner: page of the table's definition
//   8       4     0
//   12      4     previous page, 0 = none
//   16      4     next page, 0 = none
//   20      4     tail: above the leaves, the child behind the last entry
//   24      2     prefix: bytes that all entries but the first leave out
//   26      1     level, 0 = leaf
//   27      453   bitmap: bit k set = an entry ends at byte k of the entry area
//   480     3616  entry area
//
// An entry is a key, the row's page (3 bytes) and its slot (1 byte); above the leaves it repeats
// the last entry of a child and adds the child's page (4 bytes). Page numbers are big-endian here,
// so that entries compare byte by byte. The last child has no entry: it is the tail. The first
// entry stands whole; all others leave out the prefix, the first bytes that they share with it, of
// which the child's page is no part.
//
// Leaves are linked over the whole index, pages above them among the children of one parent. The
// root's page never changes: a root that overflows moves its entries to new pages below it.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format::index_page {

inline constexpr Field<std::uint32_t> kOwner{4};
inline constexpr Field<PageNumber> kPrevious{12};
inline constexpr Field<PageNumber> kNext{16};
inline constexpr Field<PageNumber> kTail{20};
inline constexpr Field<std::uint16_t> kPrefix{24};
inline constexpr Field<std::uint8_t> kLevel{26};
inline constexpr std::size_t kBitmap = 27;
inline constexpr std::size_t kBitmapSize = 453;
inline constexpr std::size_t kEntries = kBitmap + kBitmapSize;
inline constexpr std::size_t kCapacity = kPageSize - kEntries;  ///< bytes of the entry area

// ---- An entry, behind its key ----

inline constexpr std::size_t kRowPageSize = 3;
inline constexpr std::size_t kRowSlotSize = 1;
inline constexpr std::size_t kRowIdSize = kRowPageSize + kRowSlotSize;
inline constexpr std::size_t kChildSize = 4;

/// A key is at least the flag byte of one column (index_key.h).
inline constexpr std::size_t kMinEntrySize = 1 + kRowIdSize;

/// A file has at most 2^19 pages, and a page of a tree takes at least two entries.
inline constexpr int kMaxDepth = 20;

}  // namespace jet::format::index_page
