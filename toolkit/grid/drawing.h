// The few shapes that a grid is drawn with, aligned to pixels so that they are crisp at any size.
//
//   fill(dc, rect, ::GetSysColor(COLOR_WINDOW));
//   drawTriangle(dc, Direction::up, {x, y}, 4, color);
//
// The user-interface thread.
#pragma once

#include "toolkit/grid/model/shapes.h"

#include <windows.h>

#include <string_view>

namespace grid {

RECT toRect(const Rect& rect);
Rect fromRect(const RECT& rect);

void fill(HDC dc, const Rect& rect, COLORREF color);
/// A line of `thickness` along the inside of the rectangle.
void frame(HDC dc, const Rect& rect, int thickness, COLORREF color);

enum class Direction { up, down, right };

/// `size` is the triangle's height over its base; the base is 2 * size - 1. `at` is the upper left
/// corner of what the triangle takes.
void drawTriangle(HDC dc, Direction direction, Point at, int size, COLORREF color);

/// Text in the selected font, text colour and a transparent background; nothing outside `clip`.
void drawText(HDC dc, Point at, const Rect& clip, std::wstring_view text);

}  // namespace grid
