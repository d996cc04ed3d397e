#include "engine/jet/table_definition.h"

#include "engine/jet/bytes.h"
#include "engine/jet/collation.h"
#include "engine/jet/format/page.h"

#include <algorithm>

namespace jet {
namespace {

namespace layout = format::table_definition;

/// The chained pages as one buffer: the first page whole, of the others all but their headers.
struct Buffer {
    std::vector<std::uint8_t> bytes;
    std::vector<PageNumber> continuation;
};

Bytes definitionPage(PageReader& pages, PageNumber number) {
    const Bytes page = pages.page(number);
    if (load(page, format::page::kType) != format::PageType::Definition) {
        throwDamaged(number, "a table definition was expected");
    }
    return page;
}

Buffer gatherPages(PageReader& pages, PageNumber first) {
    Buffer buffer;
    Bytes page = definitionPage(pages, first);
    buffer.bytes.assign(page.begin(), page.end());
    for (PageNumber next = load(page, layout::kNextPage); next != kNoPage;
         next = load(page, layout::kNextPage)) {
        if (buffer.continuation.size() + 1 == layout::kMaxPages) {
            throwDamaged(first, "the table definition does not end");
        }
        page = definitionPage(pages, next);
        buffer.bytes.insert(buffer.bytes.end(), page.begin() + layout::kPageHead, page.end());
        buffer.continuation.push_back(next);
    }
    return buffer;
}

std::u16string readName(Reader& reader) {
    const auto length = reader.next<std::uint16_t>();
    if (length % sizeof(char16_t) != 0) throwDamaged(reader.page(), "a name has half a character");
    const Bytes bytes = reader.take(length);
    std::u16string name(length / sizeof(char16_t), u'\0');
    std::memcpy(name.data(), bytes.data(), length);
    return name;
}

Column readColumn(Reader& reader) {
    namespace block = format::column;
    const Bytes at = reader.take(block::kSize);
    const std::uint8_t flags = load(at, block::kFlags);
    Column column;
    column.type = load(at, block::kType);
    column.id = load(at, block::kId);
    column.variableIndex = load(at, block::kVariableIndex);
    column.ordinal = load(at, block::kOrdinal);
    column.fixed = (flags & block::kFixed) != 0;
    column.autonumber = (flags & block::kAutonumber) != 0;
    column.compressed = (load(at, block::kMoreFlags) & block::kCompressed) != 0;
    column.fixedOffset = load(at, block::kFixedOffset);
    column.size = load(at, block::kLength);
    if (column.type == ColumnType::Numeric) {
        column.precision = load(at, block::kPrecision);
        column.scale = load(at, block::kScale);
    } else {
        column.collation = {load(at, block::kLanguage), load(at, block::kOrderVersion)};
    }
    return column;
}

PhysicalIndex readPhysicalIndex(Reader& reader) {
    namespace block = format::physical_index;
    const Bytes at = reader.take(block::kSize);
    PhysicalIndex index;
    for (std::size_t i = 0; i < block::kMaxColumns; ++i) {
        const std::uint16_t id = load(at, block::columnId(i));
        if (id != layout::kNoColumn)
            index.columns.push_back({id, load(at, block::ascending(i)) != 0});
    }
    const std::uint8_t flags = load(at, block::kFlags);
    index.map = load(at, block::kMap);
    index.root = load(at, block::kRoot);
    index.unique = (flags & block::kUnique) != 0;
    index.ignoreNulls = (flags & block::kIgnoreNulls) != 0;
    index.required = (flags & block::kRequired) != 0;
    return index;
}

LogicalIndex readLogicalIndex(Reader& reader, std::size_t physicalCount) {
    namespace block = format::logical_index;
    const Bytes at = reader.take(block::kSize);
    LogicalIndex index;
    index.number = load(at, block::kNumber);
    index.physical = load(at, block::kPhysical);
    index.kind = load(at, block::kKind);
    if (index.physical >= physicalCount) throwDamaged(reader.page(), "an index has no tree");
    return index;
}

void readColumns(Reader& reader, unsigned count, TableDefinition& definition) {
    for (unsigned i = 0; i < count; ++i) definition.columns.push_back(readColumn(reader));
    for (Column& column : definition.columns) {
        column.name = readName(reader);
        if (column.id >= definition.columnsEver) {
            throwDamaged(reader.page(), "a column number is too high");
        }
    }
}

/// One block a column, up to the end of the definition.
void readLongValueMaps(Reader& reader, TableDefinition& definition) {
    while (reader.remaining() >= sizeof layout::kNoColumn) {
        const auto id = reader.next<std::uint16_t>();
        if (id == layout::kNoColumn) return;
        const auto owned = reader.next<RowId>();
        const auto free = reader.next<RowId>();
        for (Column& column : definition.columns) {
            if (column.id != id) continue;
            column.ownedMap = owned;
            column.freeMap = free;
        }
    }
}

}  // namespace

const Column* TableDefinition::findColumn(std::u16string_view columnName) const {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const Column& column) {
        return compareText(column.name, columnName) == std::strong_ordering::equal;
    });
    return found == columns.end() ? nullptr : &*found;
}

const Column* TableDefinition::findColumn(std::uint16_t columnId) const {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column& column) { return column.id == columnId; });
    return found == columns.end() ? nullptr : &*found;
}

TableDefinition TableDefinition::read(PageReader& pages, PageNumber first, std::u16string name) {
    Buffer buffer = gatherPages(pages, first);
    const Bytes bytes{buffer.bytes};
    const std::uint32_t length = load(bytes, layout::kLength);
    if (length < layout::kHeadSize || length > bytes.size()) {
        throwDamaged(first, "the table definition is longer than its pages");
    }

    TableDefinition definition;
    definition.name = std::move(name);
    definition.page = first;
    definition.continuation = std::move(buffer.continuation);
    definition.rowCount = load(bytes, layout::kRowCount);
    definition.lastAutonumber = load(bytes, layout::kLastAutonumber);
    definition.system = load(bytes, layout::kTableKind) == layout::kSystemTable;
    definition.columnsEver = load(bytes, layout::kColumnsEver);
    definition.variableColumnsEver = load(bytes, layout::kVariableColumnsEver);
    const unsigned columnCount = load(bytes, layout::kColumnCount);
    const std::uint32_t logicalCount = load(bytes, layout::kLogicalIndexCount);
    const std::uint32_t physicalCount = load(bytes, layout::kPhysicalIndexCount);
    definition.ownedMap = load(bytes, layout::kOwnedMap);
    definition.freeMap = load(bytes, layout::kFreeMap);
    if (columnCount > layout::kMaxColumns || logicalCount > layout::kMaxIndexesRead ||
        physicalCount > layout::kMaxIndexesRead) {
        throwDamaged(first, "the table definition has impossible counts");
    }

    Reader reader{bytes.first(length), first};
    reader.seek(layout::kHeadSize);
    const Bytes counters = reader.take(format::index_counter::kSize * physicalCount);
    readColumns(reader, columnCount, definition);
    for (std::uint32_t i = 0; i < physicalCount; ++i) {
        PhysicalIndex index = readPhysicalIndex(reader);
        const Bytes counter = counters.subspan(format::index_counter::kSize * i);
        index.entriesAtBuild = load(counter, format::index_counter::kEntriesAtBuild);
        index.distinctKeys = load(counter, format::index_counter::kDistinctKeys);
        definition.physicalIndexes.push_back(std::move(index));
    }
    for (std::uint32_t i = 0; i < logicalCount; ++i) {
        definition.logicalIndexes.push_back(readLogicalIndex(reader, physicalCount));
    }
    for (LogicalIndex& index : definition.logicalIndexes) index.name = readName(reader);
    readLongValueMaps(reader, definition);
    return definition;
}

}  // namespace jet
