#include "toolkit/grid/scroll_bars.h"

#include "toolkit/grid/model/scroll_steps.h"

#include <algorithm>

namespace grid {
namespace {

// The codes of both directions have the same numbers.
std::optional<ScrollStep> stepOf(int code) {
    switch (code) {
        case SB_LINEUP:
            return ScrollStep::lineBack;
        case SB_LINEDOWN:
            return ScrollStep::lineOn;
        case SB_PAGEUP:
            return ScrollStep::pageBack;
        case SB_PAGEDOWN:
            return ScrollStep::pageOn;
        case SB_TOP:
            return ScrollStep::first;
        case SB_BOTTOM:
            return ScrollStep::last;
        default:
            return std::nullopt;
    }
}

bool isThumb(int code) { return code == SB_THUMBTRACK || code == SB_THUMBPOSITION; }

}  // namespace

void ScrollBars::attach(HWND window) {
    soon_.cancel(window_);
    window_ = window;
    thumbHeld_ = false;
}

void ScrollBars::update() {
    if (!window_ || updating_) return;
    updating_ = true;
    // A bar that appears takes room from the other direction: a second look sees what both need.
    for (int look = 0; look < 2; ++look) {
        setVertical();
        setHorizontal();
    }
    updating_ = false;
}

void ScrollBars::updateSoon() { soon_.request(window_); }

bool ScrollBars::onTimer() {
    if (thumbHeld_) return false;
    soon_.cancel(window_);
    update();
    return true;
}

void ScrollBars::setVertical() const {
    const ScrollRange range = geometry_.verticalRange();
    const RowIndex height = geometry_.measures().rowHeight;
    const RowIndex top = geometry_.scrollY() == geometry_.maximumScrollY()
                             ? range.lastTop()
                             : geometry_.scrollY() / height;
    set(SB_VERT, range.barMaximum(), range.barPage(), range.barPosition(top));
}

void ScrollBars::setHorizontal() const {
    set(SB_HORZ, std::max(geometry_.columns().totalWidth() - 1, 0),
        std::max(geometry_.dataArea().width(), 0), geometry_.scrollX());
}

// Windows draws a bar anew even when nothing about it changes, which takes longer than painting a
// row.
void ScrollBars::set(int bar, int maximum, int page, int position) const {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    ::GetScrollInfo(window_, bar, &info);
    const auto pageSize = static_cast<UINT>(page);
    if (info.nMax != maximum || info.nPage != pageSize || info.nPos != position) {
        info.nMin = 0;
        info.nMax = maximum;
        info.nPage = pageSize;
        info.nPos = position;
        ::SetScrollInfo(window_, bar, &info, TRUE);
    }
}

std::optional<RowIndex> ScrollBars::verticalTarget(int code) {
    if (code == SB_ENDSCROLL) {
        thumbHeld_ = false;
        update();
        return std::nullopt;
    }
    if (isThumb(code)) {
        thumbHeld_ = code == SB_THUMBTRACK;
        return geometry_.verticalRange().row(trackPosition(SB_VERT)) *
               geometry_.measures().rowHeight;
    }
    const auto step = stepOf(code);
    return step ? std::optional(steppedY(geometry_, *step)) : std::nullopt;
}

std::optional<int> ScrollBars::horizontalTarget(int code, int line) const {
    if (isThumb(code)) return trackPosition(SB_HORZ);
    const auto step = stepOf(code);
    return step ? std::optional(steppedX(geometry_, *step, line)) : std::nullopt;
}

// The message itself carries only 16 bits of the thumb's position.
int ScrollBars::trackPosition(int bar) const {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    ::GetScrollInfo(window_, bar, &info);
    return info.nTrackPos;
}

}  // namespace grid
