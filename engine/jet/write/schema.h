// Creates, changes and drops tables: their columns, their indexes and their rows in the catalog.
//
//   jet::createTable(context, u"People", {{.name = u"Name", .size = 100}});
//   jet::createIndex(context, u"People", {.name = u"ByName", .columns = {{u"Name"}}});
//
// Each of these functions makes a definition read earlier out of date.
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/table_definition.h"
#include "engine/jet/write/write_context.h"

namespace jet {

struct NewColumn {
    std::u16string name;
    ColumnType type = ColumnType::Text;
    std::uint16_t size = 0;  ///< of Text and Binary: bytes, 2 a character; else ignored
    bool autonumber = false;
    std::uint8_t precision = 18;  ///< of Numeric
    std::uint8_t scale = 0;
    bool compressed = true;  ///< of Text and Memo: stored compressed where that is shorter
};

struct NewIndexColumn {
    std::u16string name;
    bool ascending = true;
};

struct NewIndex {
    std::u16string name;
    std::vector<NewIndexColumn> columns;
    bool unique = false;
    bool primary = false;  ///< unique and without Null as well
    bool ignoreNulls = false;
    bool required = false;  ///< no Null
};

/// Throws Error: TableExists for the name of any table or query; AlreadyExists for two columns of
/// one name; TooMany, WrongType; IndexNotWritable if the catalog has another collation.
void createTable(WriteContext& context, std::u16string_view name,
                 const std::vector<NewColumn>& columns);

/// Existing rows have Null, or False, in the column and are not rewritten.
/// Throws Error: NoSuchTable, AlreadyExists, TooMany, WrongType.
void addColumn(WriteContext& context, std::u16string_view table, const NewColumn& column);

/// Throws Error: NoSuchTable, NoSuchColumn, AlreadyExists, TooMany, WrongType, DuplicateKey,
/// NullKey, IndexNotWritable.
void createIndex(WriteContext& context, std::u16string_view table, const NewIndex& index);

/// Frees all pages of the table. Throws Error: NoSuchTable; ReadOnly for a system table.
void dropTable(WriteContext& context, std::u16string_view name);

}  // namespace jet
