// Checks an XML text before it is parsed: a trace database is untrusted, and a parser can be made
// to read other files, to expand a text a millionfold or to overflow the stack.
//
//   macros::requireHarmlessXml(text);
//   scratch.load(toWide(text));
//
// A plain function of its argument; any thread.
#pragma once

#include <string_view>

namespace macros {

/// The maximum depth of nested elements. Macro traces have four.
inline constexpr int kDeepestElement = 256;

/// Throws RuntimeError{5} for a text with a document type declaration or with elements nested
/// deeper than kDeepestElement. Whether the text is well-formed is left to the parser. Linear time.
void requireHarmlessXml(std::u16string_view text);

}  // namespace macros
