// Index keys: values in a form whose bytes compare as the values do.
//
// A key is one part a column: a flag byte and, unless the value is null, the value.
//
//  value       flag, ascending  descending
//  not null    7F               80
//  null        00               FF
//
//  type                      value, ascending
//  Boolean                   00 true, FF false
//  Byte                      the byte
//  Integer, Long, Currency   big-endian, highest bit inverted
//  Single, Double, Date      big-endian; highest bit inverted, or all bits if negative
//  Binary                    groups of 8 bytes, 09 between them, the last with its length behind it
//  Guid                      as Binary, in the order in which it is printed
//  Numeric                   FF and the magnitude, big-endian; 00 and its inverse if negative
//  Text, Memo                below
//
// A descending value is the ascending one with all bits inverted, but for the 09 between groups of
// Binary and the sign of Numeric, which stay as they are.
//
// Text: the first 255 characters without the blanks at their end.
//
//  size   content
//  ..     weights of the letters, one or two bytes each
//  1      01
//  ..     accents, a byte a weight, 02 = none; those at the end are left out
//  2      01 01, if kana or hidden characters follow
//  ..     variants of kana, three a byte: 80 | a << 4 | b << 2 | c
//  5      FF 02 80 FF 80, if there are kana; FF once more if hidden characters follow
//  1      01, if hidden characters follow
//  4 x n  hidden characters: 8000 | 7 + 4 x place (2, big-endian), 06, code
//  1      00; a descending text has another 00 behind it, which is not inverted
//
// Hidden are hyphens, apostrophes and control characters; their place is the number of weights
// before them.
//
//   key.push_back(jet::format::index_key::kAscending.notNull);
//
// Constants; any thread.
#pragma once

#include "engine/jet/format/types.h"

#include <array>

namespace jet::format::index_key {

/// The byte that begins the part of a column.
struct Flags {
    std::uint8_t notNull;
    std::uint8_t null;
};
inline constexpr Flags kAscending{0x7F, 0x00};
inline constexpr Flags kDescending{0x80, 0xFF};

constexpr const Flags& flags(bool ascending) { return ascending ? kAscending : kDescending; }

inline constexpr std::uint8_t kTrue = 0x00;
inline constexpr std::uint8_t kFalse = 0xFF;

inline constexpr std::size_t kBinaryGroup = 8;
inline constexpr std::uint8_t kMoreFollows = 0x09;

inline constexpr std::uint8_t kPositive = 0xFF;  ///< sign of Numeric
inline constexpr std::uint8_t kNegative = 0x00;

// ---- Text ----

inline constexpr std::size_t kMaxCharacters = 255;  ///< that take part in a key

inline constexpr std::uint8_t kSeparator = 0x01;
inline constexpr std::uint8_t kNoAccent = 0x02;
inline constexpr std::uint8_t kEnd = 0x00;

// Variants of kana.
inline constexpr std::uint8_t kKanaRare = 2;
inline constexpr std::uint8_t kKanaUsual = 3;  ///< left out at the end
inline constexpr std::size_t kKanaPerByte = 3;
constexpr unsigned kanaByte(unsigned first, unsigned second, unsigned third) {
    return 0x80u | first << 4 | second << 2 | third;
}
inline constexpr std::array<std::uint8_t, 5> kAfterKana{0xFF, 0x02, 0x80, 0xFF, 0x80};
inline constexpr std::uint8_t kBeforeHidden = 0xFF;  ///< behind kana

/// Of a hidden character behind `weights` weights.
constexpr unsigned hiddenPlace(std::size_t weights) {
    return 0x8000u | static_cast<unsigned>(7 + 4 * weights);
}
inline constexpr std::uint8_t kHiddenMark = 0x06;

}  // namespace jet::format::index_key
