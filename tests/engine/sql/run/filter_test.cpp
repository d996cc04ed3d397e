#include "engine/sql/run/filter.h"

#include "engine/sql/run/byte_map.h"
#include "tests/engine/sql/people.h"
#include "tests/support/damage.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

using namespace sqltest;

constexpr int kKeys = 20000;

std::u16string keyName(int number) {
    return u"Part_proc_" + jet::toUtf16(std::to_string(number)) + u"_Source";
}

/// Rows whose keys are the first `keys` names, in several spellings.
std::shared_ptr<jet::Database> keyed(int rowCount, int keys) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"t",
                                    .columns = {fixture::textColumn(u"k", 160),
                                                fixture::column(u"n", jet::ColumnType::Long)}});
    for (int i = 0; i < rowCount; ++i) {
        std::u16string key = keyName(i % keys);
        if (i % 3 == 1) key[0] = u'p';
        if (i % 3 == 2) key += u' ';
        table.insert({key, i});
    }
    return open(builder);
}

std::u16string alternatives(int count) {
    std::u16string where;
    for (int i = 0; i < count; ++i) {
        where += (i == 0 ? u"" : u" OR ");
        where += u" ( k = '" + keyName(2 * i) + u"' ) ";
    }
    return where;
}

TEST(Filter, AnswersTenThousandAlternatives) {
    const auto database = keyed(3000, 1000);
    const auto found = rows(database, u"SELECT n FROM t WHERE " + alternatives(10000));
    std::set<int> expected;
    for (int i = 0; i < 3000; ++i) {
        if (i % 1000 % 2 == 0) expected.insert(i);
    }
    std::set<int> numbers;
    for (const auto& row : found) numbers.insert(std::stoi(row));
    EXPECT_EQ(found.size(), expected.size());
    EXPECT_EQ(numbers, expected);
}

/// An expression's operands are what it asks for a row: one column for a list of any length.
TEST(Filter, MakesOneSetOfManyAlternatives) {
    const auto column = [] {
        jet::Column made;
        made.name = u"k";
        return made;
    }();
    sql::Expressions terms;
    for (int i = 0; i < 10000; ++i) {
        terms.push_back(sql::makeChain({sql::Operator::Equal},
                                       {sql::makeColumn(column), sql::makeConstant(keyName(i))}));
    }
    const auto condition = sql::makeOr(std::move(terms));
    ASSERT_EQ(condition->operands().size(), 1u);
    ASSERT_EQ(condition->operands().front()->operands().size(), 1u);
    EXPECT_EQ(condition->operands().front()->operands().front()->column(), &column);
}

/// Counts the pages asked for: a column's value is decoded once for all rows that store it alike.
TEST(Filter, DecidesOnceForEachStoredValue) {
    const auto database = keyed(3000, 10);
    const auto table = database->table(u"t");
    const auto& column = table->definition().columns[0];

    struct Counting final : sql::Expression {
        explicit Counting(const jet::Column& of)
            : Expression{sql::typeOf(jet::ColumnType::Boolean), {sql::makeColumn(of)}} {}
        jet::Value evaluate(sql::Row& row) const override {
            ++calls;
            return operands().front()->evaluate(row) == jet::Value{keyName(4)};
        }
        mutable int calls = 0;
    };
    const auto counting = std::make_shared<Counting>(column);
    const auto filter = sql::makeRowFilter(counting, table);
    int matches = 0;
    jet::TableScan scan{*table};
    while (scan.next()) matches += filter->matches(scan.record(), scan.pages());
    EXPECT_EQ(matches, 100);
    EXPECT_EQ(counting->calls, 30);
}

TEST(Filter, DecidesOnceForEachCombinationOfStoredValues) {
    const auto database = people();
    const auto table = database->table(u"People");

    struct Counting final : sql::Expression {
        explicit Counting(sql::Expressions columns)
            : Expression{sql::typeOf(jet::ColumnType::Boolean), std::move(columns)} {}
        jet::Value evaluate(sql::Row& row) const override {
            ++calls;
            return operands()[0]->evaluate(row) == jet::Value{std::int16_t{36}} &&
                   operands()[1]->evaluate(row) == jet::Value{true};
        }
        mutable int calls = 0;
    };
    const auto& definition = table->definition();
    const auto counting = std::make_shared<Counting>(
        sql::Expressions{sql::makeColumn(*definition.findColumn(u"Age")),
                         sql::makeColumn(*definition.findColumn(u"Member"))});
    const auto filter = sql::makeRowFilter(counting, table);
    int matches = 0;
    jet::TableScan scan{*table};
    while (scan.next()) matches += filter->matches(scan.record(), scan.pages());
    EXPECT_EQ(matches, 2);
    EXPECT_EQ(counting->calls, 4) << "two of the five rows are alike";
}

// More combinations than are remembered: the rest is decided row by row.
TEST(Filter, StaysRightWhenThereAreMoreCombinationsThanItRemembers) {
    constexpr int kRows = 90000;
    const auto database = keyed(kRows, kRows);
    const auto found = rows(database, u"SELECT COUNT(*) FROM t WHERE k & n LIKE '*7'");
    EXPECT_EQ(found, std::vector<std::string>{"9000"});
}

// A condition that does without the damaged field holds nevertheless.
TEST(Filter, NeedsOnlyTheFieldsThatDecide) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"t",
         .columns = {fixture::column(u"n", jet::ColumnType::Long), fixture::textColumn(u"a", 10),
                     fixture::textColumn(u"b", 10)}});
    table.insert({1, u"x", u"yyyy"});
    table.insert({2, u"x", u"yyyy"});
    fixture::ByteVector bytes = builder.bytes();
    // The end of the second row's last field is put far behind the record.
    const jet::RowId second{table.dataPages()[0], 1};
    const std::size_t start = fixture::rowOffset(bytes, second);
    const std::size_t length = fixture::rowLength(bytes, second);
    const std::size_t end = start + length - 1 - 2 - 2 * 3;  // mask, count, three offsets
    fixture::poke16(bytes, end, 0x0FFF);
    const auto database = jet::Database::open(std::make_unique<jet::MemoryStorage>(bytes));
    ASSERT_EQ(rows(database, u"SELECT n FROM t WHERE b = 'yyyy'"), std::vector<std::string>{"1"});
    EXPECT_EQ(rows(database, u"SELECT n FROM t WHERE a = 'x' OR b = 'z'"),
              (std::vector<std::string>{"1", "2"}));
}

TEST(Filter, StaysRightWhenThereAreMoreValuesThanItRemembers) {
    constexpr int kRows = 90000;
    const auto database = keyed(kRows, kRows);
    const auto query = sql::Query::prepare(
        database, u"SELECT n FROM t WHERE k <= 'Part_proc_5' AND k > 'Part_proc_3' AND n >= 0");
    std::size_t matched = 0;
    for (const auto cursor = query->execute(); cursor->next();) ++matched;
    // Names whose number begins with 3 or 4.
    std::size_t expected = 0;
    for (int i = 0; i < kRows; ++i) {
        const char first = std::to_string(i)[0];
        expected += first == '3' || first == '4';
    }
    EXPECT_EQ(matched, expected);
}

TEST(Filter, TellsNullFromEmptyAndTrueFromFalse) {
    const auto database = people();
    EXPECT_EQ(who(database, u"Name = '' OR Name IS NULL"), "NULL (empty) ");
    EXPECT_EQ(who(database, u"Member AND Name LIKE '*a'"), "Ada Célia ");
    EXPECT_EQ(who(database, u"Member = False AND (Name = 'bob' OR Age = 0 OR Name = 'ada')"),
              "bob (empty) ");
    EXPECT_EQ(who(database, u"NOT (Name = 'ada' OR Name = 'bob' OR Name = Null)"), "");
}

/// A field that cannot be read is like Null in expressions; its row stays.
TEST(Filter, DamagedFieldsAreLikeNullAndCounted) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"t",
         .columns = {fixture::memoColumn(u"m"), fixture::column(u"n", jet::ColumnType::Long)}});
    table.insert({u"good", 1});
    fixture::ByteVector nowhere(12, 0xEE);
    nowhere[3] = 0x40;
    auto cell = fixture::stored(nowhere);
    table.insert({fixture::longValue(cell, fixture::LongForm::HandMade), 2});
    table.insert({u"good", 3});
    const auto database = open(builder);
    for (const auto statement :
         {u"SELECT n FROM t WHERE m = 'good'", u"SELECT n, m FROM t ORDER BY m",
          u"SELECT n, m FROM t ORDER BY n", u"SELECT m, COUNT(*) FROM t GROUP BY m"}) {
        const auto cursor = sql::Query::prepare(database, statement)->execute();
        std::size_t count = 0;
        while (cursor->next()) ++count;
        const bool grouped = std::u16string_view{statement}.find(u"GROUP") != std::string::npos;
        const bool filtered = std::u16string_view{statement}.find(u"WHERE") != std::string::npos;
        EXPECT_EQ(count, grouped || filtered ? 2u : 3u) << jet::toUtf8(statement);
        EXPECT_EQ(cursor->losses().rows, 0u) << jet::toUtf8(statement);
        EXPECT_EQ(cursor->losses().values, 1u) << jet::toUtf8(statement);
    }
}

TEST(Filter, RowsWithDamagedFieldsStandWithTheNulls) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"t",
         .columns = {fixture::column(u"n", jet::ColumnType::Long), fixture::memoColumn(u"m")}});
    fixture::ByteVector nowhere(12, 0xEE);
    nowhere[3] = 0x40;
    const auto damaged = [&](std::int32_t number) {
        table.insert(
            {number, fixture::longValue(fixture::stored(nowhere), fixture::LongForm::HandMade)});
    };
    table.insert({2, u"b"});
    damaged(9);
    table.insert({1, u"a"});
    damaged(0);
    table.insert({3, u"c"});
    const auto database = open(builder);
    EXPECT_EQ(rows(database, u"SELECT n FROM t ORDER BY n, m"),
              (std::vector<std::string>{"0", "1", "2", "3", "9"}));
    EXPECT_EQ(rows(database, u"SELECT n FROM t ORDER BY n DESC, m"),
              (std::vector<std::string>{"9", "3", "2", "1", "0"}));
    EXPECT_EQ(rows(database, u"SELECT n FROM t ORDER BY m, n"),
              (std::vector<std::string>{"0", "9", "1", "2", "3"}));
    EXPECT_EQ(rows(database, u"SELECT COUNT(*), MAX(m), SUM(n) FROM t"),
              std::vector<std::string>{"5|c|15"});
}

TEST(ByteMap, AgreesWithAMap) {
    sql::ByteMap map;
    std::map<std::vector<std::uint8_t>, std::uint32_t> plain;
    fixture::Random random{11};
    for (int i = 0; i < kKeys; ++i) {
        std::vector<std::uint8_t> bytes(random.below(20));
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random.below(3));
        const auto* found = map.find(bytes);
        const auto known = plain.find(bytes);
        ASSERT_EQ(found != nullptr, known != plain.end());
        if (found) {
            ASSERT_EQ(*found, known->second);
        } else {
            map.insert(bytes, static_cast<std::uint32_t>(i));
            plain.emplace(bytes, static_cast<std::uint32_t>(i));
        }
    }
    EXPECT_EQ(map.size(), plain.size());
    EXPECT_GT(map.size(), 1000u);
}

}  // namespace
