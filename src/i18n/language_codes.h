// The languages that the program may have texts for: the system's identifiers and the codes of
// three letters that stand in names of files.
//
//   const std::u16string code = modLocalize::codeOfLanguage(0x0407);  // "DEU"
//
// Pure functions; any thread may call them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace modLocalize {

/// "ERROR" for an identifier that is none of these.
std::u16string codeOfLanguage(std::uint16_t id);

/// Whatever the case of its letters; 0 for a code that is none of these.
std::uint16_t languageOfCode(std::u16string_view code);

/// The font that a language needs for its characters.
struct LanguageFont {
    std::u16string_view name;
    std::uint8_t characterSet = 0;
};

/// Null for the languages that are drawn with the fonts as designed.
const LanguageFont* fontOfLanguage(std::uint16_t id);

}  // namespace modLocalize
