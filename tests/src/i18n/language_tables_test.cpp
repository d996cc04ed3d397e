// What every table of texts has to keep to, so that a translator's slip shows here and not on a
// user's screen.
#include "src/i18n/language_codes.h"
#include "src/i18n/mod_localize.h"
#include "tests/support/language_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

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

/// The program puts its messages together from these, so their blanks count too. The maker's own five
/// lines may change.
TEST(LanguageTablesTest, TheEnglishTextsAreTheseExactly) {
    const std::pair<unsigned, std::u16string_view> kTexts[] = {
        {1000, u"  Line "},
        {1001, u" Level "},
        {1002, u" Levels: "},
        {1003, u" No. "},
        {1004, u" not found."},
        {1005, u" of "},
        {1006, u" records processed."},
        {1007, u" twice."},
        {1008, u"&Edit"},
        {1009, u"&File"},
        {1010, u"&Find"},
        {1011, u"&Help"},
        {1012, u"&Open Diagnostic Database"},
        {1013, u"About"},
        {1014, u"Add Macro Trace to Filter"},
        {1015, u"Add Macro Traces to Filter"},
        {1016, u"Add Selected Macro Traces"},
        {1017, u"Apply Filter"},
        {1018, u"Cancel"},
        {1019, u"Change Language"},
        {1021, u"Clear All"},
        {1022, u"Command Line Argument Error"},
        {1024, u"E&xit"},
        {1025, u"Export &Data"},
        {1026, u"Export complete ("},
        {1027, u"Exporting diagnostics to "},
        {1028, u"Filters"},
        {1029, u"Find &Next"},
        {1030, u"Find Text in Diagnostic Data"},
        {1031, u"Help"},
        {1032, u"Loading diagnostic data.  Please wait..."},
        {1033, u"No languages loaded"},
        {1034, u"OK"},
        {1035, u"Please remove the duplicate arguments and try again."},
        {1036, u"Processing "},
        {1038, u"Searching for "},
        {1039, u"Select All"},
        {1040, u"Select Diagnostic Database File"},
        {1041, u"Select Language"},
        {1042, u"Sorting data please wait..."},
        {1043, u"Text to find"},
        {1044, u"The command line arguments specified are invalid."},
        {1045, u"This is where your status text will display..."},
        {1046, u"Diagnostic Data"},
        {1049, u"Version:"},
        {1050, u"You can not specify argument: "},
        {1051, u"Vorelle Diagnostic Viewer"},
        {1052, u"Date"},
        {1053, u"Process"},
        {1054, u"Source"},
        {1055, u"Component"},
        {1056, u"Diagnostic"},
        {1057, u"Note"}};
    const fixture::LanguageTable english = fixture::readLanguageTable("ENU");
    for (const auto& [number, text] : kTexts) EXPECT_EQ(english.at(number), text) << number;
    EXPECT_EQ(std::size(kTexts) + 5, english.size());
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

TEST(LanguageTablesTest, ALineWithoutAProperNameIsRefused) {
    EXPECT_EQ(fixture::withoutNames("1000 \" // a \" // Name\n1001 \"b\" // B\n"),
              "1000 \" // a \"\n1001 \"b\"\n");
    for (const char* faulty : {"1000 \"a\"\n", "1000 \"a\" // \n", "1000 \"a\" // A b\n",
                               "1000 \"a\" // A1\n", "1000 \"a\" // A", "\n"}) {
        EXPECT_THROW(fixture::withoutNames(faulty), std::runtime_error) << faulty;
    }
}

TEST(LanguageTablesTest, NamesLeadToTheTextsBehindWhichTheyStand) {
    using modLocalize::Text;
    EXPECT_EQ(modLocalize::kFirstText, kFirst);
    EXPECT_EQ(modLocalize::kLastText, kLast);
    EXPECT_EQ(modLocalize::text(Text::PositionLine), u"  Line ");
    EXPECT_EQ(modLocalize::text(Text::SortingPleaseWait), u"Sorting data please wait...");
    EXPECT_EQ(modLocalize::text(Text::NoteHeading), u"Note");
}

}  // namespace
