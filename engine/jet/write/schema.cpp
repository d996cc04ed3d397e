#include "engine/jet/write/schema.h"

#include "engine/jet/bytes.h"
#include "engine/jet/collation.h"
#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "engine/jet/write/catalog_writer.h"
#include "engine/jet/write/definition_blocks.h"
#include "engine/jet/write/table_writer.h"

#include <algorithm>

namespace jet {
namespace {

using Block = DefinitionEditor::Block;

namespace layout = format::table_definition;
namespace block = format::column;

void requireName(std::u16string_view name) {
    constexpr std::u16string_view kForbidden = u".![]`";
    const bool good = !name.empty() && name.size() <= layout::kMaxNameLength &&
                      name.front() != u' ' && std::ranges::none_of(name, [&](char16_t unit) {
                          return unit < u' ' || kForbidden.find(unit) != std::u16string_view::npos;
                      });
    if (!good) throw Error{Fault::TooMany, "'" + toUtf8(name) + "' is not a valid name."};
}

std::string inQuotes(std::u16string_view name) { return "'" + toUtf8(name) + "'"; }

// ---- Columns ------------------------------------------------------------------------------------

bool isLongValue(ColumnType type) { return type == ColumnType::Memo || type == ColumnType::Ole; }

bool isVariable(ColumnType type) {
    return isLongValue(type) || type == ColumnType::Text || type == ColumnType::Binary;
}

/// The declared length, as stored in the column's block.
std::uint16_t declaredSize(const NewColumn& column) {
    switch (column.type) {
        case ColumnType::Boolean:
            return 1;
        case ColumnType::Text:
        case ColumnType::Binary:
            return column.size;
        default:
            return static_cast<std::uint16_t>(sizeOfType(column.type));
    }
}

void requireColumn(const NewColumn& column) {
    requireName(column.name);
    const bool sized = column.type == ColumnType::Text || column.type == ColumnType::Binary;
    if (sized && (column.size == 0 || column.size > format::text::kMaxSize)) {
        throw Error{Fault::TooMany, "The column " + inQuotes(column.name) + " has a wrong length."};
    }
    const bool numbers = column.type == ColumnType::Long;
    const bool countable = column.precision >= 1 && column.precision <= format::value::kMaxDigits &&
                           column.scale <= column.precision;
    if ((column.autonumber && !numbers) || (column.type == ColumnType::Numeric && !countable) ||
        column.type == ColumnType::InternalBinary) {
        throw Error{Fault::WrongType, "Columns of this type cannot be made."};
    }
}

/// Where the fixed part of the table's records ends.
std::size_t fixedWidth(const TableDefinition& table) {
    std::size_t width = 0;
    for (const Column& column : table.columns) {
        if (!column.fixed || column.type == ColumnType::Boolean) continue;
        width = std::max(width, column.fixedOffset + storedSize(column));
    }
    return width;
}

Block describe(const NewColumn& column, ColumnCounts& counts) {
    const bool variable = isVariable(column.type);
    const bool inFixedPart = !variable && column.type != ColumnType::Boolean;
    const bool text = column.type == ColumnType::Text || column.type == ColumnType::Memo;
    const int flags = block::kUpdatable | (variable ? 0 : block::kFixed) |
                      (column.autonumber ? block::kAutonumber : 0);
    const ColumnBlock described{
        .type = column.type,
        .id = counts.ever,
        .variableIndex = counts.variable,
        .ordinal = counts.ordinal,
        .precision = column.precision,
        .scale = column.scale,
        .flags = static_cast<std::uint8_t>(flags),
        .compressed = text && column.compressed,
        .fixedOffset = inFixedPart ? static_cast<std::uint16_t>(counts.fixedEnd) : std::uint16_t{0},
        .size = declaredSize(column)};
    ++counts.ever;
    ++counts.ordinal;
    if (variable) ++counts.variable;
    if (inFixedPart) counts.fixedEnd += sizeOfType(column.type);
    if (counts.fixedEnd > format::record::kMaxSize) {
        throw Error{Fault::TooMany, "The columns are larger than a record can be."};
    }
    return encodeColumn(described);
}

// ---- Maps ---------------------------------------------------------------------------------------

/// Adds the row of an empty map to a page of maps, or to a new page if that has no room.
RowId addMap(WriteContext& context, PageNumber& page) {
    const std::vector<std::uint8_t> empty(format::usage_map::kNewRowSize);
    if (page != kNoPage) {
        const PageEdit edit = context.pager.edit(page);
        if (const auto slot = appendRow(*edit, empty, 0)) return RowId{page, *slot};
    }
    page = context.allocator.allocate();
    const PageEdit edit = context.pager.edit(page);
    formatDataPage(*edit, format::usage_map::kOwner);
    return RowId{page, *appendRow(*edit, empty, 0)};
}

void addLongValueMaps(WriteContext& context, DefinitionEditor& definition, std::uint16_t columnId,
                      PageNumber& page) {
    const RowId owned = addMap(context, page);
    const RowId free = addMap(context, page);
    definition.addLongValueMaps(columnId, owned, free);
}

/// The page of a table's maps takes further ones, if it is a page of maps alone.
PageNumber mapPageOf(WriteContext& context, const TableDefinition& table) {
    const PageNumber page = table.ownedMap.page();
    return DataPage{*context.pager.page(page), page}.owner() == format::usage_map::kOwner ? page
                                                                                          : kNoPage;
}

void setCounts(DefinitionEditor& definition, const ColumnCounts& counts) {
    definition.set(layout::kColumnsEver, counts.ever);
    definition.set(layout::kVariableColumnsEver, counts.variable);
}

// ---- Indexes ------------------------------------------------------------------------------------

PhysicalIndex physicalIndex(const TableDefinition& table, const NewIndex& index) {
    PhysicalIndex physical;
    physical.unique = index.unique || index.primary;
    physical.required = index.required || index.primary;
    physical.ignoreNulls = index.ignoreNulls;
    for (const NewIndexColumn& part : index.columns) {
        const Column* const column = table.findColumn(part.name);
        if (column == nullptr) {
            throw Error{Fault::NoSuchColumn, "There is no column " + inQuotes(part.name) + "."};
        }
        if (column->type == ColumnType::Ole || column->type == ColumnType::InternalBinary) {
            throw Error{Fault::WrongType, "The column " + inQuotes(part.name) +
                                              " is of a type that cannot be indexed."};
        }
        physical.columns.push_back({column->id, part.ascending});
    }
    return physical;
}

void requireIndex(const TableDefinition& table, const NewIndex& index) {
    requireName(index.name);
    if (index.columns.empty() || index.columns.size() > format::physical_index::kMaxColumns ||
        table.physicalIndexes.size() >= layout::kMaxIndexes ||
        table.logicalIndexes.size() >= layout::kMaxIndexes) {
        throw Error{Fault::TooMany, "The table or the index has as many parts as can be."};
    }
    for (const LogicalIndex& other : table.logicalIndexes) {
        const bool same = compareText(other.name, index.name) == std::strong_ordering::equal;
        if (same || (index.primary && other.kind == IndexKind::PrimaryKey)) {
            throw Error{Fault::AlreadyExists,
                        "The table has an index " + inQuotes(other.name) + " already."};
        }
    }
}

/// The tree of an index that is not part of the definition yet.
IndexWriter buildTree(WriteContext& context, const Table& table, const PhysicalIndex& index) {
    TableDefinition extended = table.definition();
    extended.physicalIndexes.push_back(index);
    IndexWriter writer{context.pager, context.allocator, extended,
                       extended.physicalIndexes.size() - 1};
    RowKeys rowKeys{table.definition(), index};
    const std::vector<PageNumber> pages = table.dataPages();
    TableScan scan{table, pages};
    KeySorter keys;
    rowKeys.collect(scan, keys);
    writer.rebuild(keys);
    writer.finish();
    return writer;
}

// ---- Dropping -----------------------------------------------------------------------------------

void releaseBitmaps(WriteContext& context, RowId map) {
    if (map.page() == kNoPage) return;
    for (const PageNumber number : UsageMapWriter{context.pager, map}.bitmapPages()) {
        requireOwned(context.pager, number, PageKind::Bitmap);
        context.allocator.release(number);
    }
}

/// Gives back the pages of a set, and what the set itself is kept on.
void releaseAll(WriteContext& context, RowId map, PageKind kind, std::uint32_t owner) {
    if (map.page() == kNoPage) return;
    for (const PageNumber number : UsageMapWriter{context.pager, map}.pages()) {
        requireOwned(context.pager, number, kind, owner);
        context.allocator.release(number);
    }
    releaseBitmaps(context, map);
}

/// Removes the rows of maps; a page of maps that has no others left is given back.
void removeMaps(WriteContext& context, const std::vector<RowId>& maps) {
    for (const RowId map : maps) {
        if (map.page() == kNoPage) continue;
        requireOwned(context.pager, map.page(), PageKind::Data, format::usage_map::kOwner);
        const PageEdit page = context.pager.edit(map.page());
        PageLayout layout{*page, map.page()};
        if (map.slot() >= layout.rows.size()) continue;
        layout.rows[map.slot()] = {format::data_page::kDeleted, {}};
        layout.writeTo(*page);
        const bool empty = std::ranges::all_of(
            layout.rows, [](const auto& row) { return row.flags == format::data_page::kDeleted; });
        if (empty) context.allocator.release(map.page());
    }
}

}  // namespace

void createTable(WriteContext& context, std::u16string_view name,
                 const std::vector<NewColumn>& columns) {
    requireName(name);
    if (columns.empty() || columns.size() > layout::kMaxColumns) {
        throw Error{Fault::TooMany, "A table has 1 to 255 columns."};
    }
    CatalogWriter catalog{context};
    catalog.requireFree(name);

    const PageNumber first = context.allocator.allocate();
    PageNumber mapPage = kNoPage;
    const RowId owned = addMap(context, mapPage);
    const RowId free = addMap(context, mapPage);
    DefinitionEditor definition{context, first, false, owned, free};
    ColumnCounts counts;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        requireColumn(columns[i]);
        for (std::size_t j = 0; j < i; ++j) {
            if (compareText(columns[i].name, columns[j].name) == std::strong_ordering::equal) {
                throw Error{Fault::AlreadyExists,
                            "There are two columns " + inQuotes(columns[i].name) + "."};
            }
        }
        const std::uint16_t id = counts.ever;
        definition.addColumn(describe(columns[i], counts), columns[i].name);
        if (isLongValue(columns[i].type)) addLongValueMaps(context, definition, id, mapPage);
    }
    setCounts(definition, counts);
    definition.write();
    catalog.addTable(first, name);
}

void addColumn(WriteContext& context, std::u16string_view tableName, const NewColumn& column) {
    requireColumn(column);
    const auto table = context.database.table(tableName);
    const TableDefinition& old = table->definition();
    if (old.findColumn(column.name) != nullptr) {
        throw Error{Fault::AlreadyExists,
                    "The table has a column " + inQuotes(column.name) + " already."};
    }
    if (old.columns.size() >= layout::kMaxColumns || old.columnsEver >= layout::kMaxColumns) {
        throw Error{Fault::TooMany, "The table has as many columns as can be."};
    }
    ColumnCounts counts{.ever = old.columnsEver,
                        .variable = old.variableColumnsEver,
                        .ordinal = 0,
                        .fixedEnd = fixedWidth(old)};
    for (const Column& other : old.columns) {
        counts.ordinal = std::max(counts.ordinal, static_cast<std::uint16_t>(other.ordinal + 1));
    }
    DefinitionEditor definition{context, old.page};
    definition.addColumn(describe(column, counts), column.name);
    if (isLongValue(column.type)) {
        PageNumber mapPage = mapPageOf(context, old);
        addLongValueMaps(context, definition, old.columnsEver, mapPage);
    }
    setCounts(definition, counts);
    definition.write();
    CatalogWriter{context}.touch(old.page);
}

void createIndex(WriteContext& context, std::u16string_view tableName, const NewIndex& index) {
    const auto table = context.database.table(tableName);
    const TableDefinition& old = table->definition();
    requireIndex(old, index);
    PhysicalIndex physical = physicalIndex(old, index);
    physical.root = context.allocator.allocate();
    PageNumber mapPage = mapPageOf(context, old);
    physical.map = addMap(context, mapPage);
    {
        UsageMapWriter map{context.pager, physical.map};
        map.insert(physical.root);
        map.save(context.allocator);
    }
    const IndexWriter tree = buildTree(context, *table, physical);

    DefinitionEditor definition{context, old.page};
    std::uint32_t number = 0;
    for (const LogicalIndex& other : old.logicalIndexes)
        number = std::max(number, other.number + 1);
    definition.addLogicalIndex({.name = index.name,
                                .number = number,
                                .physical = static_cast<std::uint32_t>(old.physicalIndexes.size()),
                                .kind = index.primary ? IndexKind::PrimaryKey : IndexKind::Plain});
    definition.addPhysicalIndex(physical, tree.entriesAtBuild(), tree.distinctKeys());
    definition.write();
    CatalogWriter{context}.touch(old.page);
}

void dropTable(WriteContext& context, std::u16string_view name) {
    const auto table = context.database.table(name);
    const TableDefinition& old = table->definition();
    CatalogWriter{context}.removeTable(old.page);

    std::vector<RowId> maps{old.ownedMap, old.freeMap};
    const std::uint32_t owner = raw(old.page);
    releaseAll(context, old.ownedMap, PageKind::Data, owner);
    releaseBitmaps(context, old.freeMap);
    for (const Column& column : old.columns) {
        if (!column.isLongValue()) continue;
        releaseAll(context, column.ownedMap, PageKind::Data, format::data_page::kLongValueOwner);
        releaseBitmaps(context, column.freeMap);
        maps.insert(maps.end(), {column.ownedMap, column.freeMap});
    }
    for (const PhysicalIndex& index : old.physicalIndexes) {
        releaseAll(context, index.map, PageKind::Index, owner);
        maps.push_back(index.map);
    }
    removeMaps(context, maps);
    for (const PageNumber number : old.continuation) context.allocator.release(number);
    context.allocator.release(old.page);
}

}  // namespace jet
