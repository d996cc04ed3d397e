// Sort strings and the orders they make.
#include "engine/ado/radix_sort.h"
#include "engine/jet/collation.h"
#include "engine/sql/values/comparison.h"
#include "tests/engine/ado/recordset_fixture.h"
#include "tests/support/random.h"

#include <algorithm>
#include <numeric>

namespace {

using namespace ado;

fixture::ByteVector itemsDatabase(const std::vector<fixture::Row>& rows) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Items",
         .columns = {
             fixture::column(u"Id", jet::ColumnType::Long), fixture::textColumn(u"Name", 50),
             fixture::column(u"Size", jet::ColumnType::Double),
             fixture::column(u"When It Was", jet::ColumnType::Date), fixture::memoColumn(u"Long"),
             fixture::column(u"Flag", jet::ColumnType::Boolean),
             fixture::column(u"Raw", jet::ColumnType::Ole),
             fixture::column(u"Price", jet::ColumnType::Currency)}});
    for (const fixture::Row& row : rows) table.insert(row);
    return builder.bytes();
}

std::vector<std::int32_t> ids(Recordset& rows) {
    std::vector<std::int32_t> found;
    for (std::uint32_t i = 0; i < rows.rowCount(); ++i) {
        found.push_back(std::get<std::int32_t>(rows.valueAt(i, 0)));
    }
    return found;
}

using Ids = std::vector<std::int32_t>;

struct Items : TestConnection {
    explicit Items(const std::vector<fixture::Row>& content)
        : TestConnection{itemsDatabase(content)} {
        rows.open(u"SELECT * FROM Items", connection);
    }

    Ids sorted(std::u16string_view sort) {
        rows.setSort(sort);
        return ids(rows);
    }

    Recordset rows;
};

const fixture::Cell kNull = fixture::kNull;

TEST(Sort, TextsByTheCollationNullFirst) {
    Items items{
        {{1, u"beta"}, {2, u"Alpha"}, {3, kNull}, {4, u"alpha"}, {5, u"ALPHABET"}, {6, u""}}};
    EXPECT_EQ(items.sorted(u"Name ASC"), (Ids{3, 6, 2, 4, 5, 1}));
    EXPECT_EQ(items.sorted(u"name desc"), (Ids{1, 5, 4, 2, 6, 3}));
    EXPECT_EQ(items.sorted(u""), (Ids{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(items.rows.sort(), u"");
}

TEST(Sort, NumbersAndDatesByValue) {
    const auto date = [](double days) { return jet::Date{days}; };
    Items items{{{1, kNull, 2.5, date(36'526.25)},
                 {2, kNull, -1e300, date(-1.25)},
                 {3, kNull, kNull, date(-1.75)},
                 {4, kNull, 0.0, kNull},
                 {5, kNull, -0.0, date(36'526.25000000001)},
                 {6, kNull, -3.25, date(0.5)}}};
    EXPECT_EQ(items.sorted(u"Size"), (Ids{3, 2, 6, 4, 5, 1}));
    EXPECT_EQ(items.sorted(u"[When It Was] ASC"), (Ids{4, 3, 2, 6, 1, 5}));
}

TEST(Sort, OtherTypes) {
    const auto money = [](std::int64_t amount) { return jet::Currency{amount}; };
    Items items{{{1, kNull, kNull, kNull, u"second", true, kNull, money(5)},
                 {2, kNull, kNull, kNull, u"First", false, kNull, money(-5)},
                 {3, kNull, kNull, kNull, kNull, true, kNull,
                  money(std::numeric_limits<std::int64_t>::max())},
                 {4, kNull, kNull, kNull, std::u16string(5000, u'z'), false, kNull,
                  money(std::numeric_limits<std::int64_t>::min())}}};
    EXPECT_EQ(items.sorted(u"Long"), (Ids{3, 2, 1, 4}));
    EXPECT_EQ(items.sorted(u"Flag"), (Ids{1, 3, 2, 4}));
    EXPECT_EQ(items.sorted(u"Price"), (Ids{4, 2, 1, 3}));
    EXPECT_EQ(errorNumber([&] { items.sorted(u"Raw"); }), 3001);
}

TEST(Sort, SeveralColumns) {
    Items items{{{1, u"b", 1.0}, {2, u"a", 2.0}, {3, u"b", 2.0}, {4, u"a", 1.0}, {5, u"a", 2.0}}};
    EXPECT_EQ(items.sorted(u"Name, Size"), (Ids{4, 2, 5, 1, 3}));
    EXPECT_EQ(items.sorted(u"Name ASC, [Size] DESC"), (Ids{2, 5, 4, 3, 1}));
    EXPECT_EQ(items.sorted(u" [Size] desc ,Name "), (Ids{5, 2, 3, 4, 1}));
}

TEST(Sort, DescendingIsAscendingBackwards) {
    Items items{{{1, u"same"}, {2, u"same"}, {3, u"other"}, {4, u"same"}}};
    Ids ascending = items.sorted(u"Name ASC");
    EXPECT_EQ(ascending, (Ids{3, 1, 2, 4})) << "rows that are equal keep their order";
    std::reverse(ascending.begin(), ascending.end());
    EXPECT_EQ(items.sorted(u"Name DESC"), ascending);
}

TEST(Sort, MakesTheFirstRowCurrent) {
    Items items{{{1, u"b"}, {2, u"a"}}};
    items.rows.moveLast();
    int moves = 0;
    int orders = 0;
    items.rows.moveComplete = [&] { ++moves; };
    items.rows.orderChanged = [&] { ++orders; };
    items.rows.setSort(u"Name");
    EXPECT_EQ(items.rows.absolutePosition(), 1);
    EXPECT_EQ(items.rows.fields()[0].value(), jet::Value{std::int32_t{2}});
    EXPECT_EQ(moves, 1);
    EXPECT_EQ(orders, 1);
}

TEST(Sort, WrongStringsLeaveTheOrderAsItIs) {
    Items items{{{1, u"b"}, {2, u"a"}}};
    items.rows.setSort(u"Name");
    EXPECT_EQ(errorNumber([&] { items.rows.setSort(u"Shoes"); }), 3265);
    EXPECT_EQ(errorNumber([&] { items.rows.setSort(u"Name UP"); }), 3001);
    EXPECT_EQ(errorNumber([&] { items.rows.setSort(u"Name,"); }), 3001);
    EXPECT_EQ(errorNumber([&] { items.rows.setSort(u"[Name"); }), 3001);
    EXPECT_EQ(errorNumber([&] { items.rows.setSort(u",Name"); }), 3001);
    EXPECT_EQ(items.rows.sort(), u"Name");
    EXPECT_EQ(ids(items.rows), (Ids{2, 1}));
}

TEST(Sort, TraceColumnsAgreeWithAPlainSort) {
    TestConnection database{fixture::traceDatabase({.rows = 12'000, .seed = 9})};
    Recordset rows;
    openTraces(rows, database.connection);
    for (std::size_t column = 0; column < rows.fields().count(); ++column) {
        const std::u16string name = rows.fields()[column].name();
        rows.setSort(u"");
        std::vector<jet::Value> values;
        std::vector<std::uint32_t> expected(rows.rowCount());
        std::iota(expected.begin(), expected.end(), 0u);
        for (const std::uint32_t i : expected) values.push_back(rows.valueAt(i, column));
        std::vector<sql::OrderKey> keys(values.size());
        for (const std::uint32_t i : expected) {
            if (jet::isNull(values[i])) continue;
            keys[i].push_back(1);
            if (const auto* text = std::get_if<std::u16string>(&values[i])) {
                jet::appendTextKey(*text, true, keys[i]);
            } else {
                sql::appendOrderKey(values[i], jet::ColumnType::Double, true, keys[i]);
            }
        }
        std::stable_sort(expected.begin(), expected.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
        rows.setSort(u"[" + name + u"] ASC");
        for (std::uint32_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(rows.valueAt(i, column), values[expected[i]])
                << testing::PrintToString(name) << i;
        }
    }
}

TEST(Sort, RowsThatComeLaterFollowUntilTheFetchEnds) {
    TestConnection database{fixture::traceDatabase({.rows = 20'000})};
    const auto pump = std::make_shared<HandPump>();
    Recordset rows{pump};
    EventLog log{rows};
    database.gate->holdAt(database.placeAt(0.3));
    openTraces(rows, database.connection);
    database.gate->waitUntilHeld();
    const std::uint32_t sortedCount = rows.rowCount();
    rows.setSort(u"TraceNumber DESC");
    const auto number = [&](std::uint32_t i) { return std::get<std::int32_t>(rows.valueAt(i, 3)); };
    for (std::uint32_t i = 1; i < sortedCount; ++i) ASSERT_GE(number(i - 1), number(i));
    const std::int32_t lastSorted = number(sortedCount - 1);
    rows.setAbsolutePosition(50);
    const jet::Value current = rows.fields()[8].value();
    int orders = 0;
    rows.orderChanged = [&] {
        EXPECT_FALSE(log.complete) << "sorted before the end is told";
        ++orders;
    };
    database.gate->release();
    while (rows.rowCount() < 20'000) std::this_thread::yield();
    EXPECT_EQ(number(sortedCount - 1), lastSorted) << "the sorted rows stay where they are";
    ASSERT_TRUE(pump->runUntil([&] { return log.complete; }, kPatience));
    EXPECT_EQ(orders, 1);
    for (std::uint32_t i = 1; i < rows.rowCount(); ++i) ASSERT_GE(number(i - 1), number(i));
    EXPECT_EQ(rows.fields()[8].value(), current) << "the current record stays current";
}

TEST(Sort, ResultOfAnyOtherQuerySortsToo) {
    TestConnection database{
        itemsDatabase({{1, u"b", 1.0}, {2, u"a", 2.0}, {3, u"b", 4.0}, {4, kNull}})};
    Recordset rows;
    rows.open(u"SELECT Name, COUNT(*) AS N FROM Items GROUP BY Name", database.connection);
    rows.setSort(u"N DESC, Name");
    EXPECT_EQ(rows.getString(), u"b\t2\r\t1\ra\t1\r");
}

TEST(RadixSort, AgreesWithAStableSort) {
    fixture::Random random{11};
    for (const unsigned bits : {1u, 5u, 12u, 13u, 31u, 32u, 33u, 50u, 64u}) {
        std::vector<std::uint64_t> keys(3000);
        for (auto& key : keys) key = random.next() >> (64 - bits);
        std::vector<std::uint32_t> rows(keys.size());
        std::iota(rows.begin(), rows.end(), 0u);
        std::reverse(rows.begin(), rows.end());
        std::vector<std::uint32_t> expected = rows;
        std::stable_sort(expected.begin(), expected.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
        sortByKey(keys, rows);
        EXPECT_EQ(rows, expected) << bits;
    }
}

/// Ranks are in the order of the positions, whatever the sort.
TEST(ValueRanks, AreEqualForEqualValuesAndSmallerForSmallerOnes) {
    Items items{{{1, u"beta", 2.5}, {2, u"Alpha", kNull}, {3, kNull, -7.0}, {4, u"alpha", 1e300}}};
    using Ranks = std::vector<std::uint32_t>;
    EXPECT_EQ(items.rows.valueRanks(1), (Ranks{2, 1, 0, 1})) << "by the collation, Null first";
    EXPECT_EQ(items.rows.valueRanks(2), (Ranks{2, 0, 1, 3})) << "no rank is left out";
    items.rows.setSort(u"Id DESC");
    EXPECT_EQ(items.rows.valueRanks(1), (Ranks{1, 0, 1, 2}));
    EXPECT_EQ(items.rows.valueRanks(0), (Ranks{3, 2, 1, 0}));
    Recordset closed;
    EXPECT_THROW(closed.valueRanks(0), Error);
}

TEST(ValueRanks, AgreeWithTheSortForManyRows) {
    std::vector<fixture::Row> content;
    fixture::Random random{11};
    for (std::int32_t i = 0; i < 3000; ++i) {
        const auto number = static_cast<std::int32_t>(random.below(40));
        content.push_back(
            {number, u"name " + std::u16string(1, char16_t(u'a' + number % 7)), number * 1e9});
    }
    Items items{content};
    for (const std::size_t field : {0u, 1u, 2u}) {
        items.rows.setSort(u"");
        items.rows.setSort(field == 0 ? u"Id" : field == 1 ? u"Name" : u"Size");
        const std::vector<std::uint32_t> ranks = items.rows.valueRanks(field);
        ASSERT_EQ(ranks.size(), content.size());
        EXPECT_TRUE(std::is_sorted(ranks.begin(), ranks.end()));
        for (std::uint32_t i = 1; i < ranks.size(); ++i) {
            const bool same = items.rows.valueAt(i, field) == items.rows.valueAt(i - 1, field);
            ASSERT_EQ(ranks[i] - ranks[i - 1], same ? 0u : 1u);
        }
    }
}

TEST(ValueRanks, NoRowsNoRanks) {
    Items items{{}};
    EXPECT_TRUE(items.rows.valueRanks(0).empty());
}

}  // namespace
