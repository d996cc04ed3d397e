// BackBuffer: a bitmap to paint into, so that the screen never shows a half-painted grid.
//
//   const HDC canvas = buffer.open(screenDc, client.cx, client.cy);
//   paint(canvas);
//   buffer.copyTo(screenDc, dirty, {dirty.left, dirty.top});
//
// The user-interface thread. The bitmap is kept between paints and grows with the window.
#pragma once

#include "toolkit/grid/model/shapes.h"

#include <windows.h>

namespace grid {

class BackBuffer {
public:
    BackBuffer() = default;
    ~BackBuffer() { release(); }

    BackBuffer(const BackBuffer&) = delete;
    BackBuffer& operator=(const BackBuffer&) = delete;

    /// A device context compatible with `screen` of at least that size, or null if memory is short.
    /// It may still show what was painted before.
    HDC open(HDC screen, int width, int height);
    void copyTo(HDC screen, const Rect& part, Point to) const;
    void release();

private:
    HDC dc_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ original_ = nullptr;
    int width_ = 0;
    int height_ = 0;
};

}  // namespace grid
