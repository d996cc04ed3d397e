#include "toolkit/grid/model/text_units.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace grid {
namespace {

struct Span {
    char32_t first;
    char32_t last;
};

// Marks that attach to the character before them: the combining blocks of the scripts that traces
// are most often written in, variation selectors, skin tones, tags and the joiner.
constexpr Span kAttached[] = {
    {0x0300, 0x036F},   {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},   {0x064B, 0x065F},
    {0x0900, 0x0903},   {0x093A, 0x094F}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E},
    {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF}, {0x200D, 0x200D}, {0x20D0, 0x20FF},   {0x302A, 0x302F},
    {0x3099, 0x309A},   {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0x1F3FB, 0x1F3FF}, {0xE0020, 0xE007F},
    {0xE0100, 0xE01EF},
};

constexpr Span kIdeographic[] = {
    {0x2E80, 0x2FDF}, {0x3000, 0x30FF}, {0x3100, 0x31FF}, {0x3200, 0x9FFF},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF}, {0xFE30, 0xFE4F}, {0xFF00, 0xFFEF}, {0x20000, 0x3FFFD},
};

constexpr char32_t kJoiner = 0x200D;

template <std::size_t N>
bool within(const Span (&spans)[N], char32_t c) {
    const Span* after =
        std::upper_bound(std::begin(spans), std::end(spans), c,
                         [](char32_t value, const Span& span) { return value < span.first; });
    return after != std::begin(spans) && c <= std::prev(after)->last;
}

bool isRegionalIndicator(char32_t c) { return c >= 0x1F1E6 && c <= 0x1F1FF; }

char32_t element(wchar_t c) {
    return sizeof(wchar_t) == 2 ? static_cast<char32_t>(c) & 0xFFFFu : static_cast<char32_t>(c);
}
bool isHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool isLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

bool isPair(std::wstring_view text, std::size_t position) {
    return position + 1 < text.size() && isHighSurrogate(element(text[position])) &&
           isLowSurrogate(element(text[position + 1]));
}

}  // namespace

std::size_t codePointLength(std::wstring_view text, std::size_t position) {
    return isPair(text, position) ? 2 : 1;
}

char32_t codePointAt(std::wstring_view text, std::size_t position) {
    char32_t first = element(text[position]);
    if (isPair(text, position)) {
        return 0x10000 + ((first - 0xD800) << 10) + (element(text[position + 1]) - 0xDC00);
    }
    return isHighSurrogate(first) || isLowSurrogate(first) ? char32_t{0xFFFD} : first;
}

std::size_t unitEnd(std::wstring_view text, std::size_t position) {
    char32_t last = codePointAt(text, position);
    bool firstOfFlag = isRegionalIndicator(last);
    position += codePointLength(text, position);
    while (position < text.size()) {
        char32_t next = codePointAt(text, position);
        bool secondOfFlag = firstOfFlag && isRegionalIndicator(next);
        if (!secondOfFlag && last != kJoiner && !within(kAttached, next)) break;
        firstOfFlag = false;
        last = next;
        position += codePointLength(text, position);
    }
    return position;
}

std::size_t unitBorder(std::wstring_view text, std::size_t begin, std::size_t position) {
    if (position == text.size()) return position;
    // Almost every border lies between two plain characters: the walk begins at the last such.
    std::size_t border = begin;
    for (std::size_t back = position; back > begin; --back) {
        if (element(text[back]) < 0x300 && element(text[back - 1]) < 0x300) {
            border = back;
            break;
        }
    }
    while (border < position) {
        std::size_t end = unitEnd(text, border);
        if (end > position) break;
        border = end;
    }
    return border;
}

bool isIdeographic(char32_t c) { return c >= 0x2E80 && within(kIdeographic, c); }

bool mayNotBeginLine(char32_t c) {
    static constexpr std::array<char32_t, 22> kClosing = {
        U'!',   U')',   U',',   U'.',   U':',   U';',   U'?',   U']',   U'}',   0x3001, 0x3002,
        0x300D, 0x300F, 0x3011, 0x30FB, 0x30FC, 0xFF01, 0xFF09, 0xFF0C, 0xFF0E, 0xFF1A, 0xFF1F};
    return std::find(kClosing.begin(), kClosing.end(), c) != kClosing.end();
}

}  // namespace grid
