#include "tests/engine/sql/people.h"

#include <gtest/gtest.h>

namespace {

using namespace sqltest;

class Expressions : public testing::Test {
protected:
    std::string yields(const std::u16string& expression) const {
        return sqltest::yields(people_, expression);
    }

    std::string who(const std::u16string& condition) const {
        return sqltest::who(people_, condition);
    }

    sql::Fault fault(const std::u16string& condition) const {
        return faultOf(people_, u"SELECT * FROM People WHERE " + condition);
    }

    std::shared_ptr<jet::Database> people_ = people();
};

TEST_F(Expressions, Calculate) {
    EXPECT_EQ(yields(u"Age + 1"), "37");
    EXPECT_EQ(yields(u"1 + 2 * 3 - 4 / 8"), "6.5");
    EXPECT_EQ(yields(u"-Age"), "-36");
    EXPECT_EQ(yields(u"- -5"), "5");
    EXPECT_EQ(yields(u"Age / 0"), "NULL");
    EXPECT_EQ(yields(u"Age + Null"), "NULL");
    EXPECT_EQ(yields(u"Pay * 2"), "25");
    EXPECT_EQ(yields(u"Price + 1"), "13.5");
    EXPECT_EQ(yields(u"True + True"), "-2");
    EXPECT_EQ(yields(u"-2147483648"), "-2147483648");
    EXPECT_EQ(yields(u"2147483647 + 1"), "2147483648");
}

TEST_F(Expressions, CalculateWithDates) {
    EXPECT_EQ(yields(u"Date + 1"), "2006-05-04 12:00:00");
    EXPECT_EQ(yields(u"Date - 0.5"), "2006-05-03");
    EXPECT_EQ(yields(u"Date - #5/3/2006#"), "0.5");
    EXPECT_EQ(who(u"Date > #2006-05-03 12:00:00#"), "bob ");
    EXPECT_EQ(who(u"Date = 38841"), "bob ");
    // Dates compare as the numbers they are, so before day zero a later hour is a lesser date.
    EXPECT_EQ(who(u"Date BETWEEN #12/29/1899 12:00# AND #12/30/1899#"), "Célia (empty) ");
}

TEST_F(Expressions, JoinTexts) {
    EXPECT_EQ(yields(u"Name & '-' & Age"), "Ada-36");
    EXPECT_EQ(yields(u"Null & Name & Null"), "Ada");
    EXPECT_EQ(yields(u"Null & Null"), "");
    EXPECT_EQ(yields(u"'a' + 'b'"), "ab");
    EXPECT_EQ(yields(u"'a' + Null"), "NULL");
    EXPECT_EQ(yields(u"Ratio & ''"), "0.5");
    EXPECT_EQ(yields(u"Pay & ''"), "12.5");
    EXPECT_EQ(yields(u"Price & ''"), "12.50");
    EXPECT_EQ(yields(u"Date & ''"), "2006-05-03 12:00:00");
    EXPECT_EQ(yields(u"Member & ''"), "-1");
    EXPECT_EQ(yields(u"1e20 & ''"), "1E+20");
    EXPECT_EQ(yields(u"0.1 + 0.2 & ''"), "0.3");
    EXPECT_EQ(yields(u"Key & ''"), "{04030201-0605-0807-090A-0B0C0D0E0F10}");
}

TEST_F(Expressions, CompareTextsAsTheCollationDoes) {
    EXPECT_EQ(who(u"Name = 'ADA'"), "Ada ");
    EXPECT_EQ(who(u"Name = 'ada  '"), "Ada ");
    EXPECT_EQ(who(u"Name = 'celia'"), "");
    EXPECT_EQ(who(u"Name = 'cÉLIA'"), "Célia ");
    EXPECT_EQ(who(u"Name < 'B'"), "Ada (empty) ");
    EXPECT_EQ(who(u"Name >= 'bob'"), "bob Célia ");
    EXPECT_EQ(who(u"Name <> 'bob'"), "Ada Célia (empty) ");
    EXPECT_EQ(who(u"Name = ''"), "(empty) ");
    EXPECT_EQ(who(u"Notes = 'BUILDER'"), "bob ");
    EXPECT_EQ(who(u"[Order] = 'B'"), "Ada (empty) ");
}

TEST_F(Expressions, CompareNumbersByValue) {
    EXPECT_EQ(who(u"Age = 36.0"), "Ada Célia ");
    EXPECT_EQ(who(u"Pay = 12.5"), "Ada Célia ");
    EXPECT_EQ(who(u"Pay < Price"), "bob ");
    EXPECT_EQ(who(u"Pay <> Price"), "bob ");
    EXPECT_EQ(who(u"Price = 0.05"), "bob ");
    EXPECT_EQ(who(u"Ratio >= -1.5 AND Ratio < 1"), "Ada Célia (empty) ");
    EXPECT_EQ(who(u"Age > Ratio"), "Ada bob Célia ");
    EXPECT_EQ(who(u"Member = True"), "Ada Célia ");
    EXPECT_EQ(who(u"Member = -1"), "Ada Célia ");
    EXPECT_EQ(who(u"1 = 1 = True"), "Ada bob Célia NULL (empty) ");
}

TEST_F(Expressions, KnowThreeTruths) {
    EXPECT_EQ(who(u"Age = Null"), "");
    EXPECT_EQ(who(u"Age <> 36"), "bob (empty) ");
    EXPECT_EQ(who(u"NOT Age = 36"), "bob (empty) ");
    EXPECT_EQ(who(u"Age = 36 OR Null"), "Ada Célia ");
    EXPECT_EQ(who(u"NOT (Age = 36 AND Null)"), "bob (empty) ");
    EXPECT_EQ(who(u"Age IS NULL"), "NULL ");
    EXPECT_EQ(who(u"Notes IS NOT NULL AND NOT Member"), "bob (empty) ");
    EXPECT_EQ(who(u"(Age + 1) IS NULL"), "NULL ");
    EXPECT_EQ(yields(u"Null AND False"), "False");
    EXPECT_EQ(yields(u"Null AND True"), "NULL");
    EXPECT_EQ(yields(u"Null OR True"), "True");
    EXPECT_EQ(yields(u"Null OR False"), "NULL");
    EXPECT_EQ(yields(u"NOT Null"), "NULL");
    EXPECT_EQ(yields(u"5 AND 2"), "True");
}

TEST_F(Expressions, SearchListsAndRanges) {
    EXPECT_EQ(who(u"Name IN ('ADA', 'x', \"BOB\")"), "Ada bob ");
    EXPECT_EQ(who(u"Name NOT IN ('ada', 'bob')"), "Célia (empty) ");
    EXPECT_EQ(who(u"Name NOT IN ('ada', Null)"), "");
    EXPECT_EQ(who(u"Name IN ('ada', Null)"), "Ada ");
    EXPECT_EQ(who(u"Age IN (20, 36.0)"), "Ada bob Célia ");
    EXPECT_EQ(who(u"Age IN (Ratio + 18, 0)"), "bob (empty) ");
    EXPECT_EQ(who(u"Age IN (Null, Ratio + 18)"), "bob ");
    EXPECT_EQ(who(u"Age NOT IN (Null, Ratio + 18)"), "");
    EXPECT_EQ(who(u"Age BETWEEN 20 AND 36"), "Ada bob Célia ");
    EXPECT_EQ(who(u"Age NOT BETWEEN 20 AND 35"), "Ada Célia (empty) ");
    EXPECT_EQ(who(u"Key IS NOT NULL"), "Ada ");
    EXPECT_EQ(who(u"Key = Key"), "Ada ");
}

TEST_F(Expressions, MatchPatterns) {
    EXPECT_EQ(who(u"Name LIKE '*A'"), "Ada Célia ");
    EXPECT_EQ(who(u"Name LIKE '?O?'"), "bob ");
    EXPECT_EQ(who(u"Name NOT LIKE '[a-b]*'"), "Célia (empty) ");
    EXPECT_EQ(who(u"Notes LIKE '*r*'"), "Ada bob ");
    EXPECT_EQ(who(u"Name LIKE [Order] & '*'"), "Célia ");
    EXPECT_EQ(who(u"'b' LIKE [Order]"), "Ada (empty) ");
    EXPECT_EQ(fault(u"Name LIKE '[a'"), sql::Fault::Syntax);
}

TEST_F(Expressions, RefuseOtherTypes) {
    for (const auto condition :
         {u"Name = 5", u"Age = '36'", u"Date = '1/1/2000'", u"Name IN (1, 2)", u"Age IN ('a')",
          u"Age LIKE 'a'", u"Name", u"'text'", u"NOT Name", u"Age = 36 AND Name", u"Key = 1",
          u"Name - 1 = 1", u"-Name = 1", u"Name + 1 = 1", u"Name BETWEEN 1 AND 2"}) {
        EXPECT_EQ(fault(condition), sql::Fault::TypeMismatch) << jet::toUtf8(condition);
    }
    EXPECT_EQ(faultOf(people_, u"SELECT SUM(Name) FROM People"), sql::Fault::TypeMismatch);
}

TEST_F(Expressions, EvaluateLongChainsAndDeepNesting) {
    std::u16string sum = u"0";
    for (int i = 0; i < 10000; ++i) sum += u" + 1";
    EXPECT_EQ(yields(sum), "10000");
    std::u16string deep = u"Age";
    for (int i = 0; i < 200; ++i) deep = u"(1 + " + deep + u")";
    EXPECT_EQ(yields(deep), "236");
    std::u16string list = u"Age = 0";
    for (int i = 0; i < 10000; ++i) list += u" AND Age + 1 <> Ratio";
    EXPECT_EQ(who(list), "(empty) ");
}

}  // namespace
