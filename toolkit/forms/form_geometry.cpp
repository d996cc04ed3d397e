// The part of Form that deals with place and size.
#include "toolkit/forms/form.h"

namespace forms {

// Place and size of the whole window for a client area of that many pixels.
RECT Form::frameFor(SIZE client) const {
    RECT rect{0, 0, client.cx, client.cy};
    ::AdjustWindowRectExForDpi(&rect, static_cast<DWORD>(::GetWindowLongPtrW(hwnd(), GWL_STYLE)),
                               ::GetMenu(hwnd()) != nullptr,
                               static_cast<DWORD>(::GetWindowLongPtrW(hwnd(), GWL_EXSTYLE)),
                               dpi_.value);
    return rect;
}

SIZE Form::clientPixels() const {
    RECT rect{};
    ::GetClientRect(hwnd(), &rect);
    return {rect.right, rect.bottom};
}

RECT Form::wantedPixels() const {
    const int left = toPixels(bounds_.left, dpi_).value;
    const int top = toPixels(bounds_.top, dpi_).value;
    return {left, top, left + toPixels(bounds_.width, dpi_).value,
            top + toPixels(bounds_.height, dpi_).value};
}

// What was set last, unless the window is elsewhere by now. So a size that is no whole number of
// pixels reads back as it was set.
Bounds Form::bounds() const {
    if (!isLoaded()) return bounds_;
    RECT actual{};
    ::GetWindowRect(hwnd(), &actual);
    const RECT wanted = wantedPixels();
    if (::EqualRect(&actual, &wanted)) return bounds_;
    const auto twips = [this](LONG pixels) {
        return toTwips(Pixels(static_cast<int>(pixels)), dpi_);
    };
    return {twips(actual.left), twips(actual.top), twips(actual.right - actual.left),
            twips(actual.bottom - actual.top)};
}

void Form::move(const Bounds& bounds) {
    bounds_ = bounds;
    if (isLoaded()) applyBounds();
}

void Form::applyBounds() {
    const RECT rect = wantedPixels();
    ::SetWindowPos(hwnd(), nullptr, rect.left, rect.top, rect.right - rect.left,
                   rect.bottom - rect.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void Form::setLeft(Twips left) {
    const Bounds b = bounds();
    move({left, b.top, b.width, b.height});
}

void Form::setTop(Twips top) {
    const Bounds b = bounds();
    move({b.left, top, b.width, b.height});
}

void Form::setWidth(Twips width) {
    const Bounds b = bounds();
    move({b.left, b.top, width, b.height});
}

void Form::setHeight(Twips height) {
    const Bounds b = bounds();
    move({b.left, b.top, b.width, height});
}

void Form::setClientSize(Twips width, Twips height) {
    const RECT frame = frameFor({toPixels(width, dpi_).value, toPixels(height, dpi_).value});
    const auto twips = [this](LONG pixels) {
        return toTwips(Pixels(static_cast<int>(pixels)), dpi_);
    };
    const Bounds b = bounds();
    move({b.left, b.top, twips(frame.right - frame.left), twips(frame.bottom - frame.top)});
}

Twips Form::clientWidth() const {
    return toTwips(Pixels(static_cast<int>(clientPixels().cx)), dpi_);
}

Twips Form::clientHeight() const {
    return toTwips(Pixels(static_cast<int>(clientPixels().cy)), dpi_);
}

MONITORINFO Form::monitor() const {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    const HMONITOR display = isLoaded() ? ::MonitorFromWindow(hwnd(), MONITOR_DEFAULTTONEAREST)
                                        : ::MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY);
    ::GetMonitorInfoW(display, &info);
    return info;
}

Twips Form::screenWidth() const {
    const RECT rect = monitor().rcMonitor;
    return toTwips(Pixels(static_cast<int>(rect.right - rect.left)), dpi_);
}

Twips Form::screenHeight() const {
    const RECT rect = monitor().rcMonitor;
    return toTwips(Pixels(static_cast<int>(rect.bottom - rect.top)), dpi_);
}

void Form::center(const Form* owner) {
    RECT area = monitor().rcWork;
    if (owner && owner != this && owner->visible() &&
        owner->windowState() != WindowState::minimized) {
        ::GetWindowRect(owner->hwnd(), &area);
    }
    const auto middle = [this](LONG from, LONG to) {
        return toTwips(Pixels(static_cast<int>((from + to) / 2)), dpi_);
    };
    const Bounds b = bounds();
    move({middle(area.left, area.right) - b.width / 2, middle(area.top, area.bottom) - b.height / 2,
          b.width, b.height});
}

}  // namespace forms
