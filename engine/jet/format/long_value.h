// Long values: Memo and Ole, which may be larger than a record. In the record stands a head:
//
//   offset  size  meaning
//   0       4     bits 0 to 29: length in bytes; bit 31: inline; bit 30: in a single row;
//                 neither: in a chain of rows
//   4       4     row id of the row, or of the chain's first; 0 if inline
//   8       4     stamp of a chain, which its first page repeats (data_page.h); else 0
//   12      ..    the value, if it is inline
//
// Rows of long values stand on data pages whose owner is "LVAL", in the maps of their column. A
// single row is the value. A row of a chain has a page to itself:
//
//   offset  size  meaning
//   0       4     row id of the next row, 0 in the last
//   4       ..    a piece of the value
//
// A Memo holds text as any text column does (text.h); its length counts the stored bytes.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format::long_value {

inline constexpr Field<std::uint32_t> kLength{0};
inline constexpr Field<RowId> kRow{4};
inline constexpr Field<std::uint32_t> kStamp{8};
inline constexpr std::size_t kHeadSize = 12;

// Of kLength.
inline constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
inline constexpr std::uint32_t kInline = 0x80000000;
inline constexpr std::uint32_t kSingle = 0x40000000;

// ---- A row of a chain ----

inline constexpr Field<RowId> kNext{0};
inline constexpr std::size_t kPiece = 4;

// ---- The original engine's limits of the forms ----

inline constexpr std::size_t kMaxInline = 64;
inline constexpr std::size_t kMaxRow = 4076;
inline constexpr std::size_t kMaxPiece = kMaxRow - kPiece;

}  // namespace jet::format::long_value
