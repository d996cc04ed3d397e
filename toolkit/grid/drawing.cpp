#include "toolkit/grid/drawing.h"

#include <algorithm>

namespace grid {

RECT toRect(const Rect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

Rect fromRect(const RECT& rect) {
    return {static_cast<int>(rect.left), static_cast<int>(rect.top), static_cast<int>(rect.right),
            static_cast<int>(rect.bottom)};
}

void fill(HDC dc, const Rect& rect, COLORREF color) {
    if (rect.empty()) return;
    // An opaque text without letters is the fastest way to a plain rectangle: no brush is made.
    RECT area = toRect(rect);
    ::SetBkColor(dc, color);
    ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &area, L"", 0, nullptr);
}

void frame(HDC dc, const Rect& rect, int thickness, COLORREF color) {
    if (rect.empty()) return;
    int across = std::min(thickness, rect.width());
    int along = std::min(thickness, rect.height());
    fill(dc, {rect.left, rect.top, rect.right, rect.top + along}, color);
    fill(dc, {rect.left, rect.bottom - along, rect.right, rect.bottom}, color);
    fill(dc, {rect.left, rect.top, rect.left + across, rect.bottom}, color);
    fill(dc, {rect.right - across, rect.top, rect.right, rect.bottom}, color);
}

void drawTriangle(HDC dc, Direction direction, Point at, int size, COLORREF color) {
    int base = 2 * size - 1;
    for (int line = 0; line < size; ++line) {
        // The lines of a triangle that points up grow from its tip.
        int tip = direction == Direction::up ? size - 1 - line : line;
        Rect strip = direction == Direction::right
                         ? Rect{at.x + line, at.y + line, at.x + line + 1, at.y + base - line}
                         : Rect{at.x + tip, at.y + line, at.x + base - tip, at.y + line + 1};
        fill(dc, strip, color);
    }
}

void drawText(HDC dc, Point at, const Rect& clip, std::wstring_view text) {
    if (text.empty() || clip.empty()) return;
    RECT area = toRect(clip);
    ::ExtTextOutW(dc, at.x, at.y, ETO_CLIPPED, &area, text.data(), static_cast<UINT>(text.size()),
                  nullptr);
}

}  // namespace grid
