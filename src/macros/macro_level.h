// The numbers in macro traces: levels as their definitions write them, and the keys of unique traces
// that a level ticks.
//
//   const std::int16_t level = macros::toLevel(u" 12abc");  // 12
//   if (macros::keyNamesLevel(qrxIndex, level)) tick();
//
// Plain functions of their arguments; any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace macros {

/// The number at the beginning of a text, rounded to the nearest whole one, halves to the even one.
/// Blanks in front are passed over; what follows the number is ignored; no number at all is 0.
/// Throws RuntimeError{6} for a number that 16 bits with a sign do not hold.
std::int16_t toLevel(std::u16string_view text);

/// Whether the key holds the digits of the level anywhere, so level 1 is found in "..._11_..." too.
bool keyNamesLevel(std::u16string_view key, std::int16_t level);

}  // namespace macros
