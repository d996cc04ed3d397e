#include "engine/jet/collation.h"

#include "engine/jet/collation_weights.h"
#include "tests/engine/jet/hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <compare>
#include <random>

namespace jet {
namespace {

using KeyBytes = std::vector<std::uint8_t>;

KeyBytes keyOf(std::u16string_view text, bool ascending = true) {
    KeyBytes key;
    appendTextKey(text, ascending, key);
    return key;
}

std::string ascendingHex(std::u16string_view text) { return hex(keyOf(text)); }
std::string descendingHex(std::u16string_view text) { return hex(keyOf(text, false)); }

int sign(std::weak_ordering order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

/// Below, at or above zero as `left` stands before, with or behind `right`.
int compare(std::u16string_view left, std::u16string_view right) {
    return sign(compareText(left, right));
}

int compareBytes(const KeyBytes& left, const KeyBytes& right) {
    return sign(std::lexicographical_compare_three_way(left.begin(), left.end(), right.begin(),
                                                       right.end()));
}

struct Example {
    std::u16string_view text;
    std::string_view key;
};

constexpr Example kAscending[] = {
    {u"Notifier_MsgSvc_12_CSession",
     "62646D59535951692B03606B556B714D2B03383A2B034D6B516B6B5964620100"},
    {u"NOTIFIER_MSGSVC_12_CSESSION",
     "62646D59535951692B03606B556B714D2B03383A2B034D6B516B6B5964620100"},
    {u"notifier", "62646D59535951690100"},
    {u"Notifier2", "62646D59535951693A0100"},
    {u"Notifier 2", "62646D5953595169073A0100"},
    {u"Trace 0x1F", "6D694A4D5107367538530100"},
    {u"M\u00FCller", "606F5E5E516901021300"},
    {u"MULLER", "606F5E5E51690100"},
    {u"Mueller", "606F515E5E51690100"},
    {u"\u00C4rger", "4A69555169011300"},
    {u"Stra\u00DFe", "6B6D694A6B6B510100"},
    {u"Caf\u00E9", "4D4A5351010202020E00"},
    {u"Cafe\u0301", "4D4A5351010202020E00"},
    {u"O'Brien", "644C6959516201010101800B068000"},
    {u"co-op", "4D64646601010101800F068200"},
    {u"coop", "4D6464660100"},
    {u"", "0100"},
    {u"abc", "4A4C4D0100"},
    {u"abc   ", "4A4C4D0100"},
    {u" abc", "074A4C4D0100"},
    {u"C:\\Temp\\x.log", "4D20296D51606629751C5E64550100"},
    {u"<init>()", "2E5962596D3214160100"},
    {u"100%", "383636100100"},
    {u"line1\r\nline2", "5E59625138080708045E5962513A0100"},
    {u"tab\there", "6D4A4C0803575169510100"},
    {u"\u65E5\u672C", "B756B8A90100"},
    // A letter that stands for two moves what follows by two places.
    {u"Stra\u00DFe-\u00FC", "6B6D694A6B6B516F0102020202020202130101018023068200"},
};

constexpr Example kDescending[] = {
    {u"notifier", "9D9B92A6ACA6AE96FEFF00"},
    {u"O'Brien", "9BB396A6AE9DFEFEFEFE7FF4F97FFF00"},
    {u"M\u00FCller", "9F90A1A1AE96FEFDECFF00"},
    {u"", "FEFF00"},
};

TEST(TextKey, MatchesTheWorkedExamples) {
    for (const Example& example : kAscending) EXPECT_EQ(ascendingHex(example.text), example.key);
    for (const Example& example : kDescending) EXPECT_EQ(descendingHex(example.text), example.key);
}

TEST(TextKey, HasNoLimitOfItsOwn) {
    const std::u16string text(70'000, u'x');
    EXPECT_EQ(textKey(text), std::string(70'000, '\x75') + std::string("\x01\x00", 2));
}

TEST(TextKey, OfKanaTellsSmallLettersApartBehindTheWeights) {
    EXPECT_EQ(ascendingHex(u"\u3042"), "7F02010101FF0280FF8000");
    EXPECT_EQ(ascendingHex(u"\u3041"), "7F02010101A0FF0280FF8000");
    EXPECT_EQ(ascendingHex(u"\u3042\u3041-"), "7F027F02010101B8FF0280FF80FF01800F068200");
    EXPECT_EQ(compareText(u"\u3042", u"\u30A2"), std::strong_ordering::equal);  // katakana
    EXPECT_EQ(compareText(u"\u3041", u"\u3042"), std::strong_ordering::less);
}

TEST(TextKey, AppendsToWhatIsThere) {
    KeyBytes key{0x7F};
    appendTextKey(u"coop", true, key);
    key.push_back(0x80);
    appendTextKey(u"notifier", false, key);
    EXPECT_EQ(hex(key),
              "7F4D646466010080"
              "9D9B92A6ACA6AE96FEFF00");
}

TEST(CharacterWeights, AreTheFormatsOwn) {
    // A fingerprint of what every unit contributes, so that no change of the data passes unseen.
    const CharacterWeights& weights = CharacterWeights::general();
    std::uint64_t fingerprint = 14695981039346656037u;
    const auto mix = [&](std::uint64_t value) {
        fingerprint = (fingerprint ^ value) * 1099511628211u;
    };
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const CharacterWeight& weight = weights[static_cast<char16_t>(unit)];
        mix(static_cast<std::uint64_t>(weight.kind));
        mix(weight.weight);
        mix(weight.detail);
        if (weight.kind != WeightKind::Expanding) continue;
        for (const std::uint16_t each : weights.expansion(weight).weights) mix(each);
        for (const std::uint8_t accent : weights.expansion(weight).accents) mix(accent);
    }
    EXPECT_EQ(fingerprint, 10328802298153532959u);
}

TEST(CharacterWeights, NeverBeginOneAnother) {
    // Comparing weights instead of bytes rests on this.
    const CharacterWeights& weights = CharacterWeights::general();
    std::array<unsigned, 256> lengths{};
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const CharacterWeight& weight = weights[static_cast<char16_t>(unit)];
        if (weight.kind == WeightKind::Expanding || weight.weight == 0) continue;
        const unsigned length = weightLength(weight.weight);
        unsigned& known = lengths[weight.weight >> 8];
        if (known == 0) known = length;
        ASSERT_EQ(known, length) << std::hex << unit;
        ASSERT_GE(weight.weight >> 8, 0x02) << std::hex << unit;
    }
}

TEST(CompareText, IgnoresCaseAndTrailingBlanksOnly) {
    EXPECT_EQ(compare(u"Notifier", u"NOTIFIER"), 0);
    EXPECT_EQ(compare(u"\u00C4RGER", u"\u00E4rger"), 0);
    EXPECT_EQ(compare(u"abc", u"abc   "), 0);
    EXPECT_NE(compare(u"abc", u" abc"), 0);
    EXPECT_NE(compare(u"a bc", u"a  bc"), 0);
    EXPECT_EQ(compare(u"   ", u""), 0);
}

TEST(CompareText, PutsAccentsSecond) {
    EXPECT_LT(compare(u"Cafe", u"Caf\u00E9"), 0);
    EXPECT_LT(compare(u"Caf\u00E9", u"Cafeb"), 0);
    EXPECT_LT(compare(u"MULLER", u"M\u00FCller"), 0);
    EXPECT_EQ(compare(u"Caf\u00E9", u"Cafe\u0301"), 0);
}

TEST(CompareText, PutsHyphensAndApostrophesLast) {
    EXPECT_LT(compare(u"coop", u"co-op"), 0);
    EXPECT_LT(compare(u"co-op", u"cooq"), 0);
    EXPECT_LT(compare(u"OBrien", u"O'Brien"), 0);
    EXPECT_NE(compare(u"co-op", u"c-oop"), 0);
}

TEST(CompareText, LeavesOutWhatHasNoPart) {
    EXPECT_EQ(compare(std::u16string_view{u"a\0", 2}, u"a"), 0);
    EXPECT_NE(compare(u"a\u0001", u"a"), 0);
    EXPECT_EQ(compare(u"\u00C6", u"AE"), 0);
    EXPECT_EQ(compare(u"stra\u00DFe", u"STRASSE"), 0);
}

TEST(CompareText, PutsPunctuationBeforeDigitsBeforeLetters) {
    EXPECT_LT(compare(u".", u"0"), 0);
    EXPECT_LT(compare(u"9", u"a"), 0);
    EXPECT_LT(compare(u"Notifier 2", u"Notifier2"), 0);
    EXPECT_LT(compare(u"", u"\t"), 0);
}

/// Texts that meet all kinds of units: few letters, so that weights often agree.
class RandomTexts {
public:
    explicit RandomTexts(unsigned seed) : random_{seed} {}

    std::u16string next() {
        std::u16string text(random_() % 12, u'\0');
        for (char16_t& unit : text) unit = pick();
        return text;
    }

    /// The same text but for one unit.
    std::u16string similar(std::u16string text) {
        const std::size_t at = random_() % (text.size() + 1);
        switch (random_() % 3) {
            case 0:
                return text.insert(at, 1, pick());
            case 1:
                return text.erase(at, 1);
            default:
                if (at < text.size()) text[at] = pick();
                return text;
        }
    }

private:
    char16_t pick() {
        static constexpr std::u16string_view kCommon =
            u"aAbBeE 01.-'\u00E9\u00C9\u00FC\u00DF\u00C6\u0301\u0308\u3042\u30A2\u3041\uFF71\u00AD";
        const auto roll = random_();
        if (roll % 8 == 0) return static_cast<char16_t>(random_());
        return kCommon[(roll / 8) % kCommon.size()];
    }

    std::mt19937 random_;
};

TEST(CompareText, AgreesWithTheBytesOfTheKeys) {
    RandomTexts texts{20'261'120};
    int equal = 0;
    for (int i = 0; i < 200'000; ++i) {
        const std::u16string left = texts.next();
        const std::u16string right = i % 2 == 0 ? texts.next() : texts.similar(left);
        const int order = compare(left, right);
        ASSERT_EQ(order, compareBytes(keyOf(left), keyOf(right)))
            << ascendingHex(left) << " and " << ascendingHex(right);
        ASSERT_EQ(compare(right, left), -order);
        ASSERT_EQ(textKey(left) == textKey(right), order == 0);
        equal += order == 0 ? 1 : 0;
    }
    EXPECT_GT(equal, 1000);  // else the texts prove nothing about equality
}

TEST(CompareText, OrdersAnySetOfTextsWithoutContradiction) {
    RandomTexts texts{7};
    std::vector<std::u16string> sorted;
    for (int i = 0; i < 3000; ++i) sorted.push_back(texts.next());
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& left, const auto& right) { return compare(left, right) < 0; });
    std::mt19937 random{11};
    for (int i = 0; i < 100'000; ++i) {
        std::size_t low = random() % sorted.size();
        std::size_t high = random() % sorted.size();
        if (low > high) std::swap(low, high);
        ASSERT_LE(compare(sorted[low], sorted[high]), 0);
    }
}

TEST(TextKey, DescendingIsTheReverse) {
    RandomTexts texts{42};
    for (int i = 0; i < 100'000; ++i) {
        const std::u16string left = texts.next();
        const std::u16string right = texts.similar(left);
        ASSERT_EQ(compareBytes(keyOf(left, false), keyOf(right, false)),
                  compareBytes(keyOf(right), keyOf(left)))
            << ascendingHex(left) << " and " << ascendingHex(right);
    }
}

}  // namespace
}  // namespace jet
