#include "toolkit/forms/placed_window.h"

#include <algorithm>

namespace forms {

Twips PlacedWindow::twipsBetween(LONG from, LONG to) const {
    return toTwips(Pixels(static_cast<int>(to - from)), dpi());
}

RECT PlacedWindow::pixelBounds() const {
    RECT rect{};
    ::GetWindowRect(hwnd(), &rect);
    const bool child = (::GetWindowLongPtrW(hwnd(), GWL_STYLE) & WS_CHILD) != 0;
    if (child) {
        ::MapWindowPoints(nullptr, ::GetParent(hwnd()), reinterpret_cast<POINT*>(&rect), 2);
    }
    return rect;
}

RECT PlacedWindow::wantedPixels() const {
    const auto pixels = [this](Twips length) { return LONG{toPixels(length, dpi()).value}; };
    const LONG left = origin().x + pixels(bounds_.left);
    const LONG top = origin().y + pixels(bounds_.top);
    return {left, top, left + std::max(0L, pixels(bounds_.width)),
            top + std::max(0L, pixels(bounds_.height))};
}

Bounds PlacedWindow::bounds() const {
    if (!isCreated()) return bounds_;
    const RECT actual = pixelBounds();
    const RECT wanted = wantedPixels();
    if (::EqualRect(&actual, &wanted)) return bounds_;
    return {twipsBetween(origin().x, actual.left), twipsBetween(origin().y, actual.top),
            twipsBetween(actual.left, actual.right), twipsBetween(actual.top, actual.bottom)};
}

void PlacedWindow::move(const Bounds& bounds) {
    bounds_ = bounds;
    if (isCreated()) applyBounds();
}

void PlacedWindow::applyBounds() {
    const RECT rect = adjustedBounds(wantedPixels());
    ::SetWindowPos(hwnd(), nullptr, rect.left, rect.top, rect.right - rect.left,
                   rect.bottom - rect.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void PlacedWindow::setLeft(Twips left) {
    const Bounds b = bounds();
    move({left, b.top, b.width, b.height});
}

void PlacedWindow::setTop(Twips top) {
    const Bounds b = bounds();
    move({b.left, top, b.width, b.height});
}

void PlacedWindow::setWidth(Twips width) {
    const Bounds b = bounds();
    move({b.left, b.top, width, b.height});
}

void PlacedWindow::setHeight(Twips height) {
    const Bounds b = bounds();
    move({b.left, b.top, b.width, height});
}

}  // namespace forms
