// A look at an XML text before a parser gets it: a trace database comes from elsewhere, and a parser
// may be led to read other files, to swell a text a millionfold or to run out of stack.
//
//   macros::requireHarmlessXml(text);
//   scratch.load(toWide(text));
//
// A plain function of its argument; any thread.
#pragma once

#include <string_view>

namespace macros {

/// Elements within elements that a text may have. Macro traces have four.
inline constexpr int kDeepestElement = 256;

/// Throws RuntimeError{5} for a text with a document type declaration or with elements nested
/// deeper than kDeepestElement. Whether the text is well-formed is left to the parser. Takes time
/// in proportion to the text.
void requireHarmlessXml(std::u16string_view text);

}  // namespace macros
