// Units of text: what a reader perceives as one character. Line breaks and cuts never divide one.
//
//   position = unitEnd(text, position);
//
// Any thread. A unit is a code point with what attaches to it: the second half of a surrogate
// pair, combining marks, variation selectors, skin tones, joined emoji, the second letter of a
// flag. If wchar_t has 32 bits a code point is one element.
#pragma once

#include <cstddef>
#include <string_view>

namespace grid {

/// The end of the unit that begins at `position`. Requires: position < text.size().
std::size_t unitEnd(std::wstring_view text, std::size_t position);

/// The last boundary between units at or before `position`, searching back no further than `begin`,
/// which is a boundary itself. Requires: begin <= position <= text.size().
std::size_t unitBorder(std::wstring_view text, std::size_t begin, std::size_t position);

/// The code point at `position`; U+FFFD for half a surrogate pair.
char32_t codePointAt(std::wstring_view text, std::size_t position);

/// The number of elements of that code point: 1 or 2.
std::size_t codePointLength(std::wstring_view text, std::size_t position);

/// Whether lines may be broken on both sides of the character without a blank, as between the
/// ideographs and syllables of East Asian scripts.
bool isIdeographic(char32_t c);

/// Closing marks that must not start a line, such as the ideographic full stop.
bool mayNotBeginLine(char32_t c);

}  // namespace grid
