// Text: UTF-16, little-endian, without an end of its own; or, if it begins with FF FE, compressed:
//
//   offset  size  meaning
//   0       2     FF FE
//   2       ..    stretches of one byte a unit and of two bytes a unit in turn, beginning with one
//                 byte a unit; a zero byte changes from one kind to the other
//
// The stretches belong to the value, not to the column: any text may be stored in either form. A
// unit that has a zero byte (U+0100, U+4E00) cannot be compressed.
#pragma once

#include "engine/jet/format/types.h"

#include <array>

namespace jet::format::text {

inline constexpr std::array<std::uint8_t, 2> kCompressed{0xFF, 0xFE};
inline constexpr std::uint8_t kChange = 0;

/// Bytes of a unit that is stored plainly.
inline constexpr std::size_t kUnitSize = 2;

/// The original engine compresses no Memo of more characters.
inline constexpr std::size_t kMaxCompressedMemo = 1024;

/// A Text column has at most this many bytes a value: 255 characters.
inline constexpr std::size_t kMaxSize = 510;

}  // namespace jet::format::text
