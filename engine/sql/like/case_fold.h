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

/// The character that stands for all that are one with `c`; a capital letter where there is one.
/// Halves of surrogate pairs, seen alone, stand for themselves.
char16_t foldCase(char16_t c);

/// The same for a unit that stands behind another one, which matters for the second half of a
/// surrogate pair: both halves of a small letter fold to those of its capital, and the first halves
/// of the two are always the same.
char16_t foldCase(char16_t before, char16_t c);

/// Whether the second half of a surrogate pair belongs to a letter of two cases.
bool hasCases(char16_t high, char16_t low);

/// All units below `end` that fold to `folded`, in rising order.
std::vector<char16_t> variantsOf(char16_t folded, std::size_t end = 0x10000);

}  // namespace sql
