// The definition of a table: its columns, its indexes and where its pages are listed. The layout is
// in format/table_definition.h.
//
//   const auto traces = jet::TableDefinition::read(pages, number, u"tblTraces");
//   if (const jet::Column* const found = traces.findColumn(u"Trace")) use(found->size);
//
// Plain values; any thread. A change of the table does not show in a definition that was read
// before.
#pragma once

#include "engine/jet/format/table_definition.h"
#include "engine/jet/format/types.h"
#include "engine/jet/losses.h"
#include "engine/jet/page_cache.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// How a text column is ordered; 0x0409 version 0 is the "General" order of this format.
struct Collation {
    std::uint16_t lcid = 0;
    std::uint8_t version = 0;

    bool isGeneralLegacy() const {
        return lcid == format::column::kGeneral && version == format::column::kGeneralVersion;
    }
};

struct Column {
    std::u16string name;
    ColumnType type = ColumnType::Text;
    std::uint16_t id = 0;             ///< bit in the record's null mask; never reused in a table
    std::uint16_t variableIndex = 0;  ///< of a variable column: place in the record's offset table
    std::uint16_t ordinal = 0;        ///< display position
    std::uint16_t fixedOffset = 0;    ///< of a fixed column: place in the record's fixed part
    std::uint16_t size = 0;           ///< declared length in bytes; 2 a character for text
    bool fixed = false;               ///< stored in the fixed part, whatever its type
    bool autonumber = false;
    bool compressed = false;  ///< new texts are stored compressed where that is shorter
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;  ///< of Numeric: digits after the decimal point
    Collation collation;
    RowId ownedMap;  ///< of Memo and Ole: map of the pages that hold its long values
    RowId freeMap;   ///< of Memo and Ole: those of them with room
    /// Why no field of the column can be read; empty if they can. Such a column has kNoColumn for its
    /// id, so that no record has it.
    std::string unreadable;
    /// Of an unreadable column: its id if that is not what is damaged, so that records can say that
    /// it is Null in them; else kNoColumn.
    std::uint16_t idForNull = format::table_definition::kNoColumn;

    bool isLongValue() const { return type == ColumnType::Memo || type == ColumnType::Ole; }
    bool isText() const { return type == ColumnType::Text || type == ColumnType::Memo; }
};

struct IndexColumn {
    std::uint16_t columnId = 0;
    bool ascending = true;
};

/// A tree in the file.
struct PhysicalIndex {
    std::vector<IndexColumn> columns;
    RowId map;  ///< map of its pages
    PageNumber root = kNoPage;
    bool unique = false;
    bool ignoreNulls = false;  ///< rows whose key columns are all null have no entry
    bool required = false;     ///< no null key column
    std::uint32_t entriesAtBuild = 0;
    std::uint32_t distinctKeys = 0;
};

/// A name for a tree; several may share one.
struct LogicalIndex {
    std::u16string name;
    std::uint32_t number = 0;
    std::uint32_t physical = 0;  ///< place in TableDefinition::physicalIndexes
    IndexKind kind = IndexKind::Plain;
};

struct TableDefinition {
    std::u16string name;
    PageNumber page = kNoPage;  ///< first page of the definition; also the owner on its data pages
    std::vector<PageNumber> continuation;  ///< further pages of the definition
    bool system = false;
    std::uint32_t rowCount = 0;  ///< as stored; may be stale in files found in the wild
    std::uint32_t lastAutonumber = 0;
    std::uint16_t columnsEver = 0;
    std::uint16_t variableColumnsEver = 0;
    RowId ownedMap;
    RowId freeMap;
    std::vector<Column> columns;  ///< in display order
    std::vector<PhysicalIndex> physicalIndexes;
    std::vector<LogicalIndex> logicalIndexes;  ///< as stored: by name
    Losses losses;                             ///< parts that could not be read

    /// The column of that name, case ignored; null if there is none.
    const Column* findColumn(std::u16string_view columnName) const;

    /// The column of that id; null if it was deleted.
    const Column* findColumn(std::uint16_t columnId) const;

    /// Reads the definition that starts on `first`, as far as it makes sense: what rows can be read
    /// without may be missing, and is among the losses. Throws Error{Damaged}.
    static TableDefinition read(PageReader& pages, PageNumber first, std::u16string name);
};

}  // namespace jet
