// Values: how each type of column is stored in a record.
//
//  type            size  stored as
//  Boolean         0     its bit in the null mask
//  Byte            1     unsigned
//  Integer         2     signed
//  Long            4     signed
//  Currency        8     signed, in ten-thousandths
//  Single          4     IEEE
//  Double          8     IEEE
//  Date            8     IEEE, days since 1899-12-30
//  Binary          ..    the bytes, 510 at most
//  Text            ..    text.h, 255 characters at most
//  Ole             ..    long_value.h
//  Memo            ..    long_value.h, of text
//  Guid            16    three groups of 4, 2 and 2 bytes little-endian, then 8 bytes
//  Numeric         17    0x80 if negative (1), then four words (4 each), highest first
//  InternalBinary  ..    the bytes
//
// The fraction of a Date counts forward from its day, below zero too: -1.25 is 1899-12-29 06:00. A
// Numeric is divided by ten as often as the scale of its column says.
//
//   const std::size_t size = jet::format::value::size(column.type);
//
// Constants; any thread.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

#include <array>

namespace jet::format::value {

inline constexpr std::size_t kGuidSize = 16;

inline constexpr std::size_t kNumericWords = 4;
inline constexpr Field<std::uint8_t> kNumericSign{0};
inline constexpr std::uint8_t kNegative = 0x80;

constexpr Field<std::uint32_t> numericWord(std::size_t index) {
    return {kNumericSign.end() + sizeof(std::uint32_t) * index};
}

inline constexpr std::size_t kNumericSize = numericWord(kNumericWords).offset;
inline constexpr std::uint8_t kMaxDigits = 28;  ///< of Numeric

inline constexpr auto kSizes = [] {
    std::array<std::uint8_t, 256> sizes{};
    const auto set = [&](ColumnType type, std::size_t bytes) {
        sizes[static_cast<std::uint8_t>(type)] = static_cast<std::uint8_t>(bytes);
    };
    set(ColumnType::Byte, 1);
    set(ColumnType::Integer, 2);
    set(ColumnType::Long, 4);
    set(ColumnType::Single, 4);
    set(ColumnType::Currency, 8);
    set(ColumnType::Double, 8);
    set(ColumnType::Date, 8);
    set(ColumnType::Guid, kGuidSize);
    set(ColumnType::Numeric, kNumericSize);
    return sizes;
}();

/// Bytes of a type whose values all have the same size; 0 for the others.
constexpr std::size_t size(ColumnType type) { return kSizes[static_cast<std::uint8_t>(type)]; }

/// The stored bytes of a Guid in the order in which they are printed, and compared in keys.
inline constexpr std::array<std::uint8_t, kGuidSize> kGuidPrinted{3, 2, 1,  0,  5,  4,  7,  6,
                                                                  8, 9, 10, 11, 12, 13, 14, 15};

}  // namespace jet::format::value
