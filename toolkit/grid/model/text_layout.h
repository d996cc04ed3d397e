// Lays out a cell's text in the lines available.
//
//   std::wstring shown;
//   std::vector<TextLine> lines;
//   showable(text, LineBreaks::keep, maxCharacters, shown);
//   bool whole = layOutText(shown, {width, 2}, measure, lines);
//
// One thread (the measure's). Lines are broken at blanks and between ideographs, and within a word
// that is longer than a line; line feeds start a new line; truncated text ends in an ellipsis.
// Units (text_units.h) are never split.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace grid {

inline constexpr wchar_t kEllipsis = L'\x2026';

/// Measures text in a font. Texts contain no control characters.
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

/// Converts a text to one that can be drawn: a tab becomes four blanks, CR LF, LF and CR one '\n'
/// (or one blank), other control characters a visible middle dot, unpaired surrogates U+FFFD. Stops
/// soon after `most` elements: a cell shows no more of a long text.
void showable(std::wstring_view text, LineBreaks breaks, std::size_t most, std::wstring& shown);

/// The space for a text.
struct TextBox {
    int width = 0;
    int lines = 1;
};

struct TextLine {
    std::size_t begin = 0;  ///< In the laid-out text.
    std::size_t length = 0;
    int width = 0;          ///< With the ellipsis.
    bool ellipsis = false;  ///< Draw kEllipsis behind the text.
};

/// Lays out a text made by showable(). Returns whether all of it is visible, trailing blanks and
/// line breaks ignored. Replaces `lines`.
bool layOutText(std::wstring_view text, TextBox box, TextMeasure& measure,
                std::vector<TextLine>& lines);

}  // namespace grid
