// How cells and headings look: named styles, with colours that follow the system's.
//
//   Style warning = dataGrid.style(L"Normal");
//   warning.text = Color::rgb(192, 0, 0);
//   dataGrid.setStyle(L"Warning", warning);
//
// Values. The user-interface thread, since resolving asks the system for its colours.
#pragma once

#include "toolkit/grid/model/data_source.h"

#include <windows.h>

#include <map>
#include <optional>
#include <string>

namespace grid {

/// A colour as designed; resolve() returns the one to draw with.
class Color {
public:
    static Color rgb(int red, int green, int blue);

    /// A colour of the system, by its COLOR_ index.
    static Color system(int index) { return system(index, index); }
    /// A different one in high contrast.
    static Color system(int index, int inHighContrast);

    /// A system colour mixed with the window's background; in high contrast the second colour,
    /// unmixed.
    static Color tint(int index, int percent, int inHighContrast);

    COLORREF resolve(bool highContrast) const;

private:
    int index_ = COLOR_WINDOW;
    int highContrastIndex_ = COLOR_WINDOW;
    int percent_ = 100;
    std::optional<COLORREF> fixed_;
};

/// Whether the user has turned on high contrast.
bool highContrastOn();

/// A picture beside a heading's caption.
enum class HeadingPicture { none, ascending, descending };

struct Style {
    Color text = Color::system(COLOR_WINDOWTEXT);
    Color back = Color::system(COLOR_WINDOW);
    bool bold = false;
    /// Without one, the data source's alignment of the column applies.
    std::optional<Alignment> alignment;
    HeadingPicture picture = HeadingPicture::none;
};

/// The styles of one grid. It starts with those that every grid has: Normal, Heading, Footing,
/// Selected (the current row), SelectedInactive (the same while another window has the focus),
/// Caption, HighlightRow, EvenRow, OddRow, RecordSelector, FilterBar, Ascending and Descending
/// (headings of a sorted column), BigRed, imgSubscriber.
class StyleSheet {
public:
    StyleSheet();

    bool contains(const std::wstring& name) const { return styles_.count(name) != 0; }
    /// Throws std::out_of_range for a name that is not there.
    const Style& style(const std::wstring& name) const { return styles_.at(name); }
    void set(const std::wstring& name, const Style& style) { styles_[name] = style; }

private:
    std::map<std::wstring, Style> styles_;
};

}  // namespace grid
