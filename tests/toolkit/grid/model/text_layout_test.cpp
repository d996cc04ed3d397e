#include "toolkit/grid/model/text_layout.h"

#include "tests/toolkit/grid/model/fixed_measure.h"
#include "toolkit/grid/model/content_width.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace grid {
namespace {

constexpr std::size_t kMax = 10'000;

struct Result {
    std::vector<std::wstring> lines;
    bool whole = false;
};

// `characters` fit on a line of the box.
Result wrap(const std::wstring& text, int characters, int lines,
            LineBreaks breaks = LineBreaks::keep) {
    FixedMeasure measure;
    std::wstring shown;
    showable(text, breaks, kMax, shown);
    std::vector<TextLine> layout;
    Result result;
    result.whole = layOutText(shown, {characters * FixedMeasure::kWidth, lines}, measure, layout);
    for (const TextLine& line : layout) {
        std::wstring drawn = shown.substr(line.begin, line.length);
        if (line.ellipsis) drawn += kEllipsis;
        EXPECT_EQ(measure.width(drawn), line.width);
        result.lines.push_back(drawn);
    }
    return result;
}

using Lines = std::vector<std::wstring>;

TEST(TextLayout, AShortTextIsOneLine) {
    Result result = wrap(L"one two", 10, 3);
    EXPECT_EQ(result.lines, (Lines{L"one two"}));
    EXPECT_TRUE(result.whole);
}

TEST(TextLayout, EmptyTextIsOneEmptyLine) {
    EXPECT_EQ(wrap(L"", 10, 2).lines, (Lines{L""}));
    EXPECT_EQ(wrap(L"  \r\n ", 10, 2).lines, (Lines{L""}));
    EXPECT_TRUE(wrap(L"  \r\n ", 10, 2).whole);
}

TEST(TextLayout, BreaksAtBlanksAndSwallowsThem) {
    EXPECT_EQ(wrap(L"one two   three", 8, 3).lines, (Lines{L"one two", L"three"}));
    EXPECT_EQ(wrap(L"one two three", 7, 3).lines, (Lines{L"one two", L"three"}));
    EXPECT_EQ(wrap(L"one two three", 6, 3).lines, (Lines{L"one", L"two", L"three"}));
}

TEST(TextLayout, KeepsIndentation) {
    EXPECT_EQ(wrap(L"  one two", 6, 3).lines, (Lines{L"  one", L"two"}));
}

TEST(TextLayout, BreaksALongWordWhereItMust) {
    EXPECT_EQ(wrap(L"abcdefghijk", 4, 5).lines, (Lines{L"abcd", L"efgh", L"ijk"}));
    EXPECT_EQ(wrap(L"x abcdefgh", 4, 5).lines, (Lines{L"x", L"abcd", L"efgh"}));
}

TEST(TextLayout, TheLastLineEndsInAnEllipsis) {
    Result result = wrap(L"one two three four", 8, 2);
    EXPECT_EQ(result.lines, (Lines{L"one two", L"three f\u2026"}));
    EXPECT_FALSE(result.whole);
    EXPECT_EQ(wrap(L"one two three", 4, 1).lines, (Lines{L"one\u2026"}));
    EXPECT_EQ(wrap(L"one two three", 5, 1).lines, (Lines{L"one\u2026"}));
}

TEST(TextLayout, LineFeedsBeginNewLines) {
    EXPECT_EQ(wrap(L"a\nb\r\nc\rd", 10, 9).lines, (Lines{L"a", L"b", L"c", L"d"}));
    EXPECT_EQ(wrap(L"a\n\nb", 10, 9).lines, (Lines{L"a", L"", L"b"}));
    Result cut = wrap(L"a\nb\nc", 10, 2);
    EXPECT_EQ(cut.lines, (Lines{L"a", L"b\u2026"}));
    EXPECT_FALSE(cut.whole);
    EXPECT_TRUE(wrap(L"a\nb\n", 10, 2).whole);
}

TEST(TextLayout, WithoutWrappingLineFeedsAreBlanks) {
    EXPECT_EQ(wrap(L"a\r\nb\tc", 20, 1, LineBreaks::blank).lines, (Lines{L"a b    c"}));
}

TEST(TextLayout, ControlCharactersAreSeen) {
    EXPECT_EQ(wrap(std::wstring(L"a\0b\x1B", 4), 20, 1).lines, (Lines{L"a\u00B7b\u00B7"}));
}

TEST(TextLayout, HalfASurrogatePairBecomesAReplacement) {
    std::wstring text = {L'a', static_cast<wchar_t>(0xD83D), L'b'};
    EXPECT_EQ(wrap(text, 20, 1).lines, (Lines{L"a\uFFFDb"}));
}

TEST(TextLayout, NeverDividesAnEmoji) {
    EXPECT_EQ(wrap(L"abc\U0001F600\U0001F600", 4, 5).lines,
              (Lines{L"abc\U0001F600", L"\U0001F600"}));
    // A joined family takes five code points here, one more than the line has.
    std::wstring family = L"\U0001F468\u200D\U0001F469\u200D\U0001F467";
    EXPECT_EQ(wrap(L"ab" + family + L"c", 4, 5).lines, (Lines{L"ab", family, L"c"}));
}

TEST(TextLayout, BreaksBetweenIdeographsButNotBeforeAFullStop) {
    EXPECT_EQ(wrap(L"Fehler \u65E5\u672C\u8A9E\u3002", 9, 5).lines,
              (Lines{L"Fehler \u65E5\u672C", L"\u8A9E\u3002"}));
    EXPECT_EQ(wrap(L"\u65E5\u672C\u8A9E\u3002x", 3, 5).lines,
              (Lines{L"\u65E5\u672C", L"\u8A9E\u3002x"}));
}

TEST(TextLayout, NoRoomAtAllStillEnds) {
    EXPECT_EQ(wrap(L"abc", 0, 3).lines.size(), 3u);
    EXPECT_FALSE(wrap(L"abc def", 0, 2).whole);
}

TEST(TextLayout, AnHonestLimitStopsALongText) {
    std::wstring shown;
    showable(std::wstring(100'000, L'x'), LineBreaks::keep, 500, shown);
    EXPECT_EQ(shown.size(), 500u);
}

// Whatever the text: lines are in order, within the box, and whole texts lose only blanks.
TEST(TextLayout, RandomTextsKeepTheRules) {
    std::mt19937 random(20);
    const std::wstring alphabet = L"ab  \n\t-\u65E5\u3002\u0301\U0001F600";
    FixedMeasure measure;
    for (int round = 0; round < 3000; ++round) {
        std::wstring text;
        for (std::size_t n = random() % 40; n > 0; --n) {
            text += alphabet[random() % alphabet.size()];
        }
        std::wstring shown;
        showable(text, LineBreaks::keep, kMax, shown);
        int width = static_cast<int>(random() % 12) * 10;
        int most = 1 + static_cast<int>(random() % 4);
        std::vector<TextLine> lines;
        bool whole = layOutText(shown, {width, most}, measure, lines);
        ASSERT_LE(static_cast<int>(lines.size()), most);
        std::size_t end = 0;
        std::wstring kept;
        for (const TextLine& line : lines) {
            ASSERT_GE(line.begin, end);
            end = line.begin + line.length;
            ASSERT_LE(end, shown.size());
            std::wstring drawn = shown.substr(line.begin, line.length);
            ASSERT_EQ(drawn.find(L'\n'), std::wstring::npos);
            bool oneUnit = !drawn.empty() && unitEnd(drawn, 0) == drawn.size();
            ASSERT_TRUE(line.width <= width || oneUnit || line.ellipsis);
            kept += drawn;
        }
        auto bare = [](std::wstring s) {
            std::erase_if(s, [](wchar_t c) { return c == L' ' || c == L'\n'; });
            return s;
        };
        ASSERT_EQ(whole, bare(kept) == bare(shown)) << round;
    }
}

TEST(ContentWidth, TakesTheWidestAndStaysInBounds) {
    FixedMeasure measure;
    ContentWidth content(measure);
    content.add(L"abc", LineBreaks::blank);
    content.add(L"a\r\nbcdef", LineBreaks::keep);
    EXPECT_EQ(content.widest(), 50);
    content.add(L"a\r\nbcdef", LineBreaks::blank);
    EXPECT_EQ(content.widest(), 70);
    content.addPixels(64);
    EXPECT_EQ(content.bounded(8, 20, 500), 78);
    EXPECT_EQ(content.bounded(8, 200, 500), 200);
    EXPECT_EQ(content.bounded(8, 20, 60), 60);
}

TEST(ContentWidth, NothingAddedGivesTheSmallestWidth) {
    FixedMeasure measure;
    EXPECT_EQ(ContentWidth(measure).bounded(8, 20, 500), 20);
}

TEST(TextLayout, BreaksBetweenAnIdeographAndALetter) {
    EXPECT_EQ(wrap(L"\x6F22\x5B57"
                   L"ab",
                   2, 3)
                  .lines,
              (Lines{L"\x6F22\x5B57", L"ab"}));
}

TEST(TextLayout, AWordTooLongBehindAnIndentationBeginsOnItsLine) {
    EXPECT_EQ(wrap(L"  abcdefgh", 4, 4).lines, (Lines{L"  ab", L"cdef", L"gh"}));
}

TEST(TextLayout, TheWideBlankOfIdeographsIsABlank) {
    EXPECT_EQ(wrap(L"one\x3000two", 4, 2).lines, (Lines{L"one", L"two"}));
}

TEST(TextLayout, TheCutBeforeAnEllipsisDividesNoUnit) {
    EXPECT_EQ(wrap(L"ae\x0301xyz", 3, 1).lines, (Lines{std::wstring(L"a") + kEllipsis}));
}

TEST(TextLayout, ControlCharactersOfBothRangesAreSeen) {
    std::wstring shown;
    showable(
        L"a\x0001"
        L"b\x007F"
        L"c\x0085"
        L"d\x00A0",
        LineBreaks::keep, kMax, shown);
    EXPECT_EQ(shown,
              L"a\x00B7"
              L"b\x00B7"
              L"c\x00B7"
              L"d\x00A0");
}

}  // namespace
}  // namespace grid
