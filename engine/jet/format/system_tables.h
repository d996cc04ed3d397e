// The system tables of a new database: their pages, columns and indexes, as the original engine
// makes them. The database has 16 pages:
//
//  page     content
//  0        header
//  1        maps of free pages; the first knows of 512 pages, of which these 16 are in use
//  2 to 5   definitions of MSysObjects, MSysACEs, MSysQueries, MSysRelationships
//  6        31 usage maps
//  7 to 13  indexes, a leaf each
//  14       rows of MSysObjects
//  15       rows of MSysACEs
//
// The maps are, for each table: its data pages, those with room, two for each long-value column by
// id, and one for each index.
//
//   for (const auto* table : jet::format::system_tables::kTables) use(table->columns.size());
//
// Constants; any thread.
#pragma once

#include "engine/jet/format/catalog.h"
#include "engine/jet/format/table_definition.h"

#include <array>
#include <span>
#include <string_view>

namespace jet::format::system_tables {

inline constexpr std::uint32_t kPageCount = 16;
inline constexpr PageNumber kMaps{6};
inline constexpr unsigned kMapCount = 31;

constexpr RowId mapAt(unsigned slot) { return RowId{kMaps, slot}; }

struct SystemColumn {
    std::u16string_view name;
    ColumnType type;
    std::uint16_t id;
    std::uint16_t variableIndex;
    std::uint16_t fixedOffset;
    std::uint16_t length;
    std::uint8_t flags;
};

struct SystemIndex {
    std::u16string_view name;
    std::span<const std::uint16_t> columns;  ///< their ids, all ascending
    unsigned map;                            ///< slot on the page of maps
    PageNumber root;
    std::uint8_t flags;  ///< without physical_index::kAlways
    IndexKind kind;
};

struct LongValueMaps {
    std::uint16_t column;
    unsigned owned;  ///< slots on the page of maps
    unsigned free;
};

struct SystemTable {
    PageNumber definition;
    unsigned ownedMap;  ///< slot on the page of maps; that of pages with room follows
    std::uint16_t columnsEver;
    std::uint16_t variableColumnsEver;
    std::span<const SystemColumn> columns;  ///< by name
    std::span<const SystemIndex> indexes;   ///< in the order of their creation
    std::span<const LongValueMaps> longValues;
    PageNumber data;  ///< its only page; kNoPage if it has no rows
};

inline constexpr std::uint8_t kFixed = column::kSystem | column::kUpdatable | column::kFixed;
inline constexpr std::uint8_t kVariable = column::kSystem | column::kUpdatable;
inline constexpr std::uint8_t kRights = column::kRights | column::kSystem | column::kUpdatable;

// ---- MSysObjects ----

inline constexpr std::array kObjectsColumns{
    SystemColumn{u"Connect", ColumnType::Memo, 9, 3, 0, 0, kVariable},
    SystemColumn{u"Database", ColumnType::Memo, 8, 2, 0, 0, kVariable},
    SystemColumn{u"DateCreate", ColumnType::Date, 4, 1, 10, 8, kFixed},
    SystemColumn{u"DateUpdate", ColumnType::Date, 5, 1, 18, 8, kFixed},
    SystemColumn{u"Flags", ColumnType::Long, 7, 2, 26, 4, kFixed},
    SystemColumn{u"ForeignName", ColumnType::Text, 10, 4, 0, 510, kVariable},
    SystemColumn{u"Id", ColumnType::Long, 0, 0, 0, 4, kFixed},
    SystemColumn{u"Lv", ColumnType::Ole, 13, 7, 0, 0, kVariable},
    SystemColumn{u"LvExtra", ColumnType::Ole, 16, 10, 0, 0, kVariable},
    SystemColumn{u"LvModule", ColumnType::Ole, 15, 9, 0, 0, kVariable},
    SystemColumn{u"LvProp", ColumnType::Ole, 14, 8, 0, 0, kVariable},
    SystemColumn{u"Name", ColumnType::Text, 2, 0, 0, 510, kVariable},
    SystemColumn{u"Owner", ColumnType::Binary, 6, 1, 0, 510, kRights},
    SystemColumn{u"ParentId", ColumnType::Long, 1, 0, 4, 4, kFixed},
    SystemColumn{u"RmtInfoLong", ColumnType::Ole, 12, 6, 0, 0, kVariable},
    SystemColumn{u"RmtInfoShort", ColumnType::Binary, 11, 5, 0, 510, kVariable},
    SystemColumn{u"Type", ColumnType::Integer, 3, 1, 8, 2, kFixed},
};
inline constexpr std::array<std::uint16_t, 2> kParentIdName{1, 2};
inline constexpr std::array<std::uint16_t, 1> kFirstColumn{0};
inline constexpr std::array kObjectsIndexes{
    SystemIndex{u"ParentIdName", kParentIdName, 16, PageNumber{7}, physical_index::kUnique,
                IndexKind::Plain},
    SystemIndex{u"Id", kFirstColumn, 17, PageNumber{8}, physical_index::kUnique,
                IndexKind::PrimaryKey},
};
inline constexpr std::array kObjectsLongValues{
    LongValueMaps{9, 4, 5},    LongValueMaps{8, 2, 3},    LongValueMaps{13, 8, 9},
    LongValueMaps{16, 14, 15}, LongValueMaps{15, 12, 13}, LongValueMaps{14, 10, 11},
    LongValueMaps{12, 6, 7},
};
inline constexpr SystemTable kObjects{.definition = catalog::kObjects,
                                      .ownedMap = 0,
                                      .columnsEver = 17,
                                      .variableColumnsEver = 11,
                                      .columns = kObjectsColumns,
                                      .indexes = kObjectsIndexes,
                                      .longValues = kObjectsLongValues,
                                      .data = PageNumber{14}};

// ---- MSysACEs ----

inline constexpr std::array kAcesColumns{
    SystemColumn{u"ACM", ColumnType::Long, 2, 1, 4, 4, kFixed},
    SystemColumn{u"FInheritable", ColumnType::Boolean, 3, 1, 0, 1, kFixed},
    SystemColumn{u"ObjectId", ColumnType::Long, 0, 0, 0, 4, kFixed},
    SystemColumn{u"SID", ColumnType::Binary, 1, 0, 0, 510, kRights},
};
inline constexpr std::array kAcesIndexes{
    SystemIndex{u"ObjectId", kFirstColumn, 20, PageNumber{9}, physical_index::kRequired,
                IndexKind::Plain},
};
inline constexpr SystemTable kAces{.definition = catalog::kRights,
                                   .ownedMap = 18,
                                   .columnsEver = 4,
                                   .variableColumnsEver = 1,
                                   .columns = kAcesColumns,
                                   .indexes = kAcesIndexes,
                                   .longValues = {},
                                   .data = PageNumber{15}};

// ---- MSysQueries ----

inline constexpr std::array kQueriesColumns{
    SystemColumn{u"Attribute", ColumnType::Byte, 1, 0, 4, 1, kFixed},
    SystemColumn{u"Expression", ColumnType::Memo, 5, 3, 0, 0, kVariable},
    SystemColumn{u"Flag", ColumnType::Integer, 6, 4, 5, 2, kFixed},
    SystemColumn{u"LvExtra", ColumnType::Long, 7, 4, 7, 4, kFixed},
    SystemColumn{u"Name1", ColumnType::Text, 3, 1, 0, 510, kVariable},
    SystemColumn{u"Name2", ColumnType::Text, 4, 2, 0, 510, kVariable},
    SystemColumn{u"ObjectId", ColumnType::Long, 0, 0, 0, 4, kFixed},
    SystemColumn{u"Order", ColumnType::Binary, 2, 0, 0, 510, kVariable},
};
inline constexpr std::array<std::uint16_t, 3> kObjectIdAttribute{0, 1, 2};
inline constexpr std::array kQueriesIndexes{
    SystemIndex{u"ObjectIdAttribute", kObjectIdAttribute, 25, PageNumber{10},
                physical_index::kUnique, IndexKind::PrimaryKey},
};
inline constexpr std::array kQueriesLongValues{LongValueMaps{5, 23, 24}};
inline constexpr SystemTable kQueries{.definition = catalog::kQueries,
                                      .ownedMap = 21,
                                      .columnsEver = 8,
                                      .variableColumnsEver = 4,
                                      .columns = kQueriesColumns,
                                      .indexes = kQueriesIndexes,
                                      .longValues = kQueriesLongValues,
                                      .data = kNoPage};

// ---- MSysRelationships ----

inline constexpr std::array kRelationshipsColumns{
    SystemColumn{u"ccolumn", ColumnType::Long, 2, 1, 4, 4, kFixed},
    SystemColumn{u"grbit", ColumnType::Long, 1, 1, 0, 4, kFixed},
    SystemColumn{u"icolumn", ColumnType::Long, 3, 1, 8, 4, kFixed},
    SystemColumn{u"szColumn", ColumnType::Text, 5, 2, 0, 510, kVariable},
    SystemColumn{u"szObject", ColumnType::Text, 4, 1, 0, 510, kVariable},
    SystemColumn{u"szReferencedColumn", ColumnType::Text, 7, 4, 0, 510, kVariable},
    SystemColumn{u"szReferencedObject", ColumnType::Text, 6, 3, 0, 510, kVariable},
    SystemColumn{u"szRelationship", ColumnType::Text, 0, 0, 0, 510, kVariable},
};
inline constexpr std::array<std::uint16_t, 1> kObjectColumn{4};
inline constexpr std::array<std::uint16_t, 1> kReferencedObjectColumn{6};
inline constexpr std::array kRelationshipsIndexes{
    SystemIndex{u"szRelationship", kFirstColumn, 28, PageNumber{11}, physical_index::kIgnoreNulls,
                IndexKind::Plain},
    SystemIndex{u"szObject", kObjectColumn, 29, PageNumber{12}, physical_index::kIgnoreNulls,
                IndexKind::Plain},
    SystemIndex{u"szReferencedObject", kReferencedObjectColumn, 30, PageNumber{13},
                physical_index::kIgnoreNulls, IndexKind::Plain},
};
inline constexpr SystemTable kRelationships{.definition = catalog::kRelationships,
                                            .ownedMap = 26,
                                            .columnsEver = 8,
                                            .variableColumnsEver = 5,
                                            .columns = kRelationshipsColumns,
                                            .indexes = kRelationshipsIndexes,
                                            .longValues = {},
                                            .data = kNoPage};

inline constexpr std::array kTables{&kObjects, &kAces, &kQueries, &kRelationships};

}  // namespace jet::format::system_tables
