#include "engine/sql/like/case_fold.h"

#include "engine/jet/collation.h"
#include "engine/jet/collation_weights.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <unordered_map>
#include <vector>

namespace sql {
namespace {

constexpr std::size_t kUnits = 0x10000;

/// Small letters from `first` to `last`, so many apart, whose capitals are `toCapital` further on.
struct CasePairs {
    std::uint16_t first;
    std::uint16_t last;
    std::uint16_t step;
    std::int32_t toCapital;
};

/// The simple case mappings of Unicode 14, both ways, beyond ASCII and below U+10000.
constexpr CasePairs kCasePairs[] = {
    {0x0069, 0x0069, 1, 199},   {0x006B, 0x006B, 1, 8383},   {0x00B5, 0x00B5, 1, 743},
    {0x00DF, 0x00DF, 1, 7615},  {0x00E0, 0x00F6, 1, -32},    {0x00E5, 0x00E5, 1, 8262},
    {0x00F8, 0x00FE, 1, -32},   {0x00FF, 0x00FF, 1, 121},    {0x0101, 0x012F, 2, -1},
    {0x0131, 0x0131, 1, -232},  {0x0133, 0x0137, 2, -1},     {0x013A, 0x0148, 2, -1},
    {0x014B, 0x0177, 2, -1},    {0x017A, 0x017E, 2, -1},     {0x017F, 0x017F, 1, -300},
    {0x0180, 0x0180, 1, 195},   {0x0183, 0x0185, 2, -1},     {0x0188, 0x0188, 1, -1},
    {0x018C, 0x018C, 1, -1},    {0x0192, 0x0192, 1, -1},     {0x0195, 0x0195, 1, 97},
    {0x0199, 0x0199, 1, -1},    {0x019A, 0x019A, 1, 163},    {0x019E, 0x019E, 1, 130},
    {0x01A1, 0x01A5, 2, -1},    {0x01A8, 0x01A8, 1, -1},     {0x01AD, 0x01AD, 1, -1},
    {0x01B0, 0x01B0, 1, -1},    {0x01B4, 0x01B6, 2, -1},     {0x01B9, 0x01B9, 1, -1},
    {0x01BD, 0x01BD, 1, -1},    {0x01BF, 0x01BF, 1, 56},     {0x01C5, 0x01C6, 1, -1},
    {0x01C6, 0x01C6, 1, -2},    {0x01C8, 0x01C9, 1, -1},     {0x01C9, 0x01C9, 1, -2},
    {0x01CB, 0x01CC, 1, -1},    {0x01CC, 0x01CC, 1, -2},     {0x01CE, 0x01DC, 2, -1},
    {0x01DD, 0x01DD, 1, -79},   {0x01DF, 0x01EF, 2, -1},     {0x01F2, 0x01F3, 1, -1},
    {0x01F3, 0x01F3, 1, -2},    {0x01F5, 0x01F5, 1, -1},     {0x01F9, 0x021F, 2, -1},
    {0x0223, 0x0233, 2, -1},    {0x023C, 0x023C, 1, -1},     {0x023F, 0x0240, 1, 10815},
    {0x0242, 0x0242, 1, -1},    {0x0247, 0x024F, 2, -1},     {0x0250, 0x0250, 1, 10783},
    {0x0251, 0x0251, 1, 10780}, {0x0252, 0x0252, 1, 10782},  {0x0253, 0x0253, 1, -210},
    {0x0254, 0x0254, 1, -206},  {0x0256, 0x0257, 1, -205},   {0x0259, 0x0259, 1, -202},
    {0x025B, 0x025B, 1, -203},  {0x025C, 0x025C, 1, 42319},  {0x0260, 0x0260, 1, -205},
    {0x0261, 0x0261, 1, 42315}, {0x0263, 0x0263, 1, -207},   {0x0265, 0x0265, 1, 42280},
    {0x0266, 0x0266, 1, 42308}, {0x0268, 0x0268, 1, -209},   {0x0269, 0x0269, 1, -211},
    {0x026A, 0x026A, 1, 42308}, {0x026B, 0x026B, 1, 10743},  {0x026C, 0x026C, 1, 42305},
    {0x026F, 0x026F, 1, -211},  {0x0271, 0x0271, 1, 10749},  {0x0272, 0x0272, 1, -213},
    {0x0275, 0x0275, 1, -214},  {0x027D, 0x027D, 1, 10727},  {0x0280, 0x0280, 1, -218},
    {0x0282, 0x0282, 1, 42307}, {0x0283, 0x0283, 1, -218},   {0x0287, 0x0287, 1, 42282},
    {0x0288, 0x0288, 1, -218},  {0x0289, 0x0289, 1, -69},    {0x028A, 0x028B, 1, -217},
    {0x028C, 0x028C, 1, -71},   {0x0292, 0x0292, 1, -219},   {0x029D, 0x029D, 1, 42261},
    {0x029E, 0x029E, 1, 42258}, {0x0345, 0x0345, 1, 84},     {0x0371, 0x0373, 2, -1},
    {0x0377, 0x0377, 1, -1},    {0x037B, 0x037D, 1, 130},    {0x03AC, 0x03AC, 1, -38},
    {0x03AD, 0x03AF, 1, -37},   {0x03B1, 0x03C1, 1, -32},    {0x03B8, 0x03B8, 1, 60},
    {0x03C2, 0x03C2, 1, -31},   {0x03C3, 0x03CB, 1, -32},    {0x03C9, 0x03C9, 1, 7517},
    {0x03CC, 0x03CC, 1, -64},   {0x03CD, 0x03CE, 1, -63},    {0x03D0, 0x03D0, 1, -62},
    {0x03D1, 0x03D1, 1, -57},   {0x03D5, 0x03D5, 1, -47},    {0x03D6, 0x03D6, 1, -54},
    {0x03D7, 0x03D7, 1, -8},    {0x03D9, 0x03EF, 2, -1},     {0x03F0, 0x03F0, 1, -86},
    {0x03F1, 0x03F1, 1, -80},   {0x03F2, 0x03F2, 1, 7},      {0x03F3, 0x03F3, 1, -116},
    {0x03F5, 0x03F5, 1, -96},   {0x03F8, 0x03F8, 1, -1},     {0x03FB, 0x03FB, 1, -1},
    {0x0430, 0x044F, 1, -32},   {0x0450, 0x045F, 1, -80},    {0x0461, 0x0481, 2, -1},
    {0x048B, 0x04BF, 2, -1},    {0x04C2, 0x04CE, 2, -1},     {0x04CF, 0x04CF, 1, -15},
    {0x04D1, 0x052F, 2, -1},    {0x0561, 0x0586, 1, -48},    {0x10D0, 0x10FA, 1, 3008},
    {0x10FD, 0x10FF, 1, 3008},  {0x13F8, 0x13FD, 1, -8},     {0x1C80, 0x1C80, 1, -6254},
    {0x1C81, 0x1C81, 1, -6253}, {0x1C82, 0x1C82, 1, -6244},  {0x1C83, 0x1C84, 1, -6242},
    {0x1C85, 0x1C85, 1, -6243}, {0x1C86, 0x1C86, 1, -6236},  {0x1C87, 0x1C87, 1, -6181},
    {0x1C88, 0x1C88, 1, 35266}, {0x1D79, 0x1D79, 1, 35332},  {0x1D7D, 0x1D7D, 1, 3814},
    {0x1D8E, 0x1D8E, 1, 35384}, {0x1E01, 0x1E95, 2, -1},     {0x1E9B, 0x1E9B, 1, -59},
    {0x1EA1, 0x1EFF, 2, -1},    {0x1F00, 0x1F07, 1, 8},      {0x1F10, 0x1F15, 1, 8},
    {0x1F20, 0x1F27, 1, 8},     {0x1F30, 0x1F37, 1, 8},      {0x1F40, 0x1F45, 1, 8},
    {0x1F51, 0x1F57, 2, 8},     {0x1F60, 0x1F67, 1, 8},      {0x1F70, 0x1F71, 1, 74},
    {0x1F72, 0x1F75, 1, 86},    {0x1F76, 0x1F77, 1, 100},    {0x1F78, 0x1F79, 1, 128},
    {0x1F7A, 0x1F7B, 1, 112},   {0x1F7C, 0x1F7D, 1, 126},    {0x1F80, 0x1F87, 1, 8},
    {0x1F90, 0x1F97, 1, 8},     {0x1FA0, 0x1FA7, 1, 8},      {0x1FB0, 0x1FB1, 1, 8},
    {0x1FB3, 0x1FB3, 1, 9},     {0x1FBE, 0x1FBE, 1, -7205},  {0x1FC3, 0x1FC3, 1, 9},
    {0x1FD0, 0x1FD1, 1, 8},     {0x1FE0, 0x1FE1, 1, 8},      {0x1FE5, 0x1FE5, 1, 7},
    {0x1FF3, 0x1FF3, 1, 9},     {0x214E, 0x214E, 1, -28},    {0x2170, 0x217F, 1, -16},
    {0x2184, 0x2184, 1, -1},    {0x24D0, 0x24E9, 1, -26},    {0x2C30, 0x2C5F, 1, -48},
    {0x2C61, 0x2C61, 1, -1},    {0x2C65, 0x2C65, 1, -10795}, {0x2C66, 0x2C66, 1, -10792},
    {0x2C68, 0x2C6C, 2, -1},    {0x2C73, 0x2C73, 1, -1},     {0x2C76, 0x2C76, 1, -1},
    {0x2C81, 0x2CE3, 2, -1},    {0x2CEC, 0x2CEE, 2, -1},     {0x2CF3, 0x2CF3, 1, -1},
    {0x2D00, 0x2D25, 1, -7264}, {0x2D27, 0x2D27, 1, -7264},  {0x2D2D, 0x2D2D, 1, -7264},
    {0xA641, 0xA66D, 2, -1},    {0xA681, 0xA69B, 2, -1},     {0xA723, 0xA72F, 2, -1},
    {0xA733, 0xA76F, 2, -1},    {0xA77A, 0xA77C, 2, -1},     {0xA77F, 0xA787, 2, -1},
    {0xA78C, 0xA78C, 1, -1},    {0xA791, 0xA793, 2, -1},     {0xA794, 0xA794, 1, 48},
    {0xA797, 0xA7A9, 2, -1},    {0xA7B5, 0xA7C3, 2, -1},     {0xA7C8, 0xA7CA, 2, -1},
    {0xA7D1, 0xA7D1, 1, -1},    {0xA7D7, 0xA7D9, 2, -1},     {0xA7F6, 0xA7F6, 1, -1},
    {0xAB53, 0xAB53, 1, -928},  {0xAB70, 0xABBF, 1, -38864}, {0xFF41, 0xFF5A, 1, -32},
};

/// Classes of units that are one; each is known by its least unit.
class Classes {
public:
    Classes() : parent_(kUnits) { std::iota(parent_.begin(), parent_.end(), std::uint16_t{0}); }

    std::uint16_t of(std::size_t unit) {
        while (parent_[unit] != unit) unit = parent_[unit] = parent_[parent_[unit]];
        return static_cast<std::uint16_t>(unit);
    }

    void join(std::size_t left, std::size_t right) {
        const std::uint16_t a = of(left);
        const std::uint16_t b = of(right);
        parent_[std::max(a, b)] = std::min(a, b);
    }

private:
    std::vector<std::uint16_t> parent_;
};

/// Marks that repeat or lengthen the preceding character, and ideographs, have weights that make
/// them equal to unrelated letters.
bool standsForItself(char16_t unit) {
    const auto within = [unit](char16_t first, char16_t last) {
        return unit >= first && unit <= last;
    };
    return within(0xD800, 0xDFFF) || within(0x0640, 0x0670) || within(0xFE70, 0xFE7F) ||
           within(0x3005, 0x3005) || within(0x3031, 0x3035) || within(0x309B, 0x309E) ||
           within(0x30FC, 0x30FE) || unit == 0xFF70 || within(0x3400, 0x9FFF) ||
           within(0xF900, 0xFAFF);
}

/// Letters are one when the collation gives them one key.
void joinByCollation(Classes& classes) {
    const jet::CharacterWeights& weights = jet::CharacterWeights::general();
    std::unordered_map<std::string, char16_t> firstWithKey;
    for (std::size_t code = 0; code < kUnits; ++code) {
        const auto unit = static_cast<char16_t>(code);
        const jet::CharacterWeight& weight = weights[unit];
        const bool letter = weight.weight != 0 && weight.kind != jet::WeightKind::Mark &&
                            weight.kind != jet::WeightKind::Hidden;
        if (!letter || standsForItself(unit)) continue;
        classes.join(code, firstWithKey.try_emplace(jet::textKey({&unit, 1}), unit).first->second);
    }
}

struct FoldTables {
    std::vector<char16_t> fold;
    std::vector<char16_t> first;  ///< of what folds to a unit, the least unit
    std::vector<char16_t> next;  ///< the next greater unit of the class; after the greatest, itself
};

FoldTables makeFoldTables() {
    Classes classes;
    std::vector<bool> small(kUnits);
    joinByCollation(classes);
    for (std::size_t unit = u'a'; unit <= u'z'; ++unit) small[unit] = true;
    for (const CasePairs& pairs : kCasePairs) {
        for (std::uint32_t unit = pairs.first; unit <= pairs.last; unit += pairs.step) {
            const auto capital = static_cast<std::int32_t>(unit) + pairs.toCapital;
            classes.join(unit, static_cast<std::size_t>(capital));
            small[unit] = true;
        }
    }
    const std::vector<char16_t> zeros(kUnits);
    FoldTables tables{zeros, zeros, zeros};
    // Of what has been seen of each class, coming from the end: the least unit, and the least
    // capital, which stands for the class, so that ranges of capitals hold what they seem to.
    std::vector<char16_t> least = zeros;
    std::vector<char16_t> standsFor = zeros;
    for (std::size_t code = kUnits; code-- > 0;) {
        const auto unit = static_cast<char16_t>(code);
        const std::uint16_t known = classes.of(code);
        tables.next[code] = least[known] != 0 ? least[known] : unit;
        least[known] = unit;
        if (!small[code] || standsFor[known] == 0) standsFor[known] = unit;
    }
    for (std::size_t code = 0; code < kUnits; ++code) {
        tables.fold[code] = standsFor[classes.of(code)];
        if (classes.of(code) == code) tables.first[tables.fold[code]] = static_cast<char16_t>(code);
    }
    return tables;
}

const FoldTables& foldTables() {
    static const FoldTables tables = makeFoldTables();
    return tables;
}

}  // namespace

char16_t foldCase(char16_t c) {
    if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
    return foldTables().fold[c];
}

namespace {

/// Capital letters beyond U+FFFF and how far their small letters are from them (Unicode 14:
/// Deseret, Osage, Vithkuqi, Old Hungarian, Warang Citi, Medefaidrin, Adlam). All letters of a row
/// have the same first half.
struct CapitalsBeyond {
    char32_t first;
    char32_t last;
    char32_t toSmall;
};

constexpr CapitalsBeyond kCapitalsBeyond[] = {
    {0x10400, 0x10427, 0x28}, {0x104B0, 0x104D3, 0x28}, {0x10570, 0x1057A, 0x27},
    {0x1057C, 0x1058A, 0x27}, {0x1058C, 0x10592, 0x27}, {0x10594, 0x10595, 0x27},
    {0x10C80, 0x10CB2, 0x40}, {0x118A0, 0x118BF, 0x20}, {0x16E40, 0x16E5F, 0x20},
    {0x1E900, 0x1E921, 0x22},
};

bool isHigh(char16_t c) { return c >= 0xD800 && c < 0xDC00; }
bool isLow(char16_t c) { return c >= 0xDC00 && c < 0xE000; }

char32_t joined(char16_t high, char16_t low) {
    return 0x10000 + ((char32_t{high} - 0xD800) << 10) + (char32_t{low} - 0xDC00);
}

}  // namespace

char16_t foldCase(char16_t before, char16_t c) {
    if (!isLow(c)) return foldCase(c);
    if (!isHigh(before)) return c;
    const char32_t letter = joined(before, c);
    for (const CapitalsBeyond& row : kCapitalsBeyond) {
        if (letter >= row.first + row.toSmall && letter <= row.last + row.toSmall) {
            return static_cast<char16_t>(c - row.toSmall);
        }
    }
    return c;
}

bool hasCases(char16_t high, char16_t low) {
    if (!isHigh(high) || !isLow(low)) return false;
    const char32_t letter = joined(high, low);
    return foldCase(high, low) != low ||
           std::any_of(std::begin(kCapitalsBeyond), std::end(kCapitalsBeyond),
                       [letter](const CapitalsBeyond& row) {
                           return letter >= row.first && letter <= row.last;
                       });
}

std::vector<char16_t> variantsOf(char16_t folded, std::size_t end) {
    const FoldTables& tables = foldTables();
    std::vector<char16_t> variants;
    for (std::size_t unit = tables.first[folded];; unit = tables.next[unit]) {
        if (unit < end) variants.push_back(static_cast<char16_t>(unit));
        if (tables.next[unit] == unit) return variants;
    }
}

}  // namespace sql
