#include "src/i18n/language_codes.h"

#include <gtest/gtest.h>

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
    for (const auto& [id, characterSet] :
         {std::pair{1042, 129}, {1028, 136}, {1041, 128}, {2052, 134}}) {
        const LanguageFont* const font = fontOfLanguage(static_cast<std::uint16_t>(id));
        ASSERT_NE(font, nullptr) << id;
        EXPECT_EQ(font->characterSet, characterSet);
        EXPECT_FALSE(font->name.empty());
    }
    EXPECT_EQ(fontOfLanguage(1033), nullptr);
}

}  // namespace
