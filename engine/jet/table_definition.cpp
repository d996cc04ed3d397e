#include "engine/jet/table_definition.h"

#include "engine/jet/bytes.h"
#include "engine/jet/collation.h"
#include "engine/jet/definition_parts.h"
#include "engine/jet/format/page.h"
#include "engine/jet/text.h"

#include <algorithm>

namespace jet {
namespace {

namespace layout = format::table_definition;
namespace index_counter = format::index_counter;

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

/// Throws Error{Damaged} if the first page is none; ends early at any other that is none.
Buffer gatherPages(PageReader& pages, PageNumber first, Losses& losses) {
    Buffer buffer;
    Bytes page = definitionPage(pages, first);
    buffer.bytes.assign(page.begin(), page.end());
    try {
        for (PageNumber next = load(page, layout::kNextPage); next != kNoPage;
             next = load(page, layout::kNextPage)) {
            if (buffer.continuation.size() + 1 == layout::kMaxPages) {
                throwDamaged(first, "the table definition does not end");
            }
            page = definitionPage(pages, next);
            buffer.bytes.insert(buffer.bytes.end(), page.begin() + layout::kPageHead, page.end());
            buffer.continuation.push_back(next);
        }
    } catch (const Error& error) {
        if (!isDamage(error)) throw;
        losses.add({Loss::Kind::Definitions, first, Loss::kNoSlot, error.what()});
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

LogicalIndex readLogicalIndex(Reader& reader) {
    namespace block = format::logical_index;
    const Bytes at = reader.take(block::kSize);
    LogicalIndex index;
    index.number = load(at, block::kNumber);
    index.physical = load(at, block::kPhysical);
    index.kind = load(at, block::kKind);
    return index;
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

namespace {

/// Reads a definition as far as it makes sense.
class DefinitionReader {
public:
    DefinitionReader(PageReader& pages, PageNumber first, std::u16string name) {
        definition_.name = std::move(name);
        definition_.page = first;
        Buffer buffer = gatherPages(pages, first, definition_.losses);
        definition_.continuation = std::move(buffer.continuation);
        bytes_ = std::move(buffer.bytes);
    }

    TableDefinition read() {
        readHead();
        const DefinitionParts parts = findParts(bytes_, definition_.page);
        if (!parts.countsAreRight) lose("its counts of columns or indexes are wrong");
        Reader reader{bytes_, definition_.page};
        reader.seek(index_counter::placeOf(parts.physicalIndexes));
        for (std::size_t i = 0; i < parts.columns; ++i) {
            definition_.columns.push_back(readColumn(reader));
        }
        if (readNames(reader, parts)) readRest(reader, parts.physicalIndexes);
        return std::move(definition_);
    }

private:
    void lose(std::string why) {
        definition_.losses.add({Loss::Kind::Definitions, definition_.page, Loss::kNoSlot,
                                "In the definition of the table " + toUtf8(definition_.name) +
                                    ", " + std::move(why) + "."});
    }

    void readHead() {
        const Bytes bytes{bytes_};
        definition_.rowCount = load(bytes, layout::kRowCount);
        definition_.lastAutonumber = load(bytes, layout::kLastAutonumber);
        definition_.system = load(bytes, layout::kTableKind) == layout::kSystemTable;
        definition_.columnsEver = load(bytes, layout::kColumnsEver);
        definition_.variableColumnsEver = load(bytes, layout::kVariableColumnsEver);
        definition_.ownedMap = load(bytes, layout::kOwnedMap);
        definition_.freeMap = load(bytes, layout::kFreeMap);
    }

    /// Columns without a readable name are numbered. False if it is not known where the names end.
    bool readNames(Reader& reader, const DefinitionParts& parts) {
        const ColumnNames names = readColumnNames(bytes_, reader.position(), parts);
        for (std::size_t i = 0; i < definition_.columns.size(); ++i) {
            Column& column = definition_.columns[i];
            column.name = names.names[i];
            if (isUsableName(column.name)) continue;
            column.name = u"Column" + toUtf16(std::to_string(i + 1));
            lose("the name of column " + std::to_string(i + 1) + " cannot be read");
        }
        if (names.end == 0) {
            lose("the indexes cannot be read");
            return false;
        }
        reader.seek(names.end);
        return true;
    }

    /// What rows can be read without.
    void readRest(Reader& reader, std::size_t physicalCount) {
        try {
            readIndexes(reader, physicalCount);
            readLongValueMaps(reader, definition_);
        } catch (const Error& error) {
            if (!isDamage(error)) throw;
            definition_.physicalIndexes.clear();
            definition_.logicalIndexes.clear();
            lose("the indexes cannot be read");
        }
    }

    void readIndexes(Reader& reader, std::size_t physicalCount) {
        for (std::size_t i = 0; i < physicalCount; ++i) {
            PhysicalIndex index = readPhysicalIndex(reader);
            const Bytes counter = Bytes{bytes_}.subspan(index_counter::placeOf(i));
            index.entriesAtBuild = load(counter, index_counter::kEntriesAtBuild);
            index.distinctKeys = load(counter, index_counter::kDistinctKeys);
            definition_.physicalIndexes.push_back(std::move(index));
        }
        const std::uint32_t logicalCount = load(Bytes{bytes_}, layout::kLogicalIndexCount);
        if (logicalCount > layout::kMaxIndexesRead) {
            throwDamaged(definition_.page, "there are too many indexes");
        }
        std::vector<LogicalIndex>& indexes = definition_.logicalIndexes;
        for (std::uint32_t i = 0; i < logicalCount; ++i) {
            indexes.push_back(readLogicalIndex(reader));
        }
        for (LogicalIndex& index : indexes) index.name = readName(reader);
        const std::size_t without = std::erase_if(indexes, [&](const LogicalIndex& index) {
            return index.physical >= definition_.physicalIndexes.size();
        });
        if (without > 0) lose("an index has no tree");
    }

    std::vector<std::uint8_t> bytes_;
    TableDefinition definition_;
};

}  // namespace

TableDefinition TableDefinition::read(PageReader& pages, PageNumber first, std::u16string name) {
    return DefinitionReader{pages, first, std::move(name)}.read();
}

}  // namespace jet
