// Usage maps: sets of page numbers, stored as rows.
//
//   offset  size  meaning of an inline map
//   0       1     0
//   1       4     first page of the window
//   5             one bit a page
//
//   offset  size  meaning of a map by reference
//   0       1     1
//   1       4 x n numbers of bitmap pages (type 5), each for 32,736 pages
#pragma once

#include "engine/jet/page_cache.h"

#include <vector>

namespace jet {

inline constexpr std::uint8_t kBitmapPageType = 5;
inline constexpr std::size_t kBitmapOffset = 4;  ///< of the bits on a bitmap page
inline constexpr std::uint32_t kPagesPerBitmap = (kPageSize - kBitmapOffset) * 8;

/// The format addresses the bytes of a file with 31 bits: no file has more pages.
inline constexpr std::uint32_t kMaxFilePages = 524288;

/// The pages of the map whose row is `map`, ascending; a map id of 0 is an empty map. Pages behind
/// the end of the file are listed too: their writer may be about to append them, and if not, the
/// reader counts them as missing. Throws Error{Damaged}.
std::vector<PageNumber> readUsageMap(PageReader& pages, RowId map);

/// The bytes of the map's row, as the layout above says; at least 5. Throws Error{Damaged}.
std::vector<std::uint8_t> readUsageMapRow(PageReader& pages, RowId map);

}  // namespace jet
