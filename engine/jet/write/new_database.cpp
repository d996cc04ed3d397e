#include "engine/jet/write/new_database.h"

#include "engine/jet/database.h"
#include "engine/jet/format/system_tables.h"
#include "engine/jet/header.h"
#include "engine/jet/write/data_page_edit.h"
#include "engine/jet/write/definition_blocks.h"
#include "engine/jet/write/index_node.h"
#include "engine/jet/write/table_writer.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace jet {
namespace {

namespace layout = format::system_tables;

// ---- The system tables --------------------------------------------------------------------------

void formatLeaf(Pager& pager, PageNumber number, PageNumber owner) {
    IndexNode leaf;
    leaf.number = number;
    leaf.writeTo(*pager.edit(number), owner);
}

void addToMap(WriteContext& context, unsigned map, PageNumber number) {
    UsageMapWriter set{context.pager, layout::mapAt(map)};
    set.insert(number);
    set.save(context.allocator);
}

PhysicalIndex describe(const layout::SystemIndex& index) {
    namespace flags = format::physical_index;
    PhysicalIndex physical{.columns = {},
                           .map = layout::mapAt(index.map),
                           .root = index.root,
                           .unique = (index.flags & flags::kUnique) != 0,
                           .ignoreNulls = (index.flags & flags::kIgnoreNulls) != 0,
                           .required = (index.flags & flags::kRequired) != 0};
    for (const std::uint16_t id : index.columns) physical.columns.push_back({id, true});
    return physical;
}

void writeTable(WriteContext& context, const layout::SystemTable& table) {
    const unsigned freeMap = table.ownedMap + 1;
    DefinitionEditor definition{context, table.definition, true, layout::mapAt(table.ownedMap),
                                layout::mapAt(freeMap)};
    for (const layout::SystemColumn& column : table.columns) {
        definition.addColumn(encodeColumn({.type = column.type,
                                           .id = column.id,
                                           .variableIndex = column.variableIndex,
                                           .flags = column.flags,
                                           .fixedOffset = column.fixedOffset,
                                           .size = column.length}),
                             std::u16string{column.name});
    }
    for (std::uint32_t i = 0; i < table.indexes.size(); ++i) {
        const layout::SystemIndex& index = table.indexes[i];
        definition.addPhysicalIndex(describe(index), 0, 0);
        definition.addLogicalIndex(
            {.name = std::u16string{index.name}, .number = i, .physical = i, .kind = index.kind});
        formatLeaf(context.pager, index.root, table.definition);
        addToMap(context, index.map, index.root);
    }
    for (const layout::LongValueMaps& maps : table.longValues) {
        definition.addLongValueMaps(maps.column, layout::mapAt(maps.owned),
                                    layout::mapAt(maps.free));
    }
    definition.set(format::table_definition::kColumnsEver, table.columnsEver);
    definition.set(format::table_definition::kVariableColumnsEver, table.variableColumnsEver);
    definition.write();
    if (table.data == kNoPage) return;
    formatDataPage(*context.pager.edit(table.data), raw(table.definition));
    addToMap(context, table.ownedMap, table.data);
    addToMap(context, freeMap, table.data);
}

// ---- Their rows ---------------------------------------------------------------------------------

// Security identifiers are scrambled with a key that depends on the header's creation date, in a
// way that is not known. These belong to the date that the header has here, which therefore is
// the same in every database; the catalog says when it was made.
const Binary kEngine{0x65, 0x89};
const Binary kAdmin{0x64, 0x8B};
const Binary kUsers{0x65, 0x8B};
const Binary kCreator{0x65, 0x8E};

constexpr std::uint32_t kTables = format::catalog::kTablesContainer;
constexpr std::uint32_t kDatabases = format::catalog::kDatabasesContainer;
constexpr std::uint32_t kRelationships = format::catalog::kRelationshipsContainer;
constexpr std::uint32_t kDatabaseItself = format::catalog::kDatabaseObject;

constexpr std::uint32_t kObjectsTable = raw(format::catalog::kObjects);
constexpr std::uint32_t kRightsTable = raw(format::catalog::kRights);
constexpr std::uint32_t kQueriesTable = raw(format::catalog::kQueries);
constexpr std::uint32_t kRelationshipsTable = raw(format::catalog::kRelationships);

Value longValue(std::uint32_t value) { return static_cast<std::int32_t>(value); }

void addObjects(WriteContext& context) {
    struct Object {
        std::uint32_t id;
        std::uint32_t parent;
        const char16_t* name;
        std::int16_t type;
        const Binary& owner;
    };
    using format::catalog::kContainer;
    using format::catalog::kContainers;
    using format::catalog::kDatabase;
    using format::catalog::kTable;
    const std::array<Object, 8> objects{{
        {kTables, kContainers, u"Tables", kContainer, kEngine},
        {kDatabases, kContainers, u"Databases", kContainer, kEngine},
        {kRelationships, kContainers, u"Relationships", kContainer, kEngine},
        {kDatabaseItself, kDatabases, u"MSysDb", kDatabase, kAdmin},
        {kObjectsTable, kTables, u"MSysObjects", kTable, kEngine},
        {kRightsTable, kTables, u"MSysACEs", kTable, kEngine},
        {kQueriesTable, kTables, u"MSysQueries", kTable, kEngine},
        {kRelationshipsTable, kTables, u"MSysRelationships", kTable, kEngine},
    }};
    PageReader pages{context.database.storage(), context.database.cache()};
    TableWriter writer{context,
                       TableDefinition::read(pages, format::catalog::kObjects, u"MSysObjects")};
    for (const Object& object : objects) {
        std::vector<Value> row(writer.definition().columns.size());
        const auto set = [&](std::u16string_view name, Value value) {
            const Column* const column = writer.definition().findColumn(name);
            row[static_cast<std::size_t>(column - writer.definition().columns.data())] =
                std::move(value);
        };
        set(u"Id", longValue(object.id));
        set(u"ParentId", longValue(object.parent));
        set(u"Name", std::u16string{object.name});
        set(u"Type", object.type);
        set(u"Owner", object.owner);
        set(u"Flags", longValue(format::catalog::kEngineObject));
        set(u"DateCreate", context.now);
        set(u"DateUpdate", context.now);
        writer.insert(row);
    }
    writer.finish();
}

void addRights(WriteContext& context) {
    struct Right {
        std::uint32_t object;
        const Binary& holder;
        std::uint32_t mask;
        bool inheritable;
    };
    const std::array<Right, 16> rights{{
        {kObjectsTable, kAdmin, 0x60000, false},
        {kRightsTable, kAdmin, 0x60000, false},
        {kQueriesTable, kAdmin, 0x60000, false},
        {kRelationshipsTable, kAdmin, 0xE0000, false},
        {kTables, kCreator, 0xF00FE, true},
        {kTables, kAdmin, 0x60001, false},
        {kRelationships, kCreator, 0xF00FE, true},
        {kRelationships, kAdmin, 0x60001, false},
        {kDatabases, kAdmin, 0x60000, false},
        {kDatabaseItself, kAdmin, 0x6000E, false},
        {kDatabaseItself, kUsers, 0xE, false},
        {kQueriesTable, kUsers, 0x14, false},
        {kRelationshipsTable, kUsers, 0x14, false},
        {kObjectsTable, kUsers, 0x14, false},
        {kTables, kUsers, 0xFFEFF, true},
        {kRelationships, kUsers, 0xFFFFF, true},
    }};
    PageReader pages{context.database.storage(), context.database.cache()};
    TableWriter writer{context,
                       TableDefinition::read(pages, format::catalog::kRights, u"MSysACEs")};
    for (const Right& right : rights) {
        // The columns are those of format::system_tables::kAcesColumns.
        const std::vector<Value> row{longValue(right.mask), right.inheritable,
                                     longValue(right.object), right.holder};
        writer.insert(row);
    }
    writer.finish();
}

// ---- The pages that are no tables ---------------------------------------------------------------

/// The map of free pages, in which the pages that there are are in use.
void writeFreePages(Page& page) {
    namespace map = format::usage_map;
    std::vector<std::uint8_t> free(map::kNewRowSize, 0xFF);
    std::fill_n(free.begin(), map::kBits + layout::kPageCount / 8, std::uint8_t{0});
    const std::vector<std::uint8_t> second(map::kNewRowSize);
    formatDataPage(page, map::kFreePagesOwner);
    appendRow(page, free, 0);
    appendRow(page, second, 0);
}

void writeMaps(Page& page) {
    const std::vector<std::uint8_t> empty(format::usage_map::kNewRowSize);
    formatDataPage(page, format::usage_map::kOwner);
    for (unsigned i = 0; i < layout::kMapCount; ++i) appendRow(page, empty, 0);
}

void copyTo(std::vector<std::uint8_t>& file, PageNumber number, const Page& page) {
    std::ranges::copy(page, file.begin() + static_cast<std::ptrdiff_t>(raw(number) * kPageSize));
}

}  // namespace

std::vector<std::uint8_t> emptyDatabase(Date now) {
    std::vector<std::uint8_t> file(layout::kPageCount * kPageSize);
    Page page{};
    writeHeader(page);
    copyTo(file, kNoPage, page);
    writeFreePages(page);
    copyTo(file, format::usage_map::kFreePages.page(), page);
    writeMaps(page);
    copyTo(file, layout::kMaps, page);

    auto storage = std::make_unique<MemoryStorage>(std::move(file));
    const MemoryStorage& content = *storage;
    const auto database = Database::open(std::move(storage));
    database->setClock([now] { return now; });
    database->write([](WriteContext& context) {
        for (const layout::SystemTable* table : layout::kTables) writeTable(context, *table);
        addObjects(context);
        addRights(context);
    });
    database->commit();
    return content.content();
}

void createDatabase(const std::filesystem::path& path, Date now) {
    const std::vector<std::uint8_t> content = emptyDatabase(now);
    const auto file = createFile(path);
    file->lock();
    file->writeAt(0, content);
    file->sync();
    file->unlock();
}

}  // namespace jet
