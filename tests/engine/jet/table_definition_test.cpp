#include "engine/jet/table_definition.h"

#include "engine/jet/column_conflicts.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
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

/// Changes the first page of the definition of everyKind().
class DamagedDefinition : public testing::Test {
protected:
    TableDefinition read16(std::size_t offset, std::uint16_t word) {
        ByteVector file = file_;
        fixture::poke16(file, fixture::pageOffset(built_.page()) + offset, word);
        return read(file, built_.page());
    }
    TableDefinition read32(std::size_t offset, std::uint32_t word) {
        ByteVector file = file_;
        fixture::poke32(file, fixture::pageOffset(built_.page()) + offset, word);
        return read(file, built_.page());
    }

    /// The columns are all there, with their names.
    void expectAllColumns(const TableDefinition& definition) {
        const TableDefinition sound = built_.read();
        ASSERT_THAT(definition.columns, SizeIs(sound.columns.size()));
        for (std::size_t i = 0; i < sound.columns.size(); ++i) {
            EXPECT_EQ(definition.columns[i].name, sound.columns[i].name);
            EXPECT_EQ(definition.columns[i].type, sound.columns[i].type);
            EXPECT_EQ(definition.columns[i].id, sound.columns[i].id);
        }
    }

    static constexpr std::size_t kFirstColumn = 63 + 2 * 12;
    static constexpr std::size_t kFirstName = kFirstColumn + 10 * 25;

    Built built_;
    ByteVector file_ = built_.builder.bytes();
};

TEST_F(DamagedDefinition, LengthIsNotNeeded) {
    for (std::uint32_t length : {0u, 62u, 64u, 4097u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        expectAllColumns(read32(8, length));
    }
}

TEST_F(DamagedDefinition, CountsAreFoundWhereTheyAreWrong) {
    for (const std::uint16_t count : std::initializer_list<std::uint16_t>{0, 9, 11, 256, 0xFFFF}) {
        const TableDefinition definition = read16(45, count);
        if (count == 0) continue;
        expectAllColumns(definition);
        EXPECT_EQ(definition.losses.definitions, 1u);
        EXPECT_THAT(definition.logicalIndexes, SizeIs(2));
    }
    for (std::uint32_t count : {0u, 1u, 3u, 300u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const TableDefinition definition = read32(51, count);
        expectAllColumns(definition);
        EXPECT_TRUE(definition.losses.any());
    }
    for (std::uint32_t count : {300u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const TableDefinition definition = read32(47, count);
        expectAllColumns(definition);
        EXPECT_TRUE(definition.losses.any());
        EXPECT_THAT(definition.logicalIndexes, SizeIs(0));
    }
}

TEST_F(DamagedDefinition, ALengthOfANameIsFoundBySearchingTheNext) {
    for (const std::uint16_t length :
         std::initializer_list<std::uint16_t>{0, 3, 6, 0x1000, 0xFFFE}) {
        const TableDefinition definition = read16(kFirstName, length);
        expectAllColumns(definition);
        EXPECT_THAT(definition.logicalIndexes, SizeIs(2));
    }
}

TEST_F(DamagedDefinition, AnUnusableNameIsMadeUp) {
    const TableDefinition definition = read16(kFirstName + 2, 0x0007);
    EXPECT_EQ(definition.columns[0].name, u"Column1");
    EXPECT_EQ(definition.columns[1].name, u"Name");
    EXPECT_EQ(definition.losses.definitions, 1u);
}

TEST_F(DamagedDefinition, TwoColumnsOfOneName) {
    // The columns are Id, Name, Plain and Code.
    const std::size_t code = kFirstName + (2 + 2 * 2) + (2 + 2 * 4) + (2 + 2 * 5) + 2;
    ByteVector file = file_;
    std::size_t at = fixture::pageOffset(built_.page()) + code;
    for (const char16_t unit : {u'N', u'a', u'm', u'e'}) {
        fixture::poke16(file, at, unit);
        at += 2;
    }
    TableDefinition definition = read(file, built_.page());
    setAsideConflicts(definition);
    EXPECT_EQ(definition.columns[1].name, u"Name");
    EXPECT_EQ(definition.columns[3].name, u"Column4");
    EXPECT_EQ(definition.columns[4].name, u"Active");
    EXPECT_EQ(definition.losses.definitions, 1u);
}

TEST_F(DamagedDefinition, AnIndexWithoutTreeIsNone) {
    std::size_t names = 0;
    for (const Column& column : read(file_, built_.page()).columns)
        names += 2 + 2 * column.name.size();
    const std::size_t firstLogical = kFirstName + names + 2 * 52;
    for (const std::uint32_t tree : {2u, 0xFFFFFFFFu}) {
        const TableDefinition definition = read32(firstLogical + 8, tree);
        expectAllColumns(definition);
        EXPECT_THAT(definition.logicalIndexes, SizeIs(1));
        EXPECT_EQ(definition.losses.definitions, 1u);
    }
}

TEST_F(DamagedDefinition, ANextPageThatIsNoneOfItIsLost) {
    for (const std::uint32_t page : {1u, 0xFFFFFFFFu}) {
        const TableDefinition definition = read32(4, page);
        expectAllColumns(definition);
        EXPECT_EQ(definition.losses.definitions, 1u);
    }
}

/// What contradictory columns become.
class ConflictingColumns : public DamagedDefinition {
protected:
    static constexpr std::size_t kType = 0, kId = 5, kVariable = 7, kFlags = 15, kOffset = 21;

    /// The names of the columns that are unreadable when a word of a column is changed.
    std::vector<std::u16string> unreadableWith(std::size_t column, std::size_t field,
                                               std::uint16_t word) {
        TableDefinition definition = read16(kFirstColumn + 25 * column + field, word);
        return unreadableOf(definition);
    }

    static std::vector<std::u16string> unreadableOf(TableDefinition& definition) {
        setAsideConflicts(definition);
        std::vector<std::u16string> names;
        for (const Column& column : definition.columns) {
            if (!column.unreadable.empty()) names.push_back(column.name);
        }
        EXPECT_EQ(definition.losses.any(), !names.empty());
        return names;
    }
};

TEST_F(ConflictingColumns, ThereAreNoneInASoundDefinition) {
    TableDefinition definition = built_.read();
    EXPECT_THAT(unreadableOf(definition), IsEmpty());
    built_.table.dropColumn(u"Plain");
    built_.table.dropColumn(u"Salary");
    built_.table.addColumn(fixture::textColumn(u"Late", 10));
    definition = built_.read();
    EXPECT_THAT(unreadableOf(definition), IsEmpty());
}

TEST_F(ConflictingColumns, AnUnknownType) {
    for (const std::uint16_t type : std::initializer_list<std::uint16_t>{0, 13, 14, 18, 255}) {
        EXPECT_THAT(unreadableWith(1, kType, static_cast<std::uint16_t>(0x5900 | type)),
                    ElementsAre(u"Name"));
    }
}

TEST_F(ConflictingColumns, ANumberThatIsTooHigh) {
    EXPECT_THAT(unreadableWith(3, kId, 10), ElementsAre(u"Code"));
    EXPECT_THAT(unreadableWith(3, kId, 0xFFFF), ElementsAre(u"Code"));
    EXPECT_THAT(unreadableWith(1, kVariable, 5), ElementsAre(u"Name"));
}

TEST_F(ConflictingColumns, ANumberOfAnother) {
    EXPECT_THAT(unreadableWith(1, kId, 2), ElementsAre(u"Name", u"Plain"));
    EXPECT_THAT(unreadableWith(1, kVariable, 1), ElementsAre(u"Name", u"Plain"));
}

TEST_F(ConflictingColumns, APlaceOfAnother) {
    EXPECT_THAT(unreadableWith(5, kOffset, 2), Contains(u"Born"));
    EXPECT_THAT(unreadableWith(5, kOffset, 0x500), ElementsAre(u"Born"));
}

/// A date that says it is stored as a variable column takes the place of a text: the text stays.
TEST_F(ConflictingColumns, TheColumnThatIsOddlyStoredIsToBlame) {
    EXPECT_THAT(unreadableWith(5, kFlags, 0x02), ElementsAre(u"Born"));
}

/// Where the bit of a column is known, records can say that it is Null; the bit of a Boolean is its
/// value.
TEST_F(ConflictingColumns, WhetherTheyAreNullIsKnownByTheirId) {
    const auto idForNull = [&](std::size_t column, std::size_t field, std::uint16_t word) {
        TableDefinition definition = read16(kFirstColumn + 25 * column + field, word);
        setAsideConflicts(definition);
        EXPECT_NE(definition.columns.at(column).unreadable, "");
        return definition.columns.at(column).idForNull;
    };
    EXPECT_EQ(idForNull(1, kType, 0x5900), 1);
    EXPECT_EQ(idForNull(5, kOffset, 0x500), 5);
    EXPECT_EQ(idForNull(3, kId, 10), 0xFFFF);
    EXPECT_EQ(idForNull(1, kId, 2), 0xFFFF);
    for (std::size_t i = 0; i < 10; ++i) {
        const TableDefinition intact = built_.read();
        if (intact.columns.at(i).type != ColumnType::Boolean) continue;
        EXPECT_EQ(idForNull(i, kType, 0x5900), 0xFFFF);
    }
}

TEST_F(ConflictingColumns, FewerColumnsEverThanThereAre) {
    TableDefinition definition = read16(41, 9);
    setAsideConflicts(definition);
    for (const Column& column : definition.columns) EXPECT_EQ(column.unreadable, "");
    EXPECT_EQ(definition.losses.definitions, 1u);
}

TEST(TableDefinition, ChainsThatDoNotEnd) {
    Built built{wide()};
    ByteVector file = built.builder.bytes();
    const auto& pages = built.table.definitionPages();
    for (const PageNumber next : {pages.front(), pages.back()}) {
        fixture::poke32(file, fixture::pageOffset(pages.back()) + 4, raw(next));
        const TableDefinition definition = read(file, built.page());
        EXPECT_THAT(definition.columns, SizeIs(250));
        EXPECT_EQ(definition.columns.back().name, u"a column whose name is long 249");
        EXPECT_TRUE(definition.losses.any());
    }
}

TEST(TableDefinition, AChainThatEndsEarly) {
    Built built{wide()};
    ByteVector file = built.builder.bytes();
    fixture::poke32(file, fixture::pageOffset(built.page()) + 4, 0);
    const TableDefinition definition = read(file, built.page());
    EXPECT_THAT(definition.columns, Not(IsEmpty()));
    EXPECT_TRUE(definition.losses.any());
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
