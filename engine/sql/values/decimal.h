// Decimal numbers of any length, for the types that are exact.
//
//   if (auto number = sql::parseDecimal(u"-12.345")) use(roundedDigits(*number, 2));  // "1234"
//
// Pure functions; any thread may call them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sql {

/// `digits` times ten to the power of `exponent`.
struct Decimal {
    bool negative = false;
    std::string digits;  ///< without leading zeros; empty for zero
    int exponent = 0;
};

/// Parses digits with optional sign, point and exponent; surrounding blanks are ignored. Nothing if
/// it does not parse or the exponent has more than four digits.
std::optional<Decimal> parseDecimal(std::u16string_view text);

/// The digits of the number times ten to the power of `scale`, rounded half to even; empty for
/// zero. Nothing if there are more than 40.
std::optional<std::string> roundedDigits(const Decimal& number, int scale);

}  // namespace sql
