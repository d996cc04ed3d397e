#include "engine/jet/table_definition.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::SizeIs;

TableDefinition read(const ByteVector& file, PageNumber first) {
    MemoryPages pages{file};
    PageReader reader = pages.reader();
    return TableDefinition::read(reader, first, u"People");
}

/// A table with a column of every kind.
fixture::TableSpec everyKind() {
    fixture::ColumnSpec autonumber = fixture::column(u"Id", ColumnType::Long);
    autonumber.autonumber = true;
    return {
        .name = u"People",
        .columns = {autonumber, fixture::textColumn(u"Name", 50),
                    fixture::textColumn(u"Plain", 255, false), fixture::fixedTextColumn(u"Code", 4),
                    fixture::column(u"Active", ColumnType::Boolean),
                    fixture::column(u"Born", ColumnType::Date),
                    fixture::numericColumn(u"Salary", 18, 4), fixture::memoColumn(u"Note"),
                    fixture::column(u"Photo", ColumnType::Ole), fixture::binaryColumn(u"Key", 20)},
        .indexes = {
            {.name = u"PrimaryKey",
             .columns = {{u"Id"}},
             .unique = true,
             .required = true,
             .primary = true},
            {.name = u"byName", .columns = {{u"Name"}, {u"Born", false}}, .ignoreNulls = true}}};
}

struct Built {
    fixture::FixtureBuilder builder;
    fixture::TableBuilder& table;

    explicit Built(fixture::TableSpec spec = everyKind())
        : table{builder.addTable(std::move(spec))} {}

    PageNumber page() const { return table.definitionPage(); }
    TableDefinition read() { return jet::read(builder.bytes(), page()); }
};

TEST(TableDefinition, Columns) {
    Built built;
    const TableDefinition definition = built.read();
    EXPECT_EQ(definition.name, u"People");
    EXPECT_EQ(definition.page, built.page());
    EXPECT_FALSE(definition.system);
    EXPECT_EQ(definition.columnsEver, 10);
    EXPECT_EQ(definition.variableColumnsEver, 5);
    ASSERT_THAT(definition.columns, SizeIs(10));
    const Column& id = definition.columns[0];
    EXPECT_EQ(id.name, u"Id");
    EXPECT_EQ(id.type, ColumnType::Long);
    EXPECT_TRUE(id.fixed);
    EXPECT_TRUE(id.autonumber);
    const Column& name = definition.columns[1];
    EXPECT_EQ(name.type, ColumnType::Text);
    EXPECT_EQ(name.size, 100);
    EXPECT_FALSE(name.fixed);
    EXPECT_TRUE(name.compressed);
    EXPECT_TRUE(name.collation.isGeneralLegacy());
    EXPECT_FALSE(definition.columns[2].compressed);
    EXPECT_TRUE(definition.columns[3].fixed);
    EXPECT_EQ(definition.columns[3].size, 8);
    EXPECT_EQ(definition.columns[6].precision, 18);
    EXPECT_EQ(definition.columns[6].scale, 4);
}

TEST(TableDefinition, LongValueColumnsHaveMaps) {
    Built built;
    const TableDefinition definition = built.read();
    for (const Column& column : definition.columns) {
        EXPECT_EQ(column.ownedMap != RowId{}, column.isLongValue());
    }
    const auto& parts = built.table.parts();
    EXPECT_EQ(definition.findColumn(u"Note")->ownedMap, parts.longValueMaps.at(7).owned);
    EXPECT_EQ(definition.findColumn(u"Photo")->freeMap, parts.longValueMaps.at(8).free);
    EXPECT_EQ(definition.ownedMap, parts.maps.owned);
    EXPECT_EQ(definition.freeMap, parts.maps.free);
}

TEST(TableDefinition, Indexes) {
    Built built;
    const TableDefinition definition = built.read();
    ASSERT_THAT(definition.logicalIndexes, SizeIs(2));
    ASSERT_THAT(definition.physicalIndexes, SizeIs(2));
    const auto find = [&](std::u16string_view name) -> const LogicalIndex& {
        for (const LogicalIndex& index : definition.logicalIndexes) {
            if (index.name == name) return index;
        }
        throw std::out_of_range{"no such index"};
    };
    const LogicalIndex& primary = find(u"PrimaryKey");
    EXPECT_EQ(primary.kind, IndexKind::PrimaryKey);
    const PhysicalIndex& primaryTree = definition.physicalIndexes[primary.physical];
    EXPECT_TRUE(primaryTree.unique);
    EXPECT_TRUE(primaryTree.required);
    EXPECT_EQ(primaryTree.root, built.table.index(u"PrimaryKey").root());
    const PhysicalIndex& byName = definition.physicalIndexes[find(u"byName").physical];
    EXPECT_FALSE(byName.unique);
    EXPECT_TRUE(byName.ignoreNulls);
    ASSERT_THAT(byName.columns, SizeIs(2));
    EXPECT_EQ(byName.columns[0].columnId, 1);
    EXPECT_TRUE(byName.columns[0].ascending);
    EXPECT_EQ(byName.columns[1].columnId, 5);
    EXPECT_FALSE(byName.columns[1].ascending);
}

TEST(TableDefinition, FindsColumnsWithoutRegardToCase) {
    Built built;
    const TableDefinition definition = built.read();
    EXPECT_EQ(definition.findColumn(u"NAME"), &definition.columns[1]);
    EXPECT_EQ(definition.findColumn(u"name"), &definition.columns[1]);
    EXPECT_EQ(definition.findColumn(u"Names"), nullptr);
    EXPECT_EQ(definition.findColumn(std::uint16_t{5}), &definition.columns[5]);
    EXPECT_EQ(definition.findColumn(std::uint16_t{99}), nullptr);
}

TEST(TableDefinition, CountsAndAutonumber) {
    Built built;
    for (std::int32_t id : {3, 17, 5}) built.table.insert({id});
    const TableDefinition definition = built.read();
    EXPECT_EQ(definition.rowCount, 3u);
    EXPECT_EQ(definition.lastAutonumber, 17u);
}

TEST(TableDefinition, DeletedColumnsLeaveTheirNumbers) {
    Built built;
    built.table.dropColumn(u"Plain");
    built.table.addColumn(fixture::textColumn(u"Late", 10));
    const TableDefinition definition = built.read();
    ASSERT_THAT(definition.columns, SizeIs(10));
    EXPECT_EQ(definition.columnsEver, 11);
    EXPECT_EQ(definition.findColumn(u"Plain"), nullptr);
    EXPECT_EQ(definition.findColumn(std::uint16_t{2}), nullptr);
    EXPECT_EQ(definition.findColumn(u"Late")->id, 10);
}

fixture::TableSpec wide(unsigned columns = 250) {
    fixture::TableSpec spec{.name = u"Wide"};
    for (unsigned i = 0; i < columns; ++i) {
        const std::string number = std::to_string(i);
        spec.columns.push_back(fixture::textColumn(
            u"a column whose name is long " + std::u16string{number.begin(), number.end()}, 20));
    }
    return spec;
}

TEST(TableDefinition, SpansPages) {
    Built built{wide()};
    const TableDefinition definition = built.read();
    ASSERT_THAT(definition.columns, SizeIs(250));
    EXPECT_EQ(definition.columns[249].name, u"a column whose name is long 249");
    EXPECT_THAT(definition.continuation, SizeIs(built.table.definitionPages().size() - 1));
    EXPECT_GE(definition.continuation.size(), 4u);
}

TEST(TableDefinition, MustStandOnItsKindOfPage) {
    Built built;
    const ByteVector& file = built.builder.bytes();
    expectFault(Fault::Damaged, [&] { read(file, PageNumber{1}); });
    expectFault(Fault::Damaged, [&] { read(file, kNoPage); });
    expectFault(Fault::Damaged, [&] { read(file, PageNumber{0xFFFFFF}); });
    EXPECT_NO_THROW(read(file, built.page()));
}

/// Changes the first page of the definition and expects that it is refused.
class DamagedDefinition : public testing::Test {
protected:
    void refuse16(std::size_t offset, std::uint16_t word) {
        ByteVector file = file_;
        fixture::poke16(file, fixture::pageOffset(built_.page()) + offset, word);
        expectFault(Fault::Damaged, [&] { read(file, built_.page()); });
    }
    void refuse32(std::size_t offset, std::uint32_t word) {
        ByteVector file = file_;
        fixture::poke32(file, fixture::pageOffset(built_.page()) + offset, word);
        expectFault(Fault::Damaged, [&] { read(file, built_.page()); });
    }

    Built built_;
    ByteVector file_ = built_.builder.bytes();
};

TEST_F(DamagedDefinition, Length) {
    for (std::uint32_t length : {0u, 62u, 64u, 4097u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        refuse32(8, length);
}

TEST_F(DamagedDefinition, Counts) {
    for (const std::uint16_t count : std::initializer_list<std::uint16_t>{11, 256, 0xFFFF})
        refuse16(45, count);
    for (std::uint32_t count : {300u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        refuse32(47, count);
        refuse32(51, count);
    }
}

TEST_F(DamagedDefinition, ColumnNumbers) {
    refuse16(41, 9);  // fewer columns ever than there are
    const std::size_t firstColumn = 63 + 2 * 12;
    refuse16(firstColumn + 5, 10);
    refuse16(firstColumn + 5, 0xFFFF);
}

TEST_F(DamagedDefinition, Names) {
    const std::size_t firstName = 63 + 2 * 12 + 10 * 25;
    refuse16(firstName, 3);
    refuse16(firstName, 0x1000);
    refuse16(firstName, 0xFFFE);
}

TEST_F(DamagedDefinition, AnIndexWithoutTree) {
    std::size_t names = 0;
    for (const Column& column : read(file_, built_.page()).columns)
        names += 2 + 2 * column.name.size();
    const std::size_t firstLogical = 63 + 2 * 12 + 10 * 25 + names + 2 * 52;
    refuse32(firstLogical + 8, 2);
    refuse32(firstLogical + 8, 0xFFFFFFFF);
}

TEST_F(DamagedDefinition, NextPage) {
    refuse32(4, raw(built_.page()));  // a ring
    refuse32(4, 1);                   // of another kind
    refuse32(4, 0xFFFFFFFF);
}

TEST(TableDefinition, ChainsThatDoNotEnd) {
    Built built{wide()};
    ByteVector file = built.builder.bytes();
    const auto& pages = built.table.definitionPages();
    fixture::poke32(file, fixture::pageOffset(pages.back()) + 4, raw(pages.front()));
    expectFault(Fault::Damaged, [&] { read(file, built.page()); });
    fixture::poke32(file, fixture::pageOffset(pages.back()) + 4, raw(pages.back()));
    expectFault(Fault::Damaged, [&] { read(file, built.page()); });
}

TEST(TableDefinition, AChainThatEndsEarly) {
    Built built{wide()};
    ByteVector file = built.builder.bytes();
    fixture::poke32(file, fixture::pageOffset(built.page()) + 4, 0);
    expectFault(Fault::Damaged, [&] { read(file, built.page()); });
}

/// However one byte of it is changed: it can be read, or is refused as damaged.
TEST(TableDefinition, EveryByteMayBeWrong) {
    Built built;
    const ByteVector& file = built.builder.bytes();
    const std::size_t begin = fixture::pageOffset(built.page());
    const auto length = fixture::get<std::uint32_t>(file, begin + 8);
    for (std::size_t offset = 0; offset < length; ++offset) {
        for (const std::uint8_t change : std::initializer_list<std::uint8_t>{0xFF, 0x80, 0x01}) {
            ByteVector damaged = file;
            damaged[begin + offset] ^= change;
            try {
                const TableDefinition definition = read(damaged, built.page());
                ASSERT_LE(definition.columns.size(), 255u);
            } catch (const Error& error) {
                ASSERT_EQ(error.fault(), Fault::Damaged) << offset;
            }
        }
    }
}

}  // namespace
}  // namespace jet
