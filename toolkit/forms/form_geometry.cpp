// The part of Form that deals with the client area and the screen (place and size:
// placed_window.h).
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

void Form::setClientSize(Twips width, Twips height) {
    const RECT frame = frameFor({toPixels(width, dpi_).value, toPixels(height, dpi_).value});
    const Bounds b = bounds();
    move({b.left, b.top, twipsBetween(frame.left, frame.right),
          twipsBetween(frame.top, frame.bottom)});
}

Twips Form::clientWidth() const { return twipsBetween(0, clientPixels().cx); }

Twips Form::clientHeight() const { return twipsBetween(0, clientPixels().cy); }

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
    return twipsBetween(rect.left, rect.right);
}

Twips Form::screenHeight() const {
    const RECT rect = monitor().rcMonitor;
    return twipsBetween(rect.top, rect.bottom);
}

void Form::center(const Form* owner) {
    RECT area = monitor().rcWork;
    if (owner && owner != this && owner->visible() &&
        owner->windowState() != WindowState::minimized) {
        ::GetWindowRect(owner->hwnd(), &area);
    }
    const auto middle = [this](LONG from, LONG to) { return twipsBetween(0, (from + to) / 2); };
    const Bounds b = bounds();
    move({middle(area.left, area.right) - b.width / 2, middle(area.top, area.bottom) - b.height / 2,
          b.width, b.height});
}

}  // namespace forms
