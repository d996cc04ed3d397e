// The checker on definitions of tables and on the catalog.
#include "tests/engine/jet/check/check_support.h"

namespace jet {
namespace {

using fixture::poke;
using fixture::poke16;
using fixture::poke32;

/// Changes the file of a new sample and expects one finding on the definition of its empty table.
template <typename Damage>
void expectInEmptyTable(Rule rule, Damage damage) {
    CheckSample sample;
    damage(sample.file, sample.emptyOffsets());
    expectFinding(sample.file, {rule, sample.empty.definitionPage()});
}

using Offsets = const DefinitionOffsets&;

TEST(CheckDefinition, Constants) {
    const auto flip = [](std::size_t (*where)(Offsets)) {
        expectInEmptyTable(Rule::DefinitionLayout, [where](fixture::ByteVector& file, Offsets at) {
            file[where(at)] ^= 0x20;
        });
    };
    flip([](Offsets at) { return at.header(12); });
    flip([](Offsets at) { return at.header(40); });
    flip([](Offsets at) { return at.column(2) + 1; });
    flip([](Offsets at) { return at.physicalIndex(1); });
    flip([](Offsets at) { return at.logicalIndex(0); });
    flip([](Offsets at) { return at.header(2); });  // free bytes
}

TEST(CheckDefinition, Length) {
    CheckSample longer;
    const std::size_t length = longer.emptyOffsets().header(8);
    poke32(longer.file, length, fixture::get<std::uint32_t>(longer.file, length) + 2);
    const Expected layout{Rule::DefinitionLayout, longer.empty.definitionPage()};
    expectFindings(longer.file, {layout, layout});  // the free bytes and the end

    CheckSample shorter;
    poke32(shorter.file, length, 62);
    expectFinding(shorter.file, layout);

    CheckSample huge;
    poke32(huge.file, length, 0xFFFFFFFF);
    expectFinding(huge.file, layout);
}

TEST(CheckDefinition, EndMark) {
    CheckSample sample;
    const std::size_t begin = sample.emptyOffsets().header(0);
    const std::size_t end = begin + fixture::get<std::uint32_t>(sample.file, begin + 8);
    poke16(sample.file, end - 2, 0x0102);
    expectFinding(sample.file, {Rule::DefinitionLayout, sample.empty.definitionPage()});
}

TEST(CheckDefinition, ChainOfPages) {
    fixture::FixtureBuilder builder;
    fixture::TableSpec wide{.name = u"Wide"};
    for (int i = 0; i < 200; ++i) {
        const std::string number = std::to_string(i);
        wide.columns.push_back(fixture::textColumn(
            u"a column of number " + std::u16string{number.begin(), number.end()}, 9));
    }
    auto& table = builder.addTable(wide);
    const fixture::ByteVector sound = builder.bytes();
    const auto& pages = table.definitionPages();
    ASSERT_GE(pages.size(), 3u);
    expectClean(sound);

    auto freeBytes = sound;
    poke16(freeBytes, fixture::pageOffset(pages.back()) + 2, 1);
    expectFinding(freeBytes, {Rule::DefinitionLayout, pages.back()});
    poke16(freeBytes, fixture::pageOffset(pages.back()) + 2,
           fixture::get<std::uint16_t>(sound, fixture::pageOffset(pages.back()) + 2));
    poke16(freeBytes, fixture::pageOffset(pages[1]) + 2, 1);
    expectFinding(freeBytes, {Rule::DefinitionLayout, pages[1]});

    auto ring = sound;
    poke32(ring, fixture::pageOffset(pages.back()) + 4, raw(pages[1]));
    expectFinding(ring, {Rule::PageOwnership, pages[1]});

    auto foreign = sound;
    poke32(foreign, fixture::pageOffset(pages[0]) + 4, 3);
    expectAmong(foreign, {Rule::PageOwnership, PageNumber{3}});

    auto type = sound;
    type[fixture::pageOffset(pages[1])] = 4;
    expectFinding(type, {Rule::PageType, pages[1]});
}

TEST(CheckDefinition, Columns) {
    expectInEmptyTable(Rule::Columns, [](auto& file, Offsets at) {
        poke16(file, at.column(2) + 5, 1);  // the number of B
    });
    expectInEmptyTable(Rule::Columns, [](auto& file, Offsets at) {
        poke16(file, at.column(2) + 7, 0);  // the variable place of B
    });
    expectInEmptyTable(Rule::Columns, [](auto& file, Offsets at) {
        poke16(file, at.column(2) + 7, 2);  // there are two
    });
    expectInEmptyTable(Rule::Columns, [](auto& file, Offsets at) {
        poke16(file, at.column(3) + 21, 3);  // into A
    });
    expectInEmptyTable(Rule::Columns, [](auto& file, Offsets at) {
        file[at.columnName(2)] = 'b';  // the name of B, but for its case
    });
}

TEST(CheckDefinition, Indexes) {
    expectInEmptyTable(Rule::IndexDefinition, [](auto& file, Offsets at) {
        poke16(file, at.physicalIndex(1) + 4, 9);  // no such column
    });
    expectInEmptyTable(Rule::IndexDefinition, [](auto& file, Offsets at) {
        poke32(file, at.logicalIndex(1) + 8, 2);  // no such tree
    });
    expectInEmptyTable(Rule::IndexDefinition, [](auto& file, Offsets at) {
        file[at.logicalIndex(1) + 23] = 1;  // another primary key
    });
    expectInEmptyTable(Rule::IndexDefinition, [](auto& file, Offsets at) {
        poke32(file, at.logicalIndex(1) + 4, 0);  // the number of the other
    });
    expectInEmptyTable(Rule::IndexDefinition, [](auto& file, Offsets at) {
        poke(file, at.indexName(1), {'O', 0, 'n', 0, 'e', 0});
    });
    CheckSample sample;
    poke(sample.file, sample.emptyOffsets().indexName(1), {'a', 0});
    expectFinding(sample.file, warning({Rule::IndexDefinition, sample.empty.definitionPage()}));
}

TEST(CheckDefinition, RowCount) {
    CheckSample sample;
    poke32(sample.file, sample.offsets().header(16), 38);
    expectFinding(sample.file, warning({Rule::RowCount, sample.definition()}));
    poke32(sample.file, sample.offsets().header(16), 41);  // a row has gone
    expectFinding(sample.file, {Rule::RowCount, sample.definition()});
}

TEST(CheckDefinition, Autonumber) {
    CheckSample sample;
    poke32(sample.file, sample.offsets().header(20), 41);
    expectClean(sample.file);  // numbers handed out for rows that were deleted
    poke32(sample.file, sample.offsets().header(20), 39);
    expectFinding(sample.file, warning({Rule::Autonumber, sample.definition()}));
}

// --- The catalog -------------------------------------------------------------------------------

/// The rows that addTable enters stand behind the eight of the system, on one page.
RowId catalogRow(const CheckSample& sample, std::uint32_t id) {
    const PageNumber page{14};
    for (unsigned slot = 0; slot < fixture::get<std::uint16_t>(sample.file, 14 * kPageSize + 12);
         ++slot) {
        const RowId row{page, slot};
        if (fixture::get<std::uint32_t>(sample.file, fixture::rowOffset(sample.file, row) + 2) ==
            id)
            return row;
    }
    ADD_FAILURE() << "the catalog stands elsewhere";
    return {};
}

TEST(CheckCatalog, AnObjectWithoutDefinition) {
    CheckSample sample;
    const RowId row = catalogRow(sample, raw(sample.empty.definitionPage()));
    poke32(sample.file, fixture::rowOffset(sample.file, row) + 2, 6);
    const auto found = findingsIn(sample.file);
    EXPECT_THAT(found, testing::Contains(Expected{Rule::Catalog, row}));
    EXPECT_THAT(found, testing::Contains(Expected{Rule::IndexKey, row}));
    EXPECT_THAT(found, testing::Contains(Expected{Rule::AccessRights, row}));
    EXPECT_THAT(found,
                testing::Contains(warning({Rule::OrphanPage, sample.empty.definitionPage()})));
}

TEST(CheckCatalog, TwoObjectsWithOneDefinition) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A", .columns = {fixture::textColumn(u"T", 5)}});
    builder.addCatalogRow({.id = raw(table.definitionPage()), .name = u"B"});
    const auto found = findingsIn(builder.bytes());
    EXPECT_EQ(found.size(), 2u);
    EXPECT_THAT(found, testing::Contains(testing::Field(&Expected::rule, Rule::Catalog)));
    EXPECT_THAT(found, testing::Contains(testing::Field(&Expected::rule, Rule::UniqueKey)));
}

TEST(CheckCatalog, ADefinitionWithoutObject) {
    CheckSample sample;
    const RowId row = catalogRow(sample, raw(sample.empty.definitionPage()));
    poke16(sample.file, fixture::rowOffset(sample.file, row) + 2 + 8, 5);  // a query
    expectAmong(sample.file, {Rule::Catalog, sample.empty.definitionPage()});
}

TEST(CheckCatalog, TheCatalogItself) {
    CheckSample sample;
    const RowId row = catalogRow(sample, 2);
    poke16(sample.file, fixture::rowOffset(sample.file, row) + 2 + 8, 5);
    expectFinding(sample.file, {Rule::Catalog, PageNumber{2}});
}

TEST(CheckCatalog, OtherObjectsNeedNoDefinition) {
    fixture::FixtureBuilder builder;
    builder.addCatalogRow({.id = 0x80000001, .name = u"a query", .type = 5});
    builder.addCatalogRow({.id = 0x80000002, .name = u"a linked table", .type = 6});
    expectClean(builder.bytes());
}

TEST(CheckCatalog, AccessRights) {
    CheckSample sample;
    const std::uint32_t id = raw(sample.empty.definitionPage());
    std::vector<Expected> expected{{Rule::AccessRights, catalogRow(sample, id)}};
    constexpr PageNumber kRights{15};
    for (unsigned slot = 0; slot < 20; ++slot) {
        const std::size_t at = fixture::rowOffset(sample.file, {kRights, slot}) + 2;
        if (fixture::get<std::uint32_t>(sample.file, at) != id) continue;
        poke32(sample.file, at, id + 1000);
        expected.emplace_back(Rule::IndexKey, RowId{kRights, slot});
    }
    EXPECT_EQ(expected.size(), 3u);
    expectFindings(sample.file, expected);
}

}  // namespace
}  // namespace jet
