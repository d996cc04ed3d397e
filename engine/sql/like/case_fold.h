// Which characters are the same to LIKE: those that the file's collation does not tell apart, and
// every pair of small and capital letter of Unicode, whether the collation knows it or not.
//
//   if (sql::foldCase(text[0]) == sql::foldCase(u'X')) use(text);
//
// Any thread may call it.
#pragma once

#include <cstddef>
#include <vector>

namespace sql {

/// The representative of all characters that LIKE treats as `c`; a capital letter if there is one.
/// Unpaired surrogates represent themselves.
char16_t foldCase(char16_t c);

/// The same for a unit that follows another one, which matters for the second half of a surrogate
/// pair: both halves of a small letter fold to those of its capital, and the first halves of the
/// two are always the same.
char16_t foldCase(char16_t before, char16_t c);

/// Whether the second half of a surrogate pair belongs to a letter of two cases.
bool hasCases(char16_t high, char16_t low);

/// All units below `end` that fold to `folded`, ascending.
std::vector<char16_t> variantsOf(char16_t folded, std::size_t end = 0x10000);

}  // namespace sql
