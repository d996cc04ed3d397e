// Stored text, plain or compressed, as UTF-16 and UTF-8. The layout is in format/text.h.
//
//   std::u16string name;
//   jet::appendUtf16(field.bytes, name);
//   print(jet::toUtf8(name));
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/format/text.h"
#include "engine/jet/format/types.h"

#include <string>
#include <string_view>

namespace jet {

/// Whether stored text begins with the mark of the compressed form.
inline bool isCompressedText(Bytes stored) {
    constexpr auto kMark = format::text::kCompressed;
    return stored.size() >= kMark.size() && stored[0] == kMark[0] && stored[1] == kMark[1];
}

/// Appends the characters of stored text. Never fails: an odd last byte is dropped, an unclosed run
/// ends with the value.
void appendUtf16(Bytes stored, std::u16string& out);

/// The same as UTF-8. Unpaired surrogates become U+FFFD.
void appendUtf8(Bytes stored, std::string& out);

std::u16string toUtf16(std::string_view utf8);
std::string toUtf8(std::u16string_view text);

/// Appends `text` as UTF-8; unpaired surrogates become U+FFFD.
void appendUtf8(std::u16string_view text, std::string& out);

}  // namespace jet
