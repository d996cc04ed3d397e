#include "toolkit/grid/back_buffer.h"

#include <algorithm>

namespace grid {

HDC BackBuffer::open(HDC screen, int width, int height) {
    if (dc_ && width <= width_ && height <= height_) return dc_;
    int newWidth = std::max(width, width_);
    int newHeight = std::max(height, height_);
    release();
    dc_ = ::CreateCompatibleDC(screen);
    bitmap_ = ::CreateCompatibleBitmap(screen, newWidth, newHeight);
    if (!dc_ || !bitmap_) {
        release();
        return nullptr;
    }
    original_ = ::SelectObject(dc_, bitmap_);
    width_ = newWidth;
    height_ = newHeight;
    return dc_;
}

void BackBuffer::copyTo(HDC screen, const Rect& part, Point to) const {
    ::BitBlt(screen, to.x, to.y, part.width(), part.height(), dc_, part.left, part.top, SRCCOPY);
}

void BackBuffer::release() {
    if (dc_) {
        if (original_) ::SelectObject(dc_, original_);
        ::DeleteDC(dc_);
    }
    if (bitmap_) ::DeleteObject(bitmap_);
    dc_ = nullptr;
    bitmap_ = nullptr;
    original_ = nullptr;
    width_ = height_ = 0;
}

}  // namespace grid
