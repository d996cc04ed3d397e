// Statements made at random: every one gives a result or a failure of the dialect, nothing else.
#include "tests/support/random.h"

#include "tests/engine/sql/people.h"

#include <gtest/gtest.h>

namespace {

using namespace sqltest;

constexpr std::u16string_view kOperands[] = {
    u"Name",    u"Age", u"Date", u"Pay",  u"Member", u"Notes",      u"Ratio",     u"Price",
    u"[Order]", u"Key", u"1",    u"0",    u"-1",     u"2.5",        u"1e3",       u"'a'",
    u"\"b\"",   u"''",  u"Null", u"True", u"False",  u"#1/1/2000#", u"People.Age"};
constexpr std::u16string_view kOperators[] = {u" = ",  u" <> ",  u" < ",  u" > ",   u" <= ",
                                              u" >= ", u" + ",   u" - ",  u" * ",   u" / ",
                                              u" & ",  u" AND ", u" OR ", u" LIKE "};

std::u16string expression(fixture::Random& random, std::uint32_t depth) {
    if (depth == 0 || random.oneIn(5)) {
        return std::u16string{random.pick<std::u16string_view>(kOperands)};
    }
    const auto part = [&] { return expression(random, depth - 1); };
    switch (random.below(9)) {
        case 0:
            return u"NOT " + part();
        case 1:
            return u"-" + part();
        case 2:
            return part() + (random.oneIn(2) ? u" IS NULL" : u" IS NOT NULL");
        case 3:
            return part() + u" BETWEEN " + part() + u" AND " + part();
        case 4:
            return part() + (random.oneIn(2) ? u" IN (" : u" NOT IN (") + part() + u", " + part() +
                   u")";
        case 5:
            return u"(" + part() + u")";
        default:
            return part() + std::u16string{random.pick<std::u16string_view>(kOperators)} + part();
    }
}

/// Whether the statement ran; a failure must be one of the dialect.
bool runs(const std::shared_ptr<jet::Database>& database, const std::u16string& statement) {
    try {
        rows(database, statement);
        return true;
    } catch (const sql::Error&) {
        return false;
    }
}

TEST(RandomStatements, GiveAResultOrAFailure) {
    const auto database = people();
    fixture::Random random{2024};
    int ran = 0;
    for (int i = 0; i < 20000; ++i) {
        const auto condition = expression(random, 1 + random.below(5));
        ran += runs(database, u"SELECT * FROM People WHERE " + condition);
        ran += runs(database, u"SELECT " + condition + u" FROM People ORDER BY 1");
    }
    EXPECT_GT(ran, 4000);
}

/// The row filter remembers and sets answer for lists; both must agree with the plain evaluation
/// that a selected expression gets.
TEST(RandomStatements, FiltersAgreeWithExpressions) {
    const auto database = people();
    fixture::Random random{77};
    int compared = 0;
    for (int i = 0; i < 6000; ++i) {
        const auto condition = expression(random, 1 + random.below(4));
        std::vector<std::string> all;
        try {
            all = rows(database, u"SELECT (" + condition + u") AND True, Name FROM People");
        } catch (const sql::Error&) {
            continue;
        }
        std::vector<std::string> expected;
        for (const auto& row : all) {
            if (row.starts_with("True|")) expected.push_back(row.substr(5));
        }
        ASSERT_EQ(rows(database, u"SELECT Name FROM People WHERE " + condition), expected)
            << jet::toUtf8(condition);
        ++compared;
    }
    EXPECT_GT(compared, 800);
}

TEST(RandomStatements, SurviveBrokenText) {
    const auto database = people();
    fixture::Random random{99};
    const std::u16string_view signs = u"()[]'\"#.,;*+-/&=<>!_?%`\\ \t\n\u00e9\xD800";
    for (int i = 0; i < 30000; ++i) {
        std::u16string statement = u"SELECT " + expression(random, 3) + u" FROM People WHERE " +
                                   expression(random, 3) + u" GROUP BY Age ORDER BY 1 DESC";
        for (std::uint32_t change = random.below(4); change > 0; --change) {
            const auto at = random.below(static_cast<std::uint32_t>(statement.size()));
            if (random.oneIn(3)) {
                statement.erase(at, 1 + random.below(6));
            } else {
                statement.insert(at, 1,
                                 signs[random.below(static_cast<std::uint32_t>(signs.size()))]);
            }
            if (statement.empty()) statement = u"S";
        }
        runs(database, statement);
    }
}

}  // namespace
