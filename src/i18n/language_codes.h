// The languages that the program may have texts for: the system's identifiers and the three-letter
// codes that are used in file names.
//
//   const std::u16string code = modLocalize::codeOfLanguage(0x0407);  // "DEU"
//
// Pure functions; any thread may call them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace modLocalize {

/// "ERROR" for any other identifier.
std::u16string codeOfLanguage(std::uint16_t id);

/// Not case-sensitive; 0 for any other code.
std::uint16_t languageOfCode(std::u16string_view code);

/// The font that a language needs for its characters.
struct LanguageFont {
    std::u16string_view name;
    std::uint8_t characterSet = 0;
};

/// Null for languages that use the fonts as designed.
const LanguageFont* fontOfLanguage(std::uint16_t id);

}  // namespace modLocalize
