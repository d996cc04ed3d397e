// Table definitions: the columns of a table, its indexes, and the maps of its pages.
//
// A definition stands on one page or on several, chained:
//
//   offset  size  meaning
//   0       1     2
//   1       1     1
//   2       2     free bytes, 8 fewer than there are
//   4       4     next page, 0 = none
//   8       ..    the definition
//
// The first page whole, and of the others all behind byte 8, are one buffer. Offsets in it:
//
//   offset  size  meaning
//   8       4     length of the whole, up to its last byte
//   12      4     0x659
//   16      4     number of rows
//   20      4     last autonumber handed out
//   24      1     step of the autonumber, 1
//   40      1     'N' user table, 'S' system table
//   41      2     columns ever: the number of columns of a new record
//   43      2     variable columns ever: the number of variable columns of a new record
//   45      2     columns
//   47      4     logical indexes
//   51      4     physical indexes
//   55      4     row id of the map of the table's data pages
//   59      4     row id of the map of those with room
//   63      12 x  index counters, one a physical index
//   ..      25 x  columns
//   ..      ..    names of the columns, in the same order
//   ..      52 x  physical indexes
//   ..      28 x  logical indexes, by name
//   ..      ..    names of the logical indexes, in the same order
//   ..      10 x  maps of the long-value columns
//   ..      2     FF FF
//
// A name is its length in bytes (2) and UTF-16.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

namespace jet::format {

namespace table_definition {

// ---- A page ----

inline constexpr Field<PageNumber> kNextPage{4};
inline constexpr std::size_t kPageHead = 8;
inline constexpr std::size_t kPageCapacity = kPageSize - kPageHead;

/// What a page says of its free bytes when its own end at `end`: it counts its head twice.
constexpr std::uint16_t freeBytes(std::size_t end) {
    const std::size_t counted = end + kPageHead;
    return static_cast<std::uint16_t>(counted < kPageSize ? kPageSize - counted : 0);
}

// ---- The head of the definition ----

inline constexpr Field<std::uint32_t> kLength{8};
inline constexpr Field<std::uint32_t> kMagic{12};
inline constexpr Field<std::uint32_t> kRowCount{16};
inline constexpr Field<std::uint32_t> kLastAutonumber{20};
inline constexpr Field<std::uint8_t> kAutonumberStep{24};
inline constexpr Field<std::uint8_t> kTableKind{40};
inline constexpr Field<std::uint16_t> kColumnsEver{41};
inline constexpr Field<std::uint16_t> kVariableColumnsEver{43};
inline constexpr Field<std::uint16_t> kColumnCount{45};
inline constexpr Field<std::uint32_t> kLogicalIndexCount{47};
inline constexpr Field<std::uint32_t> kPhysicalIndexCount{51};
inline constexpr Field<RowId> kOwnedMap{55};
inline constexpr Field<RowId> kFreeMap{59};
inline constexpr std::size_t kHeadSize = 63;

inline constexpr std::uint32_t kMagicValue = 0x659;
inline constexpr std::uint8_t kUserTable = 'N';
inline constexpr std::uint8_t kSystemTable = 'S';

inline constexpr std::size_t kNameLengthSize = 2;

/// Stands in place of a column's id: an unused column of an index, the end of the definition.
inline constexpr std::uint16_t kNoColumn = 0xFFFF;

// ---- Limits of the original engine ----

inline constexpr std::size_t kMaxColumns = 255;
inline constexpr std::size_t kMaxIndexes = 32;
inline constexpr std::size_t kMaxNameLength = 64;  ///< in UTF-16 units

/// What is read: dropped columns keep their ids, and harmless files go beyond the limits above.
inline constexpr std::size_t kMaxColumnsEver = 4096;
inline constexpr std::size_t kMaxIndexesRead = 255;
inline constexpr std::size_t kMaxPages = 65;

}  // namespace table_definition

// Statistics of a physical index.
//
//   offset  size  meaning
//   0       4     entries when the index was last built as a whole
//   4       4     distinct keys, which deletions do not lower
//   8       4     0
namespace index_counter {

inline constexpr Field<std::uint32_t> kEntriesAtBuild{0};
inline constexpr Field<std::uint32_t> kDistinctKeys{4};
inline constexpr std::size_t kSize = 12;

/// In the definition.
constexpr std::size_t placeOf(std::size_t index) {
    return table_definition::kHeadSize + kSize * index;
}

}  // namespace index_counter

// A column.
//
//   offset  size  meaning
//   0       1     type
//   1       4     0x659
//   5       2     id: its bit in the null mask of records, never used again
//   7       2     variable: its place in the offset table of records; fixed: the number of variable
//                 columns before it
//   9       2     ordinal: where it is displayed
//   11      2     text order: language; of Numeric: precision (1), scale (1)
//   13      1     0
//   14      1     text order: version
//   15      1     flags
//   16      1     flags: 0x01 new texts are compressed
//   17      4     0
//   21      2     fixed: offset in the fixed part of records
//   23      2     length in bytes, 2 a character of text
//
// A column of any type may be stored as a variable one: the flag decides, not the type.
namespace column {

inline constexpr Field<ColumnType> kType{0};
inline constexpr Field<std::uint32_t> kMagic{1};
inline constexpr Field<std::uint16_t> kId{5};
inline constexpr Field<std::uint16_t> kVariableIndex{7};
inline constexpr Field<std::uint16_t> kOrdinal{9};
inline constexpr Field<std::uint16_t> kLanguage{11};
inline constexpr Field<std::uint8_t> kPrecision{11};
inline constexpr Field<std::uint8_t> kScale{12};
inline constexpr Field<std::uint8_t> kOrderVersion{14};
inline constexpr Field<std::uint8_t> kFlags{15};
inline constexpr Field<std::uint8_t> kMoreFlags{16};
inline constexpr Field<std::uint16_t> kFixedOffset{21};
inline constexpr Field<std::uint16_t> kLength{23};
inline constexpr std::size_t kSize = 25;

// Of kFlags.
inline constexpr std::uint8_t kFixed = 0x01;
inline constexpr std::uint8_t kUpdatable = 0x02;  ///< set on every column
inline constexpr std::uint8_t kAutonumber = 0x04;
inline constexpr std::uint8_t kSystem = 0x10;  ///< of a system table
inline constexpr std::uint8_t kRights = 0x20;  ///< holds security identifiers

// Of kMoreFlags.
inline constexpr std::uint8_t kCompressed = 0x01;

/// Language of the "General" text order, whose version is 0 in this format.
inline constexpr std::uint16_t kGeneral = 0x0409;
inline constexpr std::uint8_t kGeneralVersion = 0;

}  // namespace column

// A physical index: a tree.
//
//   offset  size    meaning
//   0       4       0x783
//   4       10 x 3  columns: id (2), FFFF = none; 1 = ascending (1)
//   34      4       row id of the map of its pages
//   38      4       root page
//   42      4       0
//   46      1       flags
//   47      5       0
namespace physical_index {

inline constexpr Field<std::uint32_t> kMagic{0};
inline constexpr std::size_t kColumns = 4;
inline constexpr Field<RowId> kMap{34};
inline constexpr Field<PageNumber> kRoot{38};
inline constexpr Field<std::uint8_t> kFlags{46};
inline constexpr std::size_t kSize = 52;

inline constexpr std::size_t kMaxColumns = 10;
inline constexpr std::size_t kColumnSize = 3;

constexpr Field<std::uint16_t> columnId(std::size_t index) {
    return {kColumns + kColumnSize * index};
}
constexpr Field<std::uint8_t> ascending(std::size_t index) { return {columnId(index).end()}; }

inline constexpr std::uint32_t kMagicValue = 0x783;

// Of kFlags.
inline constexpr std::uint8_t kUnique = 0x01;
inline constexpr std::uint8_t kIgnoreNulls = 0x02;  ///< no entries for keys of Nulls alone
inline constexpr std::uint8_t kRequired = 0x08;     ///< no Null
inline constexpr std::uint8_t kAlways = 0x80;       ///< set on every index

}  // namespace physical_index

// A logical index: a name for a tree, which several may share.
//
//   offset  size  meaning
//   0       4     0x659
//   4       4     number, in the order of creation
//   8       4     its physical index
//   12      1     foreign key: 1 or 2, the side of the relation; else 0
//   13      4     foreign key: number of the other side's index; else FFFFFFFF
//   17      4     foreign key: page of the other table's definition; else 0
//   21      1     foreign key: 1 = updates cascade; else 4
//   22      1     foreign key: 1 = deletions cascade; else 4
//   23      1     kind: 0 plain, 1 primary key, 2 foreign key
//   24      4     0
namespace logical_index {

inline constexpr Field<std::uint32_t> kMagic{0};
inline constexpr Field<std::uint32_t> kNumber{4};
inline constexpr Field<std::uint32_t> kPhysical{8};
inline constexpr Field<std::uint32_t> kOtherIndex{13};
inline constexpr Field<std::uint8_t> kCascadeUpdates{21};
inline constexpr Field<std::uint8_t> kCascadeDeletes{22};
inline constexpr Field<IndexKind> kKind{23};
inline constexpr std::size_t kSize = 28;

// Of an index that is no foreign key.
inline constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;
inline constexpr std::uint8_t kNoCascade = 4;

}  // namespace logical_index

// The maps of a long-value column.
//
//   offset  size  meaning
//   0       2     id of the column
//   2       4     row id of the map of its pages
//   6       4     row id of the map of those with room
namespace long_value_maps {

inline constexpr Field<std::uint16_t> kColumn{0};
inline constexpr Field<RowId> kOwned{2};
inline constexpr Field<RowId> kFree{6};
inline constexpr std::size_t kSize = 10;

}  // namespace long_value_maps
}  // namespace jet::format
