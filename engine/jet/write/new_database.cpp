#include "engine/jet/write/new_database.h"

#include "engine/jet/database.h"
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

constexpr std::uint32_t kPageCount = 16;
constexpr PageNumber kMaps{6};
constexpr unsigned kMapCount = 31;

constexpr RowId mapAt(unsigned slot) { return RowId{kMaps, slot}; }

// ---- The system tables --------------------------------------------------------------------------

constexpr std::uint8_t kFixed = kColumnOfSystem | kColumnUpdatable | kColumnFixed;
constexpr std::uint8_t kVariable = kColumnOfSystem | kColumnUpdatable;
constexpr std::uint8_t kRights = kColumnOfRights | kColumnOfSystem | kColumnUpdatable;

struct SystemColumn {
    const char16_t* name;
    ColumnType type;
    std::uint16_t id;
    std::uint16_t variableIndex;
    std::uint16_t fixedOffset;
    std::uint16_t size;
    std::uint8_t flags;
};

struct SystemIndex {
    const char16_t* name;
    std::vector<std::uint16_t> columns;
    unsigned map;  ///< row on the page of maps
    PageNumber root;
    bool unique;
    bool ignoreNulls;
    bool required;
    IndexKind kind;
};

struct LongValueMaps {
    std::uint16_t column;
    unsigned owned;
    unsigned free;
};

struct SystemTable {
    PageNumber definition;
    unsigned ownedMap;
    std::uint16_t columnsEver;
    std::uint16_t variableEver;
    std::vector<SystemColumn> columns;  ///< by name
    std::vector<SystemIndex> indexes;   ///< in the order of their creation
    std::vector<LongValueMaps> longValues;
    PageNumber data = kNoPage;  ///< its only page; kNoPage if it has no rows
};

SystemTable objectsTable() {
    using enum ColumnType;
    return {.definition = PageNumber{2},
            .ownedMap = 0,
            .columnsEver = 17,
            .variableEver = 11,
            .columns = {{u"Connect", Memo, 9, 3, 0, 0, kVariable},
                        {u"Database", Memo, 8, 2, 0, 0, kVariable},
                        {u"DateCreate", Date, 4, 1, 10, 8, kFixed},
                        {u"DateUpdate", Date, 5, 1, 18, 8, kFixed},
                        {u"Flags", Long, 7, 2, 26, 4, kFixed},
                        {u"ForeignName", Text, 10, 4, 0, 510, kVariable},
                        {u"Id", Long, 0, 0, 0, 4, kFixed},
                        {u"Lv", Ole, 13, 7, 0, 0, kVariable},
                        {u"LvExtra", Ole, 16, 10, 0, 0, kVariable},
                        {u"LvModule", Ole, 15, 9, 0, 0, kVariable},
                        {u"LvProp", Ole, 14, 8, 0, 0, kVariable},
                        {u"Name", Text, 2, 0, 0, 510, kVariable},
                        {u"Owner", Binary, 6, 1, 0, 510, kRights},
                        {u"ParentId", Long, 1, 0, 4, 4, kFixed},
                        {u"RmtInfoLong", Ole, 12, 6, 0, 0, kVariable},
                        {u"RmtInfoShort", Binary, 11, 5, 0, 510, kVariable},
                        {u"Type", Integer, 3, 1, 8, 2, kFixed}},
            .indexes =
                {{u"ParentIdName", {1, 2}, 16, PageNumber{7}, true, false, false, IndexKind::Plain},
                 {u"Id", {0}, 17, PageNumber{8}, true, false, false, IndexKind::PrimaryKey}},
            .longValues = {{9, 4, 5},
                           {8, 2, 3},
                           {13, 8, 9},
                           {16, 14, 15},
                           {15, 12, 13},
                           {14, 10, 11},
                           {12, 6, 7}},
            .data = PageNumber{14}};
}

SystemTable rightsTable() {
    using enum ColumnType;
    return {
        .definition = PageNumber{3},
        .ownedMap = 18,
        .columnsEver = 4,
        .variableEver = 1,
        .columns = {{u"ACM", Long, 2, 1, 4, 4, kFixed},
                    {u"FInheritable", Boolean, 3, 1, 0, 1, kFixed},
                    {u"ObjectId", Long, 0, 0, 0, 4, kFixed},
                    {u"SID", Binary, 1, 0, 0, 510, kRights}},
        .indexes = {{u"ObjectId", {0}, 20, PageNumber{9}, false, false, true, IndexKind::Plain}},
        .longValues = {},
        .data = PageNumber{15}};
}

SystemTable queriesTable() {
    using enum ColumnType;
    return {.definition = PageNumber{4},
            .ownedMap = 21,
            .columnsEver = 8,
            .variableEver = 4,
            .columns = {{u"Attribute", Byte, 1, 0, 4, 1, kFixed},
                        {u"Expression", Memo, 5, 3, 0, 0, kVariable},
                        {u"Flag", Integer, 6, 4, 5, 2, kFixed},
                        {u"LvExtra", Long, 7, 4, 7, 4, kFixed},
                        {u"Name1", Text, 3, 1, 0, 510, kVariable},
                        {u"Name2", Text, 4, 2, 0, 510, kVariable},
                        {u"ObjectId", Long, 0, 0, 0, 4, kFixed},
                        {u"Order", Binary, 2, 0, 0, 510, kVariable}},
            .indexes = {{u"ObjectIdAttribute",
                         {0, 1, 2},
                         25,
                         PageNumber{10},
                         true,
                         false,
                         false,
                         IndexKind::PrimaryKey}},
            .longValues = {{5, 23, 24}}};
}

SystemTable relationshipsTable() {
    using enum ColumnType;
    return {.definition = PageNumber{5},
            .ownedMap = 26,
            .columnsEver = 8,
            .variableEver = 5,
            .columns = {{u"ccolumn", Long, 2, 1, 4, 4, kFixed},
                        {u"grbit", Long, 1, 1, 0, 4, kFixed},
                        {u"icolumn", Long, 3, 1, 8, 4, kFixed},
                        {u"szColumn", Text, 5, 2, 0, 510, kVariable},
                        {u"szObject", Text, 4, 1, 0, 510, kVariable},
                        {u"szReferencedColumn", Text, 7, 4, 0, 510, kVariable},
                        {u"szReferencedObject", Text, 6, 3, 0, 510, kVariable},
                        {u"szRelationship", Text, 0, 0, 0, 510, kVariable}},
            .indexes =
                {{u"szRelationship", {0}, 28, PageNumber{11}, false, true, false, IndexKind::Plain},
                 {u"szObject", {4}, 29, PageNumber{12}, false, true, false, IndexKind::Plain},
                 {u"szReferencedObject",
                  {6},
                  30,
                  PageNumber{13},
                  false,
                  true,
                  false,
                  IndexKind::Plain}},
            .longValues = {}};
}

void formatLeaf(Pager& pager, PageNumber number, PageNumber owner) {
    IndexNode leaf;
    leaf.number = number;
    leaf.writeTo(*pager.edit(number), owner);
}

void addToMap(WriteContext& context, unsigned map, PageNumber number) {
    UsageMapWriter set{context.pager, mapAt(map)};
    set.insert(number);
    set.save(context.allocator);
}

void writeTable(WriteContext& context, const SystemTable& table) {
    DefinitionEditor definition{context, table.definition, true, mapAt(table.ownedMap),
                                mapAt(table.ownedMap + 1)};
    for (const SystemColumn& column : table.columns) {
        definition.addColumn(encodeColumn({.type = column.type,
                                           .id = column.id,
                                           .variableIndex = column.variableIndex,
                                           .flags = column.flags,
                                           .fixedOffset = column.fixedOffset,
                                           .size = column.size}),
                             column.name);
    }
    for (std::uint32_t i = 0; i < table.indexes.size(); ++i) {
        const SystemIndex& index = table.indexes[i];
        PhysicalIndex physical{.columns = {},
                               .map = mapAt(index.map),
                               .root = index.root,
                               .unique = index.unique,
                               .ignoreNulls = index.ignoreNulls,
                               .required = index.required};
        for (const std::uint16_t id : index.columns) physical.columns.push_back({id, true});
        definition.addPhysicalIndex(physical, 0, 0);
        definition.addLogicalIndex(
            {.name = index.name, .number = i, .physical = i, .kind = index.kind});
        formatLeaf(context.pager, index.root, table.definition);
        addToMap(context, index.map, index.root);
    }
    for (const LongValueMaps& maps : table.longValues) {
        definition.addLongValueMaps(maps.column, mapAt(maps.owned), mapAt(maps.free));
    }
    definition.set(kDefinitionColumnsEver, table.columnsEver);
    definition.set(kDefinitionVariableEver, table.variableEver);
    definition.write();
    if (table.data == kNoPage) return;
    formatDataPage(*context.pager.edit(table.data), raw(table.definition));
    addToMap(context, table.ownedMap, table.data);
    addToMap(context, table.ownedMap + 1, table.data);
}

// ---- Their rows ---------------------------------------------------------------------------------

// Security identifiers are scrambled with a key that depends on the header's creation date, in a
// way that is not known. These belong to the date that the header has here, which therefore is
// the same in every database; when it was made stands in the catalog.
const Binary kEngine{0x65, 0x89};
const Binary kAdmin{0x64, 0x8B};
const Binary kUsers{0x65, 0x8B};
const Binary kCreator{0x65, 0x8E};

constexpr std::uint32_t kTables = 0x0F000001;
constexpr std::uint32_t kDatabases = 0x0F000002;
constexpr std::uint32_t kRelationships = 0x0F000003;
constexpr std::uint32_t kContainers = 0x0F000000;
constexpr std::uint32_t kDatabaseItself = 0x10000000;

Value longValue(std::uint32_t value) { return static_cast<std::int32_t>(value); }

void addObjects(WriteContext& context) {
    struct Object {
        std::uint32_t id;
        std::uint32_t parent;
        const char16_t* name;
        std::int16_t type;
        const Binary& owner;
    };
    const std::array<Object, 8> objects{{
        {kTables, kContainers, u"Tables", 3, kEngine},
        {kDatabases, kContainers, u"Databases", 3, kEngine},
        {kRelationships, kContainers, u"Relationships", 3, kEngine},
        {kDatabaseItself, kDatabases, u"MSysDb", 2, kAdmin},
        {2, kTables, u"MSysObjects", 1, kEngine},
        {3, kTables, u"MSysACEs", 1, kEngine},
        {4, kTables, u"MSysQueries", 1, kEngine},
        {5, kTables, u"MSysRelationships", 1, kEngine},
    }};
    PageReader pages{context.database.storage(), context.database.cache()};
    TableWriter writer{context, TableDefinition::read(pages, PageNumber{2}, u"MSysObjects")};
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
        set(u"Flags", longValue(0x80000000));
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
        {2, kAdmin, 0x60000, false},
        {3, kAdmin, 0x60000, false},
        {4, kAdmin, 0x60000, false},
        {5, kAdmin, 0xE0000, false},
        {kTables, kCreator, 0xF00FE, true},
        {kTables, kAdmin, 0x60001, false},
        {kRelationships, kCreator, 0xF00FE, true},
        {kRelationships, kAdmin, 0x60001, false},
        {kDatabases, kAdmin, 0x60000, false},
        {kDatabaseItself, kAdmin, 0x6000E, false},
        {kDatabaseItself, kUsers, 0xE, false},
        {4, kUsers, 0x14, false},
        {5, kUsers, 0x14, false},
        {2, kUsers, 0x14, false},
        {kTables, kUsers, 0xFFEFF, true},
        {kRelationships, kUsers, 0xFFFFF, true},
    }};
    PageReader pages{context.database.storage(), context.database.cache()};
    TableWriter writer{context, TableDefinition::read(pages, PageNumber{3}, u"MSysACEs")};
    for (const Right& right : rights) {
        // The columns are those of rightsTable().
        const std::vector<Value> row{longValue(right.mask), right.inheritable,
                                     longValue(right.object), right.holder};
        writer.insert(row);
    }
    writer.finish();
}

// ---- The pages that are no tables ---------------------------------------------------------------

/// The map of free pages, which knows of 512: these 16 are in use.
void writeFreePages(Page& page) {
    constexpr std::uint32_t kOwner = 1;
    std::vector<std::uint8_t> map(kMapRowSize, 0xFF);
    std::fill_n(map.begin(), 5 + kPageCount / 8, std::uint8_t{0});
    const std::vector<std::uint8_t> second(kMapRowSize);
    formatDataPage(page, kOwner);
    appendRow(page, map, 0);
    appendRow(page, second, 0);
}

void writeMaps(Page& page) {
    const std::vector<std::uint8_t> empty(kMapRowSize);
    formatDataPage(page, 0);
    for (unsigned i = 0; i < kMapCount; ++i) appendRow(page, empty, 0);
}

void copyTo(std::vector<std::uint8_t>& file, PageNumber number, const Page& page) {
    std::ranges::copy(page, file.begin() + static_cast<std::ptrdiff_t>(raw(number) * kPageSize));
}

}  // namespace

std::vector<std::uint8_t> emptyDatabase(Date now) {
    std::vector<std::uint8_t> file(kPageCount * kPageSize);
    Page page{};
    writeHeader(page);
    copyTo(file, PageNumber{0}, page);
    writeFreePages(page);
    copyTo(file, PageNumber{1}, page);
    writeMaps(page);
    copyTo(file, kMaps, page);

    auto storage = std::make_unique<MemoryStorage>(std::move(file));
    const MemoryStorage& content = *storage;
    const auto database = Database::open(std::move(storage));
    database->setClock([now] { return now; });
    database->write([](WriteContext& context) {
        for (const SystemTable& table :
             {objectsTable(), rightsTable(), queriesTable(), relationshipsTable()}) {
            writeTable(context, table);
        }
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
