#include "src/i18n/language_codes.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string_view>
#include <utility>

namespace {

using namespace modLocalize;

TEST(LanguageCodes, BothSpanishLanguagesHaveTheirCodes) {
    EXPECT_EQ(codeOfLanguage(1034), u"ESP");
    EXPECT_EQ(codeOfLanguage(3082), u"ESN");
    EXPECT_EQ(languageOfCode(u"ESP"), 1034);
    EXPECT_EQ(languageOfCode(u"ESN"), 3082);
}

TEST(LanguageCodes, OtherIdentifiersAreAnError) {
    EXPECT_EQ(codeOfLanguage(0), u"ERROR");
    EXPECT_EQ(codeOfLanguage(1042), u"ERROR");  // Korean has a font, but no texts
    EXPECT_EQ(languageOfCode(u""), 0);
    EXPECT_EQ(languageOfCode(u"XYZ"), 0);
    EXPECT_EQ(languageOfCode(u"ERROR"), 0);
}

/// As the system numbers and abbreviates them.
TEST(LanguageCodes, EachIdentifierHasItsCode) {
    constexpr std::pair<std::uint16_t, std::u16string_view> kLanguages[] = {
        {1033, u"ENU"},  {2057, u"ENG"},  {3081, u"ENA"},  {4105, u"ENC"},  {5129, u"ENZ"},
        {6153, u"ENI"},  {1031, u"DEU"},  {2055, u"DES"},  {3079, u"DEA"},  {4103, u"DEL"},
        {5127, u"DEC"},  {1034, u"ESP"},  {2058, u"ESM"},  {3082, u"ESN"},  {4106, u"ESG"},
        {5130, u"ESC"},  {6154, u"ESA"},  {7178, u"ESD"},  {8202, u"ESV"},  {9226, u"ESO"},
        {10250, u"ESR"}, {11274, u"ESS"}, {18442, u"ESH"}, {19466, u"ESI"}, {20490, u"ESU"},
        {1036, u"FRA"},  {2060, u"FRB"},  {3084, u"FRC"},  {4108, u"FRS"},  {5132, u"FRL"},
        {1040, u"ITA"},  {2064, u"ITS"},  {1041, u"JPN"},  {1043, u"NLD"},  {2067, u"NLB"},
        {1044, u"NOR"},  {2068, u"NON"},  {1046, u"PTB"},  {2070, u"PTG"}};
    EXPECT_EQ(std::size(kLanguages), 39u);
    for (const auto& [id, code] : kLanguages) EXPECT_EQ(codeOfLanguage(id), code) << id;
}

TEST(LanguageCodes, TheWayBackLeadsToTheSameLanguage) {
    int languages = 0;
    for (int id = 0; id < 0x10000; ++id) {
        const std::u16string code = codeOfLanguage(static_cast<std::uint16_t>(id));
        if (code == u"ERROR") continue;
        EXPECT_EQ(code.size(), 3u);
        EXPECT_EQ(languageOfCode(code), id);
        ++languages;
    }
    EXPECT_EQ(languages, 39);
}

// A file's name may be spelled in any way.
TEST(LanguageCodes, LettersOfAnyCase) { EXPECT_EQ(languageOfCode(u"deu"), 1031); }

TEST(LanguageCodes, FourLanguagesNeedFontsOfTheirOwn) {
    struct {
        std::uint16_t language;
        std::u16string_view name;
        int characterSet;
    } constexpr kFonts[] = {{1042, u"굴림", 129},
                            {1028, u"新細明體", 136},
                            {1041, u"ＭＳ Ｐゴシック", 128},
                            {2052, u"宋体", 134}};
    for (const auto& expected : kFonts) {
        const LanguageFont* const font = fontOfLanguage(expected.language);
        ASSERT_NE(font, nullptr) << expected.language;
        EXPECT_EQ(font->name, expected.name);
        EXPECT_EQ(font->characterSet, expected.characterSet);
    }
    EXPECT_EQ(fontOfLanguage(1033), nullptr);
}

}  // namespace
