// Texts on their way between the engine's UTF-16 and the window system's wide characters.
//
//   const std::u16string position = u"Line " + toText(12);
//
// Pure functions; any thread may call them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The decimal text of a number, as the interface shows it: no grouping, no blanks.
std::u16string toText(std::int64_t number);

/// Text of plain ASCII, as exceptions of the standard library carry it.
std::u16string fromAscii(std::string_view ascii);

#ifdef _WIN32
/// Windows' wide characters are UTF-16 units too, in a type of their own.
inline std::wstring toWide(std::u16string_view text) { return {text.begin(), text.end()}; }
inline std::u16string fromWide(std::wstring_view text) { return {text.begin(), text.end()}; }
#endif
