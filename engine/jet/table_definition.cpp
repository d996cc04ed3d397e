#include "engine/jet/table_definition.h"

#include "engine/jet/bytes.h"
#include "engine/jet/collation.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::uint8_t kDefinitionPageType = 2;
constexpr std::size_t kPageHeader = 8;
constexpr std::size_t kVariablePart = 63;
constexpr std::size_t kColumnSize = 25;
constexpr std::size_t kCounterSize = 12;
constexpr std::size_t kPhysicalIndexSize = 52;
constexpr std::size_t kLogicalIndexSize = 28;
constexpr std::size_t kIndexColumnSlots = 10;
constexpr std::uint16_t kNoColumn = 0xFFFF;

// A table has at most 255 columns and 32 indexes; the caps leave room for odd but harmless files.
constexpr std::size_t kMaxPages = 64;
constexpr unsigned kMaxColumns = 255;
constexpr std::uint32_t kMaxIndexes = 255;

/// The chained pages as one buffer: the first page whole, of the others all but their headers.
struct Buffer {
    std::vector<std::uint8_t> bytes;
    std::vector<PageNumber> continuation;
};

Bytes definitionPage(PageReader& pages, PageNumber number) {
    const Bytes page = pages.page(number);
    if (page[0] != kDefinitionPageType) throwDamaged(number, "a table definition was expected");
    return page;
}

Buffer gatherPages(PageReader& pages, PageNumber first) {
    Buffer buffer;
    Bytes page = definitionPage(pages, first);
    buffer.bytes.assign(page.begin(), page.end());
    for (PageNumber next{load<std::uint32_t>(page, 4)}; next != kNoPage;
         next = PageNumber{load<std::uint32_t>(page, 4)}) {
        if (buffer.continuation.size() == kMaxPages) {
            throwDamaged(first, "the table definition does not end");
        }
        page = definitionPage(pages, next);
        buffer.bytes.insert(buffer.bytes.end(), page.begin() + kPageHeader, page.end());
        buffer.continuation.push_back(next);
    }
    return buffer;
}

std::u16string readName(Reader& reader) {
    const auto length = reader.next<std::uint16_t>();
    if (length % 2 != 0) throwDamaged(reader.page(), "a name has half a character");
    const Bytes bytes = reader.take(length);
    std::u16string name(length / 2, u'\0');
    std::memcpy(name.data(), bytes.data(), length);
    return name;
}

Column readColumn(Reader& reader) {
    const Bytes at = reader.take(kColumnSize);
    const std::uint8_t flags = at[15];
    Column column;
    column.type = ColumnType{at[0]};
    column.id = load<std::uint16_t>(at, 5);
    column.variableIndex = load<std::uint16_t>(at, 7);
    column.ordinal = load<std::uint16_t>(at, 9);
    column.fixed = (flags & 0x01) != 0;
    column.autonumber = (flags & 0x04) != 0;
    column.compressed = (at[16] & 0x01) != 0;
    column.fixedOffset = load<std::uint16_t>(at, 21);
    column.size = load<std::uint16_t>(at, 23);
    if (column.type == ColumnType::Numeric) {
        column.precision = at[11];
        column.scale = at[12];
    } else {
        column.collation = {load<std::uint16_t>(at, 11), at[14]};
    }
    return column;
}

PhysicalIndex readPhysicalIndex(Reader& reader) {
    const Bytes at = reader.take(kPhysicalIndexSize);
    PhysicalIndex index;
    for (std::size_t i = 0; i < kIndexColumnSlots; ++i) {
        const auto id = load<std::uint16_t>(at, 4 + 3 * i);
        if (id != kNoColumn) index.columns.push_back({id, at[4 + 3 * i + 2] != 0});
    }
    index.map = RowId::fromPacked(load<std::uint32_t>(at, 34));
    index.root = PageNumber{load<std::uint32_t>(at, 38)};
    index.unique = (at[46] & 0x01) != 0;
    index.ignoreNulls = (at[46] & 0x02) != 0;
    index.required = (at[46] & 0x08) != 0;
    return index;
}

LogicalIndex readLogicalIndex(Reader& reader, std::size_t physicalCount) {
    const Bytes at = reader.take(kLogicalIndexSize);
    LogicalIndex index;
    index.number = load<std::uint32_t>(at, 4);
    index.physical = load<std::uint32_t>(at, 8);
    index.kind = IndexKind{at[23]};
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

/// A list of (column id, two maps) ended by FF FF.
void readLongValueMaps(Reader& reader, TableDefinition& definition) {
    while (reader.remaining() >= 2) {
        const auto id = reader.next<std::uint16_t>();
        if (id == kNoColumn) return;
        const auto owned = RowId::fromPacked(reader.next<std::uint32_t>());
        const auto free = RowId::fromPacked(reader.next<std::uint32_t>());
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
    const auto length = load<std::uint32_t>(bytes, 8);
    if (length < kVariablePart || length > bytes.size()) {
        throwDamaged(first, "the table definition is longer than its pages");
    }

    TableDefinition definition;
    definition.name = std::move(name);
    definition.page = first;
    definition.continuation = std::move(buffer.continuation);
    definition.rowCount = load<std::uint32_t>(bytes, 16);
    definition.lastAutonumber = load<std::uint32_t>(bytes, 20);
    definition.system = bytes[40] == 'S';
    definition.columnsEver = load<std::uint16_t>(bytes, 41);
    definition.variableColumnsEver = load<std::uint16_t>(bytes, 43);
    const unsigned columnCount = load<std::uint16_t>(bytes, 45);
    const auto logicalCount = load<std::uint32_t>(bytes, 47);
    const auto physicalCount = load<std::uint32_t>(bytes, 51);
    definition.ownedMap = RowId::fromPacked(load<std::uint32_t>(bytes, 55));
    definition.freeMap = RowId::fromPacked(load<std::uint32_t>(bytes, 59));
    if (columnCount > kMaxColumns || logicalCount > kMaxIndexes || physicalCount > kMaxIndexes) {
        throwDamaged(first, "the table definition has impossible counts");
    }

    Reader reader{bytes.first(length), first};
    reader.seek(kVariablePart);
    const Bytes counters = reader.take(kCounterSize * physicalCount);
    readColumns(reader, columnCount, definition);
    for (std::uint32_t i = 0; i < physicalCount; ++i) {
        PhysicalIndex index = readPhysicalIndex(reader);
        index.entriesAtBuild = load<std::uint32_t>(counters, kCounterSize * i);
        index.distinctKeys = load<std::uint32_t>(counters, kCounterSize * i + 4);
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
