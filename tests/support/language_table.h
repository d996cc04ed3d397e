// The tables in languages/, read as strictly as they are meant to be written: a line a text, number,
// blank, text in double quotes. In the English one the name of the text follows: ` // Name`.
//
//   for (const std::string& code : fixture::languageCodes()) {
//       const fixture::LanguageTable texts = fixture::readLanguageTable(code);
//   }
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace fixture {

/// Texts by number.
using LanguageTable = std::map<unsigned, std::u16string>;

/// "DEU" and so on, in alphabetical order.
std::vector<std::string> languageCodes();

/// Throws std::runtime_error that names the line if one is no `1000 "text"` of plain UTF-8, holds a
/// quote or a backslash within its text, or if the numbers do not ascend.
LanguageTable parseLanguageTable(std::string_view content);

/// The table with the names behind its texts taken away. Throws std::runtime_error that names the
/// line that has none.
std::string withoutNames(std::string_view content);

/// Throws also if there is no such file.
LanguageTable readLanguageTable(const std::string& code);

}  // namespace fixture
