// Data pages: rows packed at the end of the page, behind a table of slots.
//
//   offset  size   meaning
//   0       1      1
//   1       1      1
//   2       2      free bytes, between the slots and the rows
//   4       4      owner: page of the table's definition, "LVAL" for long values, 0 for usage maps
//   8       4      first page of a long value in a chain: its stamp; else 0
//   12      2      number of slots
//   14      2 x n  slots
//
// A slot has the offset of its row in bits 0 to 12, and two flags:
//
//  0x0000  a row
//  0x4000  a pointer: the record moved, and the row's first 4 bytes are the row id it has now
//  0x8000  a record that moved here and is reached only through its pointer
//  0xC000  deleted; the offset is the end of the row above, as there are no bytes
//
// Row 0 ends with the page, every other row where the one above it begins: offsets never ascend.
// Slots are not used again, since a row id is the name by which indexes know a row.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format::data_page {

inline constexpr Field<std::uint32_t> kOwner{4};
inline constexpr Field<std::uint32_t> kStamp{8};
inline constexpr Field<std::uint16_t> kSlotCount{12};
inline constexpr std::size_t kSlots = 14;
inline constexpr std::size_t kSlotSize = 2;

constexpr Field<std::uint16_t> slot(std::size_t index) { return {kSlots + kSlotSize * index}; }

/// The first byte behind the slots.
constexpr std::size_t slotsEnd(std::size_t count) { return kSlots + kSlotSize * count; }

inline constexpr std::uint16_t kOffsetMask = 0x1FFF;
inline constexpr std::uint16_t kFlagMask = 0xC000;
inline constexpr std::uint16_t kPointer = 0x4000;
inline constexpr std::uint16_t kMoved = 0x8000;
inline constexpr std::uint16_t kDeleted = kPointer | kMoved;

/// Of a row that is a pointer.
inline constexpr Field<RowId> kTarget{0};

inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;  ///< "LVAL"

/// Bytes for rows and their slots.
inline constexpr std::size_t kCapacity = kPageSize - kSlots;

/// A row id has one byte for the slot; the original engine uses 255 of them.
inline constexpr unsigned kMaxSlots = 256;
inline constexpr unsigned kMaxSlotsWritten = 255;

/// Steps from a pointer to its record. The original engine keeps it one step away.
inline constexpr int kMaxHops = 16;

/// The original engine's rule for the map of pages with room: a page with less than the first
/// leaves it, one that has the second again comes back.
inline constexpr std::size_t kMinRoom = 50;
inline constexpr std::size_t kRoomAgain = 100;

}  // namespace jet::format::data_page
