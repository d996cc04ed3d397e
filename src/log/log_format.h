// The texts of the log file, to the byte.
//
//   logformat::line({.time = now, .level = 0, .label = u"[modMain]Main", .message = u"Hello"});
//   // 09:30:12    Info:(                                [modMain]Main) Hello
//
// Plain functions of their arguments; any thread.
#pragma once

#include "src/log/log_system.h"

#include <string>
#include <string_view>

namespace logformat {

/// Stands in the log for a procedure label that was not given.
inline constexpr std::u16string_view kNoLabel = u"                    ";

struct Line {
    LocalSeconds time = 0;
    int level = 0;  ///< 0 to 3
    std::u16string_view label = kNoLabel;
    std::u16string_view indent = {};
    std::u16string_view message = {};
};

/// A line without its line end. Throws RuntimeError{9} for an invalid level.
std::u16string line(const Line& parts);

/// The first lines of a file, with line ends.
std::u16string header(const LogProgram& program, std::u16string_view started);

/// "VorelleDiagnosticViewer_20050314_093012.LOG".
std::u16string fileName(std::u16string_view baseName, LocalSeconds now);

/// "2005-03-14 09:30:12".
std::u16string isoDate(LocalSeconds time);

/// Seconds with one decimal at least and six at most, the last one rounded.
std::u16string elapsed(double seconds, char16_t decimalPoint);

/// Millions of bytes with one decimal; with a point even if nothing follows it.
std::u16string millionsWithTenths(std::uint64_t bytes, char16_t decimalPoint);

/// Millions of bytes, rounded, digits in groups of three; empty for zero.
std::u16string millions(std::uint64_t bytes, char16_t groupSeparator);

/// The text padded with blanks; longer ones are not truncated.
std::u16string alignedRight(std::u16string_view text, std::size_t width);
std::u16string alignedLeft(std::u16string_view text, std::size_t width);

/// A moment of the calendar in LocalSeconds.
LocalSeconds fromCalendar(int year, unsigned month, unsigned day, int hour, int minute, int second);

}  // namespace logformat
