// Fits a cell's text into the lines it has.
//
//   std::wstring shown;
//   std::vector<TextLine> lines;
//   showable(text, LineBreaks::keep, maxCharacters, shown);
//   bool whole = layOutText(shown, {width, 2}, measure, lines);
//
// One thread (the measure's). Lines are broken at blanks and between ideographs; a word longer
// than a line is broken where it must; line feeds begin a new line; what does not fit ends in an
// ellipsis. No unit (text_units.h) is ever divided.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace grid {

inline constexpr wchar_t kEllipsis = L'\x2026';

/// Asks a font for widths. Texts hold no control characters.
class TextMeasure {
public:
    struct Fit {
        std::size_t count = 0;  ///< How many elements of the text fit.
        int width = 0;          ///< Their width.
    };

    virtual ~TextMeasure() = default;

    /// The longest start of `text` that is at most `limit` pixels wide. May end within a unit.
    virtual Fit fit(std::wstring_view text, int limit) = 0;

    /// The whole text on one line, in pixels.
    virtual int width(std::wstring_view text) = 0;
};

enum class LineBreaks { keep, blank };

/// Makes a text that can be drawn: a tab becomes four blanks, CR LF, LF and CR one '\n' (or one
/// blank), other control characters a middle dot so that they are seen, half a surrogate pair
/// U+FFFD. Stops soon after `most` elements: a cell shows no more of a long text.
void showable(std::wstring_view text, LineBreaks breaks, std::size_t most, std::wstring& shown);

/// Where text may go.
struct TextBox {
    int width = 0;
    int lines = 1;
};

struct TextLine {
    std::size_t begin = 0;  ///< Into the laid-out text.
    std::size_t length = 0;
    int width = 0;          ///< With the ellipsis.
    bool ellipsis = false;  ///< Draw kEllipsis behind the text.
};

/// Lays out a text made by showable(). Returns whether all of it is on show; trailing blanks and
/// line breaks do not count. Replaces `lines`.
bool layOutText(std::wstring_view text, TextBox box, TextMeasure& measure,
                std::vector<TextLine>& lines);

}  // namespace grid
