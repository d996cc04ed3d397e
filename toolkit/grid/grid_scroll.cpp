// Scrolling: bars, wheel, and the moving of what is on the screen already.
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/timers.h"

#include <algorithm>
#include <cstdlib>

namespace grid {
namespace {

// How long the scroll bars may lag behind rows that keep arriving.
constexpr UINT kBarMilliseconds = 50;

// A step of the horizontal arrows, and a character of the wheel's setting, at 96 dots per inch.
constexpr int kHorizontalStep = 16;

UINT wheelSetting(UINT which) {
    UINT value = 3;
    ::SystemParametersInfoW(which, 0, &value, 0);
    return value;
}

}  // namespace

void Grid::scroll(const std::function<void(Geometry&)>& change) {
    RowIndex oldY = geometry_.scrollY();
    int oldX = geometry_.scrollX();
    change(geometry_);
    if (oldY != geometry_.scrollY() || oldX != geometry_.scrollX()) moveView(oldY, oldX);
}

// Moves the pixels that stay on view and leaves the rest to the next paint.
void Grid::moveView(RowIndex oldY, int oldX) {
    hideTip();
    if (!isCreated()) return;
    RowIndex down = oldY - geometry_.scrollY();
    int right = oldX - geometry_.scrollX();
    Rect data = geometry_.dataArea();
    // The rows of groups do not move sideways; what the mouse carries stays where it is.
    const bool partsStay = (right != 0 && grouping_.active()) || drag_ == Drag::carried;
    if (partsStay || std::abs(down) >= data.height() || std::abs(right) >= data.width()) {
        invalidateAll();
    } else {
        moveRows(static_cast<int>(down));
        moveColumns(right);
    }
    updateScrollBars();
    ::UpdateWindow(hwnd());
    if (const auto procedure = onScroll) procedure();
}

void Grid::moveRows(int down) {
    if (down != 0) {
        RECT rows{0, geometry_.dataArea().top, geometry_.viewWidth(), geometry_.viewHeight()};
        ::ScrollWindowEx(hwnd(), 0, down, &rows, &rows, nullptr, nullptr, SW_INVALIDATE);
    }
}

void Grid::moveColumns(int right) {
    if (right != 0) {
        // The headings go with their columns.
        RECT columns{geometry_.dataArea().left, geometry_.headingArea().top, geometry_.viewWidth(),
                     geometry_.viewHeight()};
        ::ScrollWindowEx(hwnd(), right, 0, &columns, &columns, nullptr, nullptr, SW_INVALIDATE);
    }
}

void Grid::setFirstRow(std::int64_t row) {
    scroll([&](Geometry& geometry) { geometry.scrollToRow(row); });
}

void Grid::updateScrollBars() {
    if (!isCreated() || updatingBars_) return;
    updatingBars_ = true;
    // A bar that appears takes room from the other direction: a second look sees what both need.
    for (int look = 0; look < 2; ++look) {
        setVerticalBar();
        setHorizontalBar();
    }
    updatingBars_ = false;
}

// While rows arrive by the thousand the bars follow a few times a second, and not at all while
// the user holds the thumb: it would jump away under the mouse.
void Grid::updateScrollBarsSoon() {
    if (isCreated() && !barsDue_) {
        barsDue_ = true;
        ::SetTimer(hwnd(), kBarTimer, kBarMilliseconds, nullptr);
    }
}

void Grid::onTimer(UINT_PTR timer) {
    if (timer == kBarTimer && !thumbTracking_) {
        ::KillTimer(hwnd(), kBarTimer);
        barsDue_ = false;
        updateScrollBars();
        reportRows();
    } else if (timer == kRegroupTimer) {
        ::KillTimer(hwnd(), kRegroupTimer);
        regroupDue_ = false;
        regroup();
        followSource(false, false);
    }
}

void Grid::setVerticalBar() {
    ScrollRange range = geometry_.verticalRange();
    RowIndex height = geometry_.measures().rowHeight;
    RowIndex top = geometry_.scrollY() == geometry_.maximumScrollY() ? range.lastTop()
                                                                     : geometry_.scrollY() / height;
    setBar(SB_VERT, range.barMaximum(), range.barPage(), range.barPosition(top));
}

void Grid::setHorizontalBar() {
    setBar(SB_HORZ, std::max(geometry_.columns().totalWidth() - 1, 0),
           std::max(geometry_.dataArea().width(), 0), geometry_.scrollX());
}

// Windows draws a bar anew even when nothing about it changes, which takes longer than painting a
// row.
void Grid::setBar(int bar, int maximum, int page, int position) const {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
    ::GetScrollInfo(hwnd(), bar, &info);
    const auto pageSize = static_cast<UINT>(page);
    if (info.nMax != maximum || info.nPage != pageSize || info.nPos != position) {
        info.nMin = 0;
        info.nMax = maximum;
        info.nPage = pageSize;
        info.nPos = position;
        ::SetScrollInfo(hwnd(), bar, &info, TRUE);
    }
}

void Grid::onVScroll(int code) {
    RowIndex height = geometry_.measures().rowHeight;
    RowIndex page = std::max<RowIndex>(geometry_.rowsOnAPage() - 1, 1) * height;
    RowIndex y = geometry_.scrollY();
    switch (code) {
        case SB_LINEUP:
            y -= height;
            break;
        case SB_LINEDOWN:
            y += height;
            break;
        case SB_PAGEUP:
            y -= page;
            break;
        case SB_PAGEDOWN:
            y += page;
            break;
        case SB_TOP:
            y = 0;
            break;
        case SB_BOTTOM:
            y = geometry_.maximumScrollY();
            break;
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            thumbTracking_ = code == SB_THUMBTRACK;
            y = geometry_.verticalRange().row(trackPosition(SB_VERT)) * height;
            break;
        case SB_ENDSCROLL:
            thumbTracking_ = false;
            updateScrollBars();
            return;
        default:
            return;
    }
    scroll([&](Geometry& geometry) { geometry.scrollToY(y); });
}

void Grid::onHScroll(int code) {
    int page = std::max(geometry_.dataArea().width() - horizontalStep(), horizontalStep());
    int x = geometry_.scrollX();
    switch (code) {
        case SB_LINELEFT:
            x -= horizontalStep();
            break;
        case SB_LINERIGHT:
            x += horizontalStep();
            break;
        case SB_PAGELEFT:
            x -= page;
            break;
        case SB_PAGERIGHT:
            x += page;
            break;
        case SB_LEFT:
            x = 0;
            break;
        case SB_RIGHT:
            x = geometry_.maximumScrollX();
            break;
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            x = trackPosition(SB_HORZ);
            break;
        default:
            return;
    }
    scroll([&](Geometry& geometry) { geometry.scrollToX(x); });
}

// The message itself carries only 16 bits of the thumb's position.
int Grid::trackPosition(int bar) const {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    ::GetScrollInfo(hwnd(), bar, &info);
    return info.nTrackPos;
}

void Grid::onWheel(int delta, bool sideways) {
    if (sideways) {
        std::int64_t notch = RowIndex{wheelSetting(SPI_GETWHEELSCROLLCHARS)} * horizontalStep();
        auto distance = static_cast<int>(
            wheelX_.turn(delta, std::min<std::int64_t>(notch, geometry_.dataArea().width())));
        scroll([&](Geometry& geometry) { geometry.scrollToX(geometry.scrollX() - distance); });
        return;
    }
    RowIndex page = std::max<RowIndex>(geometry_.rowsOnAPage() - 1, 1);
    UINT lines = wheelSetting(SPI_GETWHEELSCROLLLINES);
    RowIndex rows = lines == WHEEL_PAGESCROLL ? page : std::min<RowIndex>(lines, page);
    RowIndex distance = wheelY_.turn(delta, rows * geometry_.measures().rowHeight);
    scroll([&](Geometry& geometry) { geometry.scrollToY(geometry.scrollY() - distance); });
}

int Grid::horizontalStep() const { return forms::scaled(kHorizontalStep, dpi()).value; }

}  // namespace grid
