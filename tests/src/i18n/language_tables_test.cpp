// What every table of texts has to keep to, so that a translator's slip shows here and not on a
// user's screen.
#include "src/i18n/language_codes.h"
#include "tests/support/language_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>

namespace {

constexpr unsigned kFirst = 1000;
constexpr unsigned kLast = 1057;

/// Each menu's entries; the bar itself is one.
const std::vector<std::vector<unsigned>> kMenus{
    {1008, 1009, 1011}, {1012, 1024, 1025}, {1010, 1029}, {1013, 1031}};

std::size_t leadingBlanks(const std::u16string& text) {
    return std::min(text.find_first_not_of(u' '), text.size());
}

std::size_t trailingBlanks(const std::u16string& text) {
    return text.size() - 1 - text.find_last_not_of(u' ');
}

/// The letter behind the mark, its case taken away; 0 if there is none.
char16_t mnemonic(const std::u16string& text) {
    const std::size_t mark = text.find(u'&');
    if (mark == std::u16string::npos || mark + 1 == text.size()) return 0;
    const char16_t letter = text[mark + 1];
    const bool upper = (letter >= u'A' && letter <= u'Z') || (letter >= 0xC0 && letter <= 0xDE);
    return upper ? static_cast<char16_t>(letter + 0x20) : letter;
}

class LanguageTableTest : public testing::TestWithParam<std::string> {
protected:
    const fixture::LanguageTable texts = fixture::readLanguageTable(GetParam());
    const fixture::LanguageTable english = fixture::readLanguageTable("ENU");
};

TEST_P(LanguageTableTest, BelongsToALanguageThatIsKnown) {
    EXPECT_NE(modLocalize::languageOfCode(std::u16string{GetParam().begin(), GetParam().end()}), 0);
}

TEST_P(LanguageTableTest, HasEveryNumberAndNoOther) {
    ASSERT_EQ(texts.size(), kLast - kFirst + 1);
    EXPECT_EQ(texts.begin()->first, kFirst);
    EXPECT_EQ(texts.rbegin()->first, kLast);
}

TEST_P(LanguageTableTest, BlanksAtTheEndsAreThoseOfTheEnglishText) {
    for (const auto& [number, text] : texts) {
        EXPECT_EQ(leadingBlanks(text), leadingBlanks(english.at(number))) << number;
        EXPECT_EQ(trailingBlanks(text), trailingBlanks(english.at(number))) << number;
    }
}

TEST_P(LanguageTableTest, WhatEnglishMarksIsMarkedAndNothingElse) {
    for (const auto& [number, text] : texts) {
        const auto marks = std::count(text.begin(), text.end(), u'&');
        const std::u16string& original = english.at(number);
        EXPECT_EQ(marks, std::count(original.begin(), original.end(), u'&')) << number;
    }
}

TEST_P(LanguageTableTest, NoMnemonicComesTwiceInAMenu) {
    for (const std::vector<unsigned>& menu : kMenus) {
        std::set<char16_t> seen;
        for (const unsigned number : menu) {
            const char16_t letter = mnemonic(texts.at(number));
            if (letter != 0) {
                EXPECT_TRUE(seen.insert(letter).second) << number;
                EXPECT_TRUE(letter > u' ' && letter != u'&') << number;
            }
        }
    }
}

/// The program appends a path and a closing parenthesis.
TEST_P(LanguageTableTest, TheEndOfAnExportOpensAParenthesis) {
    EXPECT_TRUE(texts.at(1026).ends_with(u" (")) << GetParam();
}

TEST_P(LanguageTableTest, TheProductKeepsItsName) {
    EXPECT_EQ(texts.at(1051), u"Vorelle Diagnostic Viewer");
    EXPECT_EQ(texts.at(1020), u"Veltrane Systems");
}

INSTANTIATE_TEST_SUITE_P(Languages, LanguageTableTest, testing::ValuesIn(fixture::languageCodes()),
                         [](const auto& test) { return test.param; });

TEST(LanguageTablesTest, NineLanguagesAreThere) {
    EXPECT_EQ(fixture::languageCodes(), (std::vector<std::string>{"DEU", "ENU", "ESN", "FRA", "ITA",
                                                                  "JPN", "NLD", "NOR", "PTB"}));
}

TEST(LanguageTablesTest, AFaultyLineIsRefused) {
    EXPECT_EQ(fixture::parseLanguageTable("1000 \" a \"\n1001 \"b\"\n").size(), 2u);
    for (const char* faulty :
         {"1000 \"a\"", "1000 \"a\"\r\n",
          "\xEF\xBB\xBF"
          "1000 \"a\"\n",
          "1000 \"\"\n", "1000 a\n", "1000 \"a\"b\"\n", "1000 \"a\\n\"\n", "1000  \"a\"\n",
          "1000 \"\xFF\"\n", "\n", "1001 \"a\"\n1000 \"b\"\n", "1000 \"a\"\n1000 \"b\"\n"}) {
        EXPECT_THROW(fixture::parseLanguageTable(faulty), std::runtime_error) << faulty;
    }
}

}  // namespace
