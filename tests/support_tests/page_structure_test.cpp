// Pages, maps, trees and definitions: that they keep to the rules of the format.
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace fixture {
namespace {

using jet::ColumnType;

std::uint16_t slotWord(const ByteVector& file, jet::RowId row) {
    return get<std::uint16_t>(file, slotOffset(row));
}

ByteView pageOf(const ByteVector& file, jet::PageNumber page) {
    return ByteView{file}.subspan(pageOffset(page), jet::kPageSize);
}

std::uint16_t slotCount(ByteView page) { return get<std::uint16_t>(page, 12); }

/// What the free field must say: the room between the slots and the last row.
std::size_t roomOn(ByteView page) {
    const std::size_t slots = slotCount(page);
    const std::size_t last =
        slots == 0 ? jet::kPageSize : get<std::uint16_t>(page, 12 + 2 * slots) & 0x1FFFu;
    return last - 14 - 2 * slots;
}

TableSpec oneText() { return {.name = u"t", .columns = {textColumn(u"a", 255)}}; }

TEST(DataPages, DeletedRowsLeaveNoGap) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(oneText());
    const jet::RowId first = table.insert({u"the first row"});
    const jet::RowId second = table.insert({u"the second row"});
    const jet::RowId third = table.insert({u"the third row"});
    const std::size_t length = 2 + 2 + 14 + 2 + 2 + 2 + 1;
    table.deleteRow(second);
    const ByteVector& file = builder.bytes();
    EXPECT_EQ(slotWord(file, second), (slotWord(file, first) & 0x1FFF) | 0xC000);
    EXPECT_EQ(rowLength(file, second), 0u);
    EXPECT_EQ(rowLength(file, third), length - 1);
    const ByteView page = pageOf(file, first.page());
    EXPECT_EQ(get<std::uint16_t>(page, 2), roomOn(page));
    EXPECT_EQ(get<std::uint32_t>(pageOf(file, table.definitionPage()), 16), 2u);
}

TEST(DataPages, TheFirstRowOfAPageCanBeDeleted) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(oneText());
    const jet::RowId row = table.insert({u"alone"});
    table.deleteRow(row);
    EXPECT_EQ(slotWord(builder.bytes(), row), 0xD000);
}

TEST(DataPages, AMovedRecordIsReachedInOneHopHoweverOftenItMoves) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(oneText());
    const jet::RowId home = table.insert({u"short"});
    table.moveRow(home, {u"longer than before"});
    const jet::RowId before = table.recordPlace(home);
    table.moveRow(home, {u"longer than ever before"});
    const jet::RowId place = table.recordPlace(home);
    const ByteVector& file = builder.bytes();
    EXPECT_NE(place.page(), home.page());
    EXPECT_EQ(slotWord(file, home) & 0xC000, kSlotPointer);
    EXPECT_EQ(slotWord(file, place) & 0xC000, kSlotMoved);
    EXPECT_EQ(slotWord(file, before) & 0xC000, kSlotDeleted);
    EXPECT_EQ(get<std::uint32_t>(file, rowOffset(file, home)), place.packed());
    EXPECT_EQ(table.rowCount(), 1u);
}

TEST(DataPages, HoldNoMoreThan255Rows) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t", .columns = {column(u"b", ColumnType::Boolean)}});
    for (int i = 0; i < 600; ++i) table.insert({i % 2 == 0});
    const ByteVector& file = builder.bytes();
    ASSERT_EQ(table.dataPages().size(), 3u);
    EXPECT_EQ(slotCount(pageOf(file, table.dataPages()[0])), 255);
    EXPECT_EQ(slotCount(pageOf(file, table.dataPages()[2])), 90);
}

TEST(LongValues, TakeTheFormTheirLengthAsksFor) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable({.name = u"t", .columns = {memoColumn(u"m", false)}});
    const auto insert = [&table](std::size_t characters) {
        return table.insert({std::u16string(characters, u'x')});
    };
    const jet::RowId inlined = insert(32);
    const jet::RowId single = insert(33);
    const jet::RowId longestSingle = insert(2038);
    const jet::RowId chain = insert(2039);
    const ByteVector& file = builder.bytes();
    const auto header = [&file](jet::RowId row, std::size_t field) {
        return get<std::uint32_t>(file, longValueHeaderOffset(file, row, 0) + 4 * field);
    };
    EXPECT_EQ(header(inlined, 0), 0x80000000u | 64);
    EXPECT_EQ(header(single, 0), 0x40000000u | 66);
    EXPECT_EQ(header(longestSingle, 0), 0x40000000u | 4076);
    EXPECT_EQ(header(chain, 0), 4078u);
    const jet::RowId first = jet::RowId::fromPacked(header(chain, 1));
    EXPECT_EQ(rowLength(file, first), 4076u);
    EXPECT_EQ(get<std::uint32_t>(pageOf(file, first.page()), 8), header(chain, 2));
    const jet::RowId last =
        jet::RowId::fromPacked(get<std::uint32_t>(file, rowOffset(file, first)));
    EXPECT_EQ(rowLength(file, last), 4u + 4078 - 4072);
    EXPECT_EQ(get<std::uint32_t>(file, rowOffset(file, last)), 0u);
}

TEST(UsageMaps, AreInlineOrByReference) {
    for (const MapForm form : {MapForm::Inline, MapForm::Reference}) {
        FixtureBuilder builder;
        TableSpec spec = oneText();
        spec.maps = form;
        TableBuilder& table = builder.addTable(spec);
        table.insert({u"a"});
        const ByteVector& file = builder.bytes();
        const std::size_t map = rowOffset(file, table.parts().maps.owned);
        const std::uint32_t page = raw(table.dataPages()[0]);
        if (form == MapForm::Inline) {
            EXPECT_EQ(file[map], 0);
            EXPECT_EQ(file[map + 5 + page / 8], 1u << (page % 8));
        } else {
            EXPECT_EQ(file[map], 1);
            const ByteView bitmap =
                pageOf(file, jet::PageNumber{get<std::uint32_t>(file, map + 1)});
            EXPECT_EQ(bitmap[0], 5);
            EXPECT_EQ(bitmap[4 + page / 8], 1u << (page % 8));
        }
    }
}

TEST(FreePageMap, GrowsWithTheFile) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(oneText());
    while (builder.pageCount() < 743) {
        table.startNewPage();
        table.insert({u"a"});
    }
    const ByteVector& file = builder.bytes();
    const jet::RowId map{jet::PageNumber{1}, 0};
    ASSERT_EQ(rowLength(file, map), 5u + 96);
    const std::size_t bitmap = rowOffset(file, map) + 5;
    const std::uint32_t pages = builder.pageCount();
    EXPECT_EQ(file[bitmap + (pages - 1) / 8] >> ((pages - 1) % 8) & 1, 0);
    EXPECT_EQ(file[bitmap + pages / 8] >> (pages % 8) & 1, 1);
}

TEST(FreePageMap, HasThePagesOfDroppedLongValues) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t", .columns = {memoColumn(u"m"), textColumn(u"a", 9)}});
    table.insert({std::u16string(500, u'x'), u"a"});
    const std::uint32_t page = raw(table.longValuePages(u"m")[0]);
    table.dropColumn(u"m");
    const ByteVector& file = builder.bytes();
    const std::size_t bitmap = rowOffset(file, {jet::PageNumber{1}, 0}) + 5;
    EXPECT_EQ(file[bitmap + page / 8] >> (page % 8) & 1, 1);
    EXPECT_EQ(file[bitmap + raw(table.dataPages()[0]) / 8] >> (raw(table.dataPages()[0]) % 8) & 1,
              0);
}

TEST(Definitions, SpanAsManyPagesAsTheyNeed) {
    FixtureBuilder builder;
    TableSpec spec{.name = u"wide"};
    for (int i = 0; i < 200; ++i) {
        const std::string name = "ColumnWithALongName" + std::to_string(i);
        spec.columns.push_back(textColumn({name.begin(), name.end()}, 20));
    }
    TableBuilder& table = builder.addTable(spec);
    const ByteVector& file = builder.bytes();
    ASSERT_EQ(table.definitionPages().size(), 4u);
    const std::uint32_t length = get<std::uint32_t>(pageOf(file, table.definitionPage()), 8);
    const std::uint32_t onLast = length - 4096 - 2 * 4088;
    for (std::size_t i = 0; i < 4; ++i) {
        const ByteView page = pageOf(file, table.definitionPages()[i]);
        EXPECT_EQ(get<std::uint16_t>(page, 2), i < 3 ? 0 : 4096 - 8 - (8 + onLast));
        EXPECT_EQ(get<std::uint32_t>(page, 4), i < 3 ? raw(table.definitionPages()[i + 1]) : 0);
    }
    const ByteView last = pageOf(file, table.definitionPages()[3]);
    EXPECT_EQ(get<std::uint16_t>(last, 8 + onLast - 2), 0xFFFF);
}

/// The entries of an index in the order of the leaves' links, each whole.
std::vector<ByteVector> leafEntries(const ByteVector& file, jet::PageNumber leaf) {
    std::vector<ByteVector> entries;
    for (; leaf != jet::kNoPage;) {
        const ByteView page = pageOf(file, leaf);
        EXPECT_EQ(page[0], 4);
        const std::size_t prefix = get<std::uint16_t>(page, 24);
        ByteVector shared;
        std::size_t begin = 480;
        for (std::size_t end = 1; end <= 3616; ++end) {
            if ((page[27 + end / 8] >> (end % 8) & 1) == 0) continue;
            ByteVector entry = shared;
            appendBytes(entry, page.subspan(begin, 480 + end - begin));
            if (shared.empty())
                shared.assign(entry.begin(), entry.begin() + static_cast<std::ptrdiff_t>(prefix));
            entries.push_back(std::move(entry));
            begin = 480 + end;
        }
        leaf = jet::PageNumber{get<std::uint32_t>(page, 16)};
    }
    return entries;
}

/// The first leaf below a page.
jet::PageNumber firstLeaf(const ByteVector& file, jet::PageNumber page) {
    while (pageOf(file, page)[0] == 3) {
        const ByteView content = pageOf(file, page);
        std::size_t end = 1;
        while ((content[27 + end / 8] >> (end % 8) & 1) == 0) ++end;
        std::uint32_t child = 0;
        for (std::size_t i = 476 + end; i < 480 + end; ++i) child = child << 8 | content[i];
        page = jet::PageNumber{child};
    }
    return page;
}

class IndexTrees : public testing::TestWithParam<std::size_t> {};

TEST_P(IndexTrees, HoldEveryRowInOrder) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(
        {.name = u"t",
         .columns = {column(u"n", ColumnType::Long)},
         .indexes = {{.name = u"byN", .columns = {{u"n"}}, .entriesPerPage = GetParam()}}});
    std::vector<std::uint32_t> rows;
    rows.reserve(5000);
    for (int i = 0; i < 5000; ++i) rows.push_back(table.insert({i * 37 % 5000}).packed());
    const ByteVector& file = builder.bytes();
    const std::vector<ByteVector> entries =
        leafEntries(file, firstLeaf(file, table.index(u"byN").root()));
    ASSERT_EQ(entries.size(), 5000u);
    EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end()));
    std::vector<std::uint32_t> found;
    for (const ByteVector& entry : entries) {
        ASSERT_EQ(entry.size(), 9u);
        found.push_back(
            static_cast<std::uint32_t>(entry[5] << 24 | entry[6] << 16 | entry[7] << 8 | entry[8]));
    }
    std::sort(found.begin(), found.end());
    std::sort(rows.begin(), rows.end());
    EXPECT_EQ(found, rows);
}

INSTANTIATE_TEST_SUITE_P(EntriesPerPage, IndexTrees, testing::Values(10000, 50, 7, 2));

TEST(IndexTree, FewEntriesAPageMakeADeepTree) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t",
                          .columns = {column(u"n", ColumnType::Long)},
                          .indexes = {{.name = u"byN", .columns = {{u"n"}}, .entriesPerPage = 2}}});
    for (int i = 0; i < 100; ++i) table.insert({i});
    builder.finish();
    EXPECT_EQ(table.index(u"byN").depth(), 5u);  // 50 leaves, 17, 6, 2 and 1
}

TEST(IndexTree, LeaveOutDeletedRowsAndIgnoredNulls) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(
        {.name = u"t",
         .columns = {column(u"n", ColumnType::Long)},
         .indexes = {{.name = u"all", .columns = {{u"n"}}},
                     {.name = u"some", .columns = {{u"n"}}, .ignoreNulls = true}}});
    table.insert({1});
    const jet::RowId gone = table.insert({2});
    table.insert({kNull});
    table.insert({});
    table.deleteRow(gone);
    builder.finish();
    EXPECT_EQ(table.index(u"all").entryCount(), 3u);
    EXPECT_EQ(table.index(u"some").entryCount(), 1u);
}

TEST(Damage, PlacesAreWhereTheyAreSaidToBe) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable({.name = u"t", .columns = {memoColumn(u"m")}});
    const jet::RowId row = table.insert({longValue(std::u16string(9000, u'x'), LongForm::Chain)});
    ByteVector file = builder.bytes();
    const std::size_t header = longValueHeaderOffset(file, row, 0);
    EXPECT_EQ(get<std::uint32_t>(file, header), 18000u);
    const jet::RowId first = jet::RowId::fromPacked(get<std::uint32_t>(file, header + 4));
    EXPECT_EQ(first.page(), table.longValuePages(u"m")[0]);
    loopChain(file, first);
    EXPECT_EQ(get<std::uint32_t>(file, rowOffset(file, first)), first.packed());
}

}  // namespace
}  // namespace fixture
