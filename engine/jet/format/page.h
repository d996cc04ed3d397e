// Pages: a file is an array of pages of 4096 bytes, and the first bytes of each say what it is.
//
//   offset  size  meaning
//   0       1     type
//   1       1     1 on every page in use but the header page
//   2       2     free bytes, as each type of page counts them
//
// A page that was freed keeps its content or has 8 added to its type: whether a page is in use is
// for the map of free pages to say (usage_map.h).
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format {

enum class PageType : std::uint8_t {
    Header = 0,        ///< the first page of the file; pages that were never written, too
    Data = 1,          ///< rows of a table, long values, usage maps
    Definition = 2,    ///< of a table
    Intermediate = 3,  ///< of an index, above the leaves
    Leaf = 4,          ///< of an index
    Bitmap = 5,        ///< of a usage map
};

namespace page {

inline constexpr Field<PageType> kType{0};
inline constexpr Field<std::uint8_t> kMark{1};
inline constexpr Field<std::uint16_t> kFreeBytes{2};

/// Of kMark.
inline constexpr std::uint8_t kInUse = 1;

/// The format addresses the bytes of a file with 31 bits: no file has more pages.
inline constexpr std::uint32_t kMaxCount = 524288;

/// The header, the map of free pages and the catalog: no file has fewer.
inline constexpr std::uint32_t kMinCount = 3;

}  // namespace page
}  // namespace jet::format
