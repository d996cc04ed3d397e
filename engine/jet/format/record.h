// Records: the values of one row.
//
//   offset  size   meaning
//   0       2      number of columns that the table had when the record was written
//   2       ..     fixed part: each fixed column at an offset of its own, null or not
//   ..      ..     values of the variable columns, in the order of their places
//   ..      2      end of the last value       \  backwards, and only if the table had variable
//   ..      2 x n  beginnings, last one first   > columns when the record was written
//   ..      2      n                           /
//   ..      ..     null mask: bit id set = the column is not null
//
// Offsets count from the first byte of the record. The null mask ends the record and has a bit a
// column, lowest first, in whole bytes. A Boolean is its bit: it takes no bytes and is never null.
// A record knows the columns that existed when it was written; later ones are null in it.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format::record {

inline constexpr Field<std::uint16_t> kColumnCount{0};
inline constexpr std::size_t kFixedPart = 2;

constexpr std::size_t maskSize(std::size_t columns) { return (columns + 7) / 8; }

// ---- Variable columns. `mask` is the offset of the null mask. ----

inline constexpr std::size_t kOffsetSize = 2;

constexpr Field<std::uint16_t> variableCount(std::size_t mask) { return {mask - kOffsetSize}; }

/// Where value `index` begins; that behind the last one is where the last one ends.
constexpr Field<std::uint16_t> variableOffset(std::size_t mask, std::size_t index) {
    return {mask - 2 * kOffsetSize - kOffsetSize * index};
}

/// Bytes between the values and the null mask.
constexpr std::size_t trailerSize(std::size_t count) {
    return 2 * kOffsetSize + kOffsetSize * count;
}

/// The usual limit of a record; a page could hold 20 bytes more.
inline constexpr std::size_t kMaxSize = 4060;

}  // namespace jet::format::record
