// Usage maps: sets of page numbers. Each is a row of a data page whose owner is 0.
//
//   offset  size   meaning of an inline map
//   0       1      0
//   1       4      first page of the window
//   5       ..     a bit a page
//
//   offset  size   meaning of a map of references
//   0       1      1
//   1       4 x n  bitmap pages, 0 = an empty one
//
// A bitmap page has the bits of 32,736 pages:
//
//   offset  size  meaning
//   0       1     5
//   1       1     1
//   2       2     0
//   4       4092  a bit a page
//
// Bits count from the lowest of the first byte. Rows are 69 bytes when they are made, 512 pages
// inline, and grow by 4 bytes at a time in place.
//
// The map of free pages is row 0 of page 1, whose owner is 1: a set bit is a free page, and pages
// beyond its bits are free too. In a reference map of free pages a bitmap that does not exist has
// all its pages free. Row 1 of the page is a second map, which is empty.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format::usage_map {

enum class Kind : std::uint8_t { Inline = 0, Reference = 1 };

inline constexpr Field<Kind> kKind{0};

// ---- Inline ----

inline constexpr Field<std::uint32_t> kFirstPage{1};
inline constexpr std::size_t kBits = 5;

/// Windows begin with a multiple of eight: where the first window that holds `page` does.
constexpr std::uint32_t windowOf(PageNumber page) { return raw(page) / 8 * 8; }

// ---- References ----

inline constexpr std::size_t kReferences = 1;
inline constexpr std::size_t kReferenceSize = 4;

constexpr Field<PageNumber> reference(std::size_t index) {
    return {kReferences + kReferenceSize * index};
}

/// Requires: a row that has its kind.
constexpr std::size_t referenceCount(std::size_t rowSize) {
    return (rowSize - kReferences) / kReferenceSize;
}

// ---- Bitmap pages ----

inline constexpr std::size_t kBitmapBits = 4;
inline constexpr std::size_t kBitmapSize = kPageSize - kBitmapBits;
inline constexpr std::uint32_t kPagesPerBitmap = kBitmapSize * 8;

// ---- Rows ----

inline constexpr std::size_t kMinRowSize = 5;  ///< shorter ones are damaged
inline constexpr std::size_t kNewRowSize = 69;
inline constexpr std::size_t kGrowth = 4;

inline constexpr std::uint32_t kOwner = 0;  ///< of a page of maps

// ---- The map of free pages ----

inline constexpr RowId kFreePages{PageNumber{1}, 0};
inline constexpr RowId kSecondMap{PageNumber{1}, 1};
inline constexpr std::uint32_t kFreePagesOwner = 1;  ///< of their page

}  // namespace jet::format::usage_map
