// CellTip: the window that shows a cell's full text while the mouse hovers over it.
//
//   if (tip.rest({row, column})) tip.show(hwnd(), cellOnScreen, text, true, font, dpi);
//   tip.hide();
//
// The user-interface thread. The tooltip window is created when it is first needed.
#pragma once

#include "toolkit/forms/units.h"
#include "toolkit/grid/model/shapes.h"

#include <windows.h>

#include <string>

namespace grid {

class CellTip {
public:
    CellTip() = default;
    ~CellTip() { destroy(); }

    CellTip(const CellTip&) = delete;
    CellTip& operator=(const CellTip&) = delete;

    /// Whether there are tips at all.
    bool on() const { return on_; }
    void setOn(bool on);

    /// The mouse rests on a cell. Returns whether a tip is due: once for every rest, whatever comes
    /// of it.
    bool rest(Cell cell);
    /// The mouse moved, and is on this cell now.
    void leave(Cell cell);

    /// Shows the text under the rectangle (in screen coordinates), or above it where there is no
    /// room below. With `wrap` long texts take several lines.
    void show(HWND owner, const Rect& cellOnScreen, const std::wstring& text, bool wrap, HFONT font,
              forms::Dpi dpi);
    /// Also forgets on which cell the mouse rested.
    void hide();
    void destroy();

    bool shown() const { return shown_; }
    /// Null before the first tip.
    HWND hwnd() const { return window_; }
    const std::wstring& text() const { return text_; }

private:
    bool make(HWND owner);
    void destroyWindow();
    void keepOnScreen(const Rect& cellOnScreen) const;

    HWND window_ = nullptr;
    HWND owner_ = nullptr;
    std::wstring text_;
    bool shown_ = false;
    bool on_ = true;
    Cell cell_;  // That the mouse rests on.
};

}  // namespace grid
