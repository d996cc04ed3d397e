// The numbers in macro traces: levels as their definitions write them, and the keys of unique
// traces that a level ticks.
//
//   const std::int16_t level = macros::toLevel(u" 12abc");  // 12
//   if (macros::keyNamesLevel(qrxIndex, level)) tick();
//
// Plain functions of their arguments; any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace macros {

/// The number at the start of a text, rounded to the nearest whole number, halves to even. Leading
/// blanks and anything after the number are ignored; no number at all is 0.
/// Throws RuntimeError{6} for a number that does not fit in 16 bits with a sign.
std::int16_t toLevel(std::u16string_view text);

/// Whether the key contains the digits of the level anywhere, so level 1 also matches "..._11_...".
bool keyNamesLevel(std::u16string_view key, std::int16_t level);

}  // namespace macros
