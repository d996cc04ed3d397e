#include "engine/jet/database.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/plain_value.h"
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::shared_ptr<Database> open(const ByteVector& file) {
    return Database::open(std::make_unique<MemoryStorage>(file));
}

fixture::TableSpec table(std::u16string name, std::uint32_t flags = 0) {
    return {.name = std::move(name),
            .columns = {fixture::column(u"N", ColumnType::Long)},
            .catalogFlags = flags};
}

TEST(Catalog, OfAnEmptyDatabase) {
    fixture::FixtureBuilder builder;
    const auto database = open(builder.bytes());
    EXPECT_THAT(userTables(*database), IsEmpty());
    std::vector<std::u16string> tables;
    for (const CatalogEntry& entry : database->catalog()) {
        if (entry.isTable()) tables.push_back(entry.name);
    }
    EXPECT_THAT(tables, testing::UnorderedElementsAre(u"MSysObjects", u"MSysACEs", u"MSysQueries",
                                                      u"MSysRelationships"));
}

TEST(Catalog, TellsTablesFromOtherObjects) {
    fixture::FixtureBuilder builder;
    builder.addTable(table(u"Mine"));
    builder.addTable(table(u"MSysShell", 2));
    builder.addTable(table(u"MSysEngine", 0x80000000));
    builder.addCatalogRow({.id = 0x80000001, .name = u"aQuery", .type = 5});
    builder.addCatalogRow({.id = 0x80000002, .name = u"aLinkedTable", .type = 6});
    builder.addCatalogRow({.id = 0x80000003, .name = u"aForm", .type = -32768});
    builder.addTable(table(u"Other"));
    const auto database = open(builder.bytes());
    EXPECT_THAT(userTables(*database), ElementsAre(u"Mine", u"Other"));
    for (const std::u16string_view name : {u"aQuery", u"aLinkedTable", u"aForm"}) {
        expectFault(Fault::NoSuchTable, [&] { database->table(name); });
    }
    EXPECT_NO_THROW(database->table(u"MSysShell"));
}

TEST(Catalog, IdsAndParents) {
    fixture::FixtureBuilder builder;
    auto& mine = builder.addTable(table(u"Mine"));
    const auto database = open(builder.bytes());
    const auto& entries = database->catalog();
    const auto found = std::find_if(entries.begin(), entries.end(), [](const CatalogEntry& entry) {
        return entry.name == u"Mine";
    });
    ASSERT_NE(found, entries.end());
    EXPECT_EQ(found->id, raw(mine.definitionPage()));
    EXPECT_EQ(found->parentId, fixture::kTablesContainer);
    EXPECT_EQ(found->type, 1);
    EXPECT_EQ(found->flags, 0u);
    EXPECT_EQ(&database->catalog(), &entries);
}

TEST(Database, FindsTablesByName) {
    fixture::FixtureBuilder builder;
    builder.addTable(table(u"tblTraces"));
    builder.addTable(table(u"tblTraces2"));
    builder.addTable(table(u"Größe 日本"));
    const auto database = open(builder.bytes());
    EXPECT_EQ(database->table(u"TBLTRACES")->definition().name, u"tblTraces");
    EXPECT_EQ(database->table(u"tbltraces2")->definition().name, u"tblTraces2");
    EXPECT_EQ(database->table(u"GRÖSSE 日本")->definition().name, u"Größe 日本");
    EXPECT_EQ(&database->table(u"tblTraces")->database(), database.get());
    for (const std::u16string_view name : {u"", u"tblTrace", u"Grosse 日本", u"tblTraces3"}) {
        expectFault(Fault::NoSuchTable, [&] { database->table(name); });
    }
    const auto message = expectFault(Fault::NoSuchTable, [&] { database->table(u"nichts ß"); });
    EXPECT_THAT(message, HasSubstr("'nichts ß'"));
}

TEST(Database, ATableOutlivesItsDatabaseHandle) {
    fixture::FixtureBuilder builder;
    builder.addTable(table(u"Numbers")).insert({7});
    std::shared_ptr<const Table> numbers = open(builder.bytes())->table(u"Numbers");
    const auto rows = plainRows(*numbers);
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_EQ(rows[0][0], "7");
}

TEST(Database, ServesSeveralThreads) {
    fixture::FixtureBuilder builder;
    auto& numbers = builder.addTable(table(u"Numbers"));
    for (int n = 0; n < 500; ++n) numbers.insert({n});
    const auto database = open(builder.bytes());
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                const auto found = database->table(u"numbers");
                TableScan scan{*found};
                int count = 0;
                while (scan.next()) ++count;
                if (count != 500 || database->catalog().empty()) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

// --- A damaged catalog -----------------------------------------------------------------------

struct TwoTables {
    fixture::FixtureBuilder builder;
    PageNumber first = builder.addTable(table(u"First")).definitionPage();
    PageNumber second = builder.addTable(table(u"Second")).definitionPage();
    ByteVector file = builder.bytes();

    /// The place of an object's record in the catalog.
    RowId catalogRow(std::u16string_view name) const {
        const auto database = open(file);
        const auto objects = database->table(u"MSysObjects");
        TableScan scan{*objects};
        const Column& column = *objects->definition().findColumn(u"Name");
        while (scan.next()) {
            const Value value = decodeField(scan.pages(), column, scan.record().field(column),
                                            scan.record().page());
            if (value == Value{std::u16string{name}}) return scan.rowId();
        }
        throw std::out_of_range{"no such object"};
    }
};

TEST(DamagedCatalog, AnIdThatIsNoDefinition) {
    const TwoTables tables;
    const std::size_t id = fixture::rowOffset(tables.file, tables.catalogRow(u"First")) + 2;
    for (const std::uint32_t page : {0u, 1u, 7u, 0xFFFFFFu, 0xFFFFFFFFu}) {
        ByteVector file = tables.file;
        fixture::poke32(file, id, page);
        const auto database = open(file);
        expectFault(Fault::Damaged, [&] { database->table(u"First"); });
        EXPECT_NO_THROW(database->table(u"Second"));
    }
}

// One damaged record made the whole catalog unreadable, and with it every table.
TEST(DamagedCatalog, OneDamagedObjectDoesNotHideTheOthers) {
    const TwoTables tables;
    const RowId row = tables.catalogRow(u"First");
    ByteVector file = tables.file;
    fixture::poke16(file, fixture::rowOffset(file, row), 0x7FFF);
    const auto database = open(file);
    EXPECT_NO_THROW(database->table(u"Second"));
    expectFault(Fault::NoSuchTable, [&] { database->table(u"First"); });
    EXPECT_EQ(database->losses().tables, 1u);
}

TEST(DamagedCatalog, WithoutItTablesAreFoundByTheirDefinitions) {
    TwoTables tables;
    fixture::poke(tables.file, 2 * kPageSize, {0x01});
    const auto database = open(tables.file);
    EXPECT_THAT(userTables(*database), ElementsAre(u"Table1", u"Table2"));
    EXPECT_EQ(database->table(u"Table1")->definition().page, tables.first);
    EXPECT_EQ(database->table(u"Table2")->definition().page, tables.second);
    EXPECT_EQ(database->losses().tables, 1u);
    ASSERT_TRUE(database->firstLoss());
}

TEST(DamagedCatalog, TheTableOfTracesIsKnownByItsColumns) {
    for (const auto format :
         {fixture::TraceFormat::Oldest, fixture::TraceFormat::Older, fixture::TraceFormat::Newer}) {
        fixture::FixtureBuilder builder;
        builder.addTable(table(u"Mine"));
        fixture::addTraceTables(builder, {.rows = 20}, format);
        fixture::ByteVector file = builder.bytes();
        fixture::poke(file, 2 * kPageSize, {0x00});
        const auto database = open(file);
        EXPECT_THAT(userTables(*database), Contains(u"tblTraces"));
        EXPECT_THAT(plainRows(*database->table(u"tblTraces")), SizeIs(20));
    }
}

TEST(DamagedCatalog, ALostEntryIsNamedAndItsTableFound) {
    const TwoTables tables;
    ByteVector file = tables.file;
    fixture::poke16(file, fixture::rowOffset(file, tables.catalogRow(u"First")), 0x7FFF);
    const auto database = open(file);
    EXPECT_THAT(userTables(*database), ElementsAre(u"Second", u"Table1"));
    EXPECT_EQ(database->losses().tables, 1u);
    EXPECT_EQ(database->losses().reasons.at(0).slot, tables.catalogRow(u"First").slot());
    EXPECT_EQ(database->table(u"Table1")->definition().page, tables.first);
}

/// In a sound catalog a definition that no entry leads to is what a dropped table has left.
TEST(Catalog, DoesNotShowWhatNoEntryLeadsTo) {
    const TwoTables tables;
    ByteVector file = tables.file;
    const RowId row = tables.catalogRow(u"First");
    fixture::poke16(file, fixture::rowOffset(file, row) + 2, 0xFFFF);
    EXPECT_THAT(userTables(*open(file)), testing::Not(Contains(u"Table1")));
}

TEST(DamagedMap, PagesAreFoundByTheirOwner) {
    fixture::FixtureBuilder builder;
    auto& numbers = builder.addTable(table(u"Numbers"));
    for (int n = 0; n < 500; ++n) numbers.insert({n});
    const std::size_t map = fixture::pageOffset(numbers.definitionPage()) + 55;
    for (const std::uint32_t row : {0u, 0xFFFFFF01u, 0x00000100u | 77u}) {
        ByteVector file = builder.bytes();
        fixture::poke32(file, map, row);
        const auto database = open(file);
        const auto found = database->table(u"Numbers");
        TableScan scan{*found};
        int count = 0;
        while (scan.next()) ++count;
        EXPECT_EQ(count, 500);
        EXPECT_EQ(scan.losses().definitions, 1u);
        EXPECT_TRUE(database->firstLoss());
    }
}

TEST(DamagedCatalog, ATableWhoseDefinitionIsDamaged) {
    TwoTables tables;
    fixture::poke(tables.file, fixture::pageOffset(tables.first), {0x01});
    const auto database = open(tables.file);
    const auto message = expectFault(Fault::Damaged, [&] { database->table(u"First"); });
    EXPECT_THAT(message, HasSubstr("page " + std::to_string(raw(tables.first))));
    EXPECT_NO_THROW(database->table(u"Second"));
}

}  // namespace
}  // namespace jet
