// Snapshot: what a window shows, pixel by pixel.
//
//   Snapshot before = Snapshot::of(grid.hwnd());
//   EXPECT_EQ(before.differences(Snapshot::of(grid.hwnd())), 0);
//
// Taken from the window's own device context, which works without a display too. A failing test
// can save one and have a look.
#pragma once

#include "toolkit/grid/model/shapes.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace grid {

class Snapshot {
public:
    // The whole window with its border and scroll bars.
    static Snapshot of(HWND window);
    // Its client area alone.
    static Snapshot ofClient(HWND window);

    int width() const { return width_; }
    int height() const { return height_; }
    COLORREF at(int x, int y) const;

    // How many pixels differ, in all or in a part; all of them when the sizes do.
    int differences(const Snapshot& other) const;
    int differences(const Snapshot& other, const Rect& part) const;
    // How many pixels of a part have the color.
    int count(const Rect& part, COLORREF color) const;
    // How many different colors a part has.
    int colors(const Rect& part) const;

    // A 32-bit .bmp file. Returns whether it could be written.
    bool save(const std::wstring& path) const;

private:
    Snapshot(HDC source, int width, int height);

    int width_;
    int height_;
    std::vector<std::uint32_t> pixels_;  // 0x00RRGGBB, top row first.
};

}  // namespace grid
