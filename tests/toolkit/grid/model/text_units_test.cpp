#include "toolkit/grid/model/text_units.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace grid {
namespace {

// The lengths of the units of a text, in code points so that the test does not depend on the size
// of wchar_t.
std::vector<int> units(const std::wstring& text) {
    std::vector<int> lengths;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = unitEnd(text, at);
        int length = 0;
        for (; at < end; at += codePointLength(text, at)) ++length;
        lengths.push_back(length);
    }
    return lengths;
}

using Lengths = std::vector<int>;

TEST(TextUnits, PlainTextIsOneCharacterAUnit) { EXPECT_EQ(units(L"abc"), (Lengths{1, 1, 1})); }

TEST(TextUnits, MarksStayWithTheirLetter) {
    EXPECT_EQ(units(L"e\u0301x"), (Lengths{2, 1}));
    EXPECT_EQ(units(L"\u304B\u3099\u304B"), (Lengths{2, 1}));
    EXPECT_EQ(units(L"\u2764\uFE0F!"), (Lengths{2, 1}));
}

TEST(TextUnits, EmojiStayWhole) {
    EXPECT_EQ(units(L"a\U0001F600b"), (Lengths{1, 1, 1}));
    EXPECT_EQ(units(L"\U0001F44D\U0001F3FDb"), (Lengths{2, 1}));
    EXPECT_EQ(units(L"\U0001F468\u200D\U0001F469\u200D\U0001F467."), (Lengths{5, 1}));
}

TEST(TextUnits, FlagsArePairsOfLetters) {
    EXPECT_EQ(units(L"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7"), (Lengths{2, 2}));
}

TEST(TextUnits, HalfAPairIsAUnitOfItsOwn) {
    std::wstring text = {static_cast<wchar_t>(0xD83D), L'x', static_cast<wchar_t>(0xDE00)};
    EXPECT_EQ(units(text), (Lengths{1, 1, 1}));
    EXPECT_EQ(codePointAt(text, 0), char32_t{0xFFFD});
    EXPECT_EQ(codePointAt(text, 2), char32_t{0xFFFD});
}

TEST(TextUnits, BorderRetreatsToTheStartOfAUnit) {
    std::wstring text = L"ab\U0001F600\u0301cd";
    std::size_t emojiEnd = text.size() - 2;
    EXPECT_EQ(unitBorder(text, 0, 2), 2u);
    EXPECT_EQ(unitBorder(text, 0, 3), 2u);
    EXPECT_EQ(unitBorder(text, 0, emojiEnd - 1), 2u);
    EXPECT_EQ(unitBorder(text, 0, emojiEnd), emojiEnd);
    EXPECT_EQ(unitBorder(text, 0, text.size()), text.size());
    EXPECT_EQ(unitBorder(text, 0, 0), 0u);
}

TEST(TextUnits, KnowsIdeographs) {
    EXPECT_TRUE(isIdeographic(U'\u65E5'));
    EXPECT_TRUE(isIdeographic(U'\u30C6'));
    EXPECT_TRUE(isIdeographic(U'\uD55C'));
    EXPECT_TRUE(isIdeographic(U'\U00020000'));
    EXPECT_FALSE(isIdeographic(U'a'));
    EXPECT_FALSE(isIdeographic(U'\u0416'));
    EXPECT_TRUE(mayNotBeginLine(U'\u3002'));
}

}  // namespace
}  // namespace grid
