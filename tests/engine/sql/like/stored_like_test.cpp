// LIKE on stored bytes gives the answers of LIKE on the texts.
#include "engine/sql/like/stored_like.h"

#include "engine/jet/text.h"
#include "engine/sql/like/case_fold.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using sql::CaseBlindSearch;
using Found = CaseBlindSearch::Found;

using Stored = std::vector<std::uint8_t>;

Stored wideForm(std::u16string_view text) {
    Stored bytes;
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

/// What has no compressed form: a unit whose low byte is zero.
bool isCompressible(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return (unit & 0xFF) != 0; });
}

/// Changes between the two kinds of stretches where `random` says so, and where it must.
Stored compressedForm(std::u16string_view text, fixture::Random& random, std::uint32_t rarity) {
    Stored bytes{0xFF, 0xFE};
    bool wide = false;
    for (const char16_t unit : text) {
        while ((!wide && unit > 0xFF) || random.oneIn(rarity)) {
            bytes.push_back(0);
            wide = !wide;
        }
        bytes.push_back(static_cast<std::uint8_t>(unit));
        if (wide) bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

/// Letters with unusual partners, digits, signs of patterns, other scripts, halves of pairs.
constexpr std::u16string_view kUnits =
    u"aAkK\u212AsS\u017FiI\u0131\u0130\u00DF\u1E9E\u00E6\u00C6\u00B5\u03BC\u039C\u03C3\u03C2\u03A3"
    u"\u00FF\u0178\u00E5\u212B\u01C4\u01C5\u01C6\u044F\u042F\u2C65\u023A019.,- \u30FC\u3042\u5B57"
    u"\uFF21\uFF41\xD83D\xDE97\u0100\u0101\u00E0\u00C0";

std::u16string randomText(fixture::Random& random, std::uint32_t length) {
    // Few letters at a time, so that texts repeat themselves and patterns are found.
    const std::uint32_t from = random.below(static_cast<std::uint32_t>(kUnits.size()));
    const std::uint32_t span = 1 + random.below(6);
    std::u16string text;
    while (text.size() < length) text += kUnits[(from + random.below(span)) % kUnits.size()];
    return text;
}

std::u16string randomPattern(fixture::Random& random, const std::u16string& text) {
    std::u16string wanted;
    if (!text.empty() && !random.oneIn(4)) {
        const std::uint32_t at = random.below(static_cast<std::uint32_t>(text.size()));
        wanted = text.substr(at, 1 + random.below(9));
        for (char16_t& unit : wanted) {
            const auto variants = sql::variantsOf(sql::foldCase(unit));
            unit = variants[random.below(static_cast<std::uint32_t>(variants.size()))];
        }
    } else {
        wanted = randomText(random, 1 + random.below(5));
    }
    constexpr std::u16string_view kSigns[] = {u"*", u"?", u"#", u"[a-k]", u"[!s]"};
    while (random.oneIn(3)) {
        wanted.insert(random.below(static_cast<std::uint32_t>(wanted.size() + 1)),
                      random.pick<std::u16string_view>(kSigns));
    }
    return random.oneIn(10) ? wanted : u"*" + wanted + u"*";
}

bool matches(const std::u16string& pattern, const Stored& stored, CaseBlindSearch::Way way) {
    return sql::StoredLike{sql::LikePattern{pattern}, way}.matches(stored);
}

class StoredLike : public testing::TestWithParam<CaseBlindSearch::Way> {};

TEST_P(StoredLike, AgreesWithThePlainPattern) {
    fixture::Random random{11};
    int found = 0;
    int missed = 0;
    for (int round = 0; round < 60000; ++round) {
        const std::u16string text = randomText(random, random.below(random.oneIn(4) ? 200 : 24));
        std::u16string pattern = randomPattern(random, text);
        bool expected = false;
        try {
            expected = sql::LikePattern{pattern}.matches(text);
        } catch (const std::exception&) {
            continue;  // a list that the letters broke
        }
        expected ? ++found : ++missed;
        ASSERT_EQ(matches(pattern, wideForm(text), GetParam()), expected)
            << jet::toUtf8(text) << " LIKE " << jet::toUtf8(pattern);
        if (!isCompressible(text)) continue;
        for (const std::uint32_t rarity : {3u, 1'000'000u}) {
            ASSERT_EQ(matches(pattern, compressedForm(text, random, rarity), GetParam()), expected)
                << jet::toUtf8(text) << " LIKE " << jet::toUtf8(pattern);
        }
    }
    EXPECT_GT(found, 10000);
    EXPECT_GT(missed, 5000);
}

TEST_P(StoredLike, IgnoresTheCaseOfLettersBeyondTheFirstPlane) {
    const auto like = [](const std::u16string& pattern, const std::u16string& text) {
        const bool plain = sql::LikePattern{pattern}.matches(text);
        EXPECT_EQ(matches(pattern, wideForm(text), GetParam()), plain);
        return plain;
    };
    EXPECT_TRUE(like(u"*\U00010400b*", u"x\U00010428B y")) << "Deseret";
    EXPECT_TRUE(like(u"*\U00010428b*", u"x\U00010400B y"));
    EXPECT_TRUE(like(u"*call \U0001E943*", u"the CALL \U0001E921.")) << "Adlam";
    EXPECT_TRUE(like(u"\U00010597", u"\U00010570")) << "Vithkuqi, the whole text";
    EXPECT_TRUE(like(u"*\U0001F4DE rings*", u"a \U0001F4DE Rings"));
    EXPECT_FALSE(like(u"*\U00010401*", u"\U00010428"));
    EXPECT_FALSE(like(u"*\U0001F4DE*", u"\U0001F4DF"));
    EXPECT_FALSE(like(u"*\U0001E943*", u"\U0001E920"));
}

/// Whatever stands around a text, and wherever it begins.
TEST_P(StoredLike, LooksAtAllPlacesAndAtNothingElse) {
    const CaseBlindSearch search{u"NEEDLE", GetParam()};
    for (std::size_t before = 0; before < 40; ++before) {
        for (std::size_t behind = 0; behind < 40; ++behind) {
            const std::u16string text =
                std::u16string(before, u'e') + u"nEEdle" + std::u16string(behind, u'n');
            const std::string narrow(text.begin(), text.end());
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(narrow.data());
            ASSERT_EQ(search.inNarrow({bytes, narrow.size()}), Found::Yes);
            ASSERT_TRUE(search.inWide(wideForm(text)));
            // One character less on either side, with the rest of it next to the view.
            ASSERT_EQ(search.inNarrow({bytes, before + 5}), Found::No);
            ASSERT_EQ(search.inNarrow({bytes + before + 1, behind + 5}), Found::No);
            const Stored wide = wideForm(text);
            ASSERT_FALSE(search.inWide({wide.data(), (before + 5) * 2 + 1}));
            ASSERT_FALSE(search.inWide({wide.data() + (before + 1) * 2, (behind + 5) * 2}));
        }
    }
}

TEST_P(StoredLike, SurvivesBytesThatAreNoText) {
    fixture::Random random{3};
    for (int round = 0; round < 20000; ++round) {
        Stored bytes(random.below(70));
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random.below(5) * 51);
        if (bytes.size() > 1 && random.oneIn(2)) bytes[0] = 0xFF, bytes[1] = 0xFE;
        std::u16string text;
        jet::appendUtf16(bytes, text);
        const std::u16string pattern = u"*" + text.substr(text.size() / 2, 3) + u"*";
        if (pattern.find(u'[') != std::u16string::npos) continue;
        ASSERT_EQ(matches(pattern, bytes, GetParam()), sql::LikePattern{pattern}.matches(text));
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, StoredLike,
                         testing::Values(CaseBlindSearch::Way::Fastest,
                                         CaseBlindSearch::Way::Portable));

TEST(ContainsZero, FindsItAtEveryPlace) {
    for (std::size_t size = 0; size < 60; ++size) {
        Stored bytes(size, 1);
        EXPECT_FALSE(sql::containsZero(bytes));
        for (std::size_t at = 0; at < size; ++at) {
            bytes[at] = 0;
            EXPECT_TRUE(sql::containsZero(bytes));
            bytes[at] = 0xFF;
        }
    }
}

TEST(FoldCase, JoinsThePairsThatUnicodeKnows) {
    const auto same = [](char16_t a, char16_t b) { return sql::foldCase(a) == sql::foldCase(b); };
    EXPECT_TRUE(same(u'\u00E6', u'\u00C6')) << "two letters in one";
    EXPECT_TRUE(same(u'k', u'\u212A')) << "the sign for kelvin";
    EXPECT_TRUE(same(u's', u'\u017F')) << "the long s";
    EXPECT_TRUE(same(u'I', u'\u0131')) << "without a dot";
    EXPECT_TRUE(same(u'\u00DF', u'\u1E9E')) << "the sharp s";
    EXPECT_TRUE(same(u'\u00FF', u'\u0178')) << "a capital in another block";
    EXPECT_TRUE(same(u'\u03C2', u'\u03A3')) << "the sigma at the end of a word";
    EXPECT_TRUE(same(u'\u10D0', u'\u1C90')) << "younger than the collation";
    EXPECT_TRUE(same(u'\u13A0', u'\uAB70')) << "small letters behind the capitals";
    EXPECT_FALSE(same(u'\u00DF', u's'));
    EXPECT_FALSE(same(u'a', u'\u00E4'));
    EXPECT_FALSE(same(u'A', u'\u30FC')) << "a mark that makes the vowel before it long";
    EXPECT_FALSE(same(u'\u5345', u'\u314B')) << "an ideograph";
}

TEST(FoldCase, JoinsHalvesOfSurrogatePairsByBoth) {
    EXPECT_EQ(sql::foldCase(0xD801, 0xDC28), 0xDC00);
    EXPECT_EQ(sql::foldCase(0xD801, 0xDC00), 0xDC00);
    EXPECT_EQ(sql::foldCase(0xD800, 0xDC28), 0xDC28) << "another first half";
    EXPECT_EQ(sql::foldCase(u'x', 0xDC28), 0xDC28) << "no first half";
    EXPECT_EQ(sql::foldCase(0xD801, u'b'), u'B');
    EXPECT_TRUE(sql::hasCases(0xD801, 0xDC00));
    EXPECT_TRUE(sql::hasCases(0xD801, 0xDC28));
    EXPECT_FALSE(sql::hasCases(0xD801, 0xDC50));
    EXPECT_FALSE(sql::hasCases(u'x', 0xDC28));
}

TEST(FoldCase, IsTheSameForAllVariantsAndNobodyElse) {
    for (std::uint32_t code = 0; code < 0x10000; ++code) {
        const auto unit = static_cast<char16_t>(code);
        const char16_t folded = sql::foldCase(unit);
        ASSERT_EQ(sql::foldCase(folded), folded) << code;
        const auto variants = sql::variantsOf(folded);
        ASSERT_TRUE(std::is_sorted(variants.begin(), variants.end()));
        ASSERT_TRUE(std::find(variants.begin(), variants.end(), unit) != variants.end()) << code;
        for (const char16_t variant : variants) ASSERT_EQ(sql::foldCase(variant), folded);
        ASSERT_LE(variants.size(), 12u) << code;
    }
    EXPECT_EQ(sql::variantsOf(u'K', 0x100), (std::vector<char16_t>{u'K', u'k'}));
}

}  // namespace
