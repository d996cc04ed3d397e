// What the mouse does in the grid.
#include "toolkit/grid/cell_measures.h"
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"

#include <windows.h>

namespace grid {

using Held = HeadingDrag::Held;

// The grid's areas as the user finds them: a border that may not be moved belongs to its heading.
Hit Grid::hitTest(Point point) const {
    const Hit hit = geometry_.hitTest(point);
    if (hit.area != Area::headingBorder) return hit;
    const auto& column = columns_[static_cast<std::size_t>(hit.cell.column)];
    if (column->allowSizing()) return hit;
    const int under = headingAt(point);
    return under == kNoColumn ? Hit{} : Hit{Area::heading, {kNoRow, under}};
}

int Grid::headingAt(Point point) const {
    if (!geometry_.headingArea().contains(point)) return kNoColumn;
    const int x = point.x - geometry_.measures().selectorWidth + geometry_.scrollX();
    return geometry_.columns().at(x);
}

void Grid::onLeftDown(Point point) {
    tip_.hide();
    if (!hasFocus()) setFocus();
    const Hit hit = hitTest(point);
    const bool shift = (forms::shiftState() & forms::kShift) != 0;
    if (hit.cell.row != kNoRow && onGroupClick(hit.cell.row, point, false)) return;
    switch (hit.area) {
        case Area::groupChip:
            takeHeading(groupColumns()[static_cast<std::size_t>(hit.level)].column, point);
            break;
        case Area::heading:
            takeHeading(hit.cell.column, point);
            break;
        case Area::headingBorder:
            takeBorder(hit.cell.column, point);
            break;
        case Area::selector:
            moveCurrent({hit.cell.row, col()}, shift ? Selecting::range : Selecting::wholeRow);
            break;
        case Area::cell:
            moveCurrent(hit.cell, shift ? Selecting::range : Selecting::one);
            break;
        default:
            break;
    }
}

void Grid::onLeftDouble(Point point) {
    const Hit hit = hitTest(point);
    if (hit.cell.row != kNoRow && onGroupClick(hit.cell.row, point, true)) return;
    if (hit.area != Area::headingBorder) {
        // The second of two quick clicks is a click like the first.
        onLeftDown(point);
    } else if (resizeAllowed(hit.cell.column)) {
        column(hit.cell.column).autoSize();
    }
}

void Grid::onMouseMoved(Point point) {
    if (drag_.held() == Held::border) {
        dragBorder(point);
        return;
    }
    if (drag_.active()) {
        dragHeading(point);
        return;
    }
    const Hit hit = hitTest(point);
    if (hit.area == Area::groupChip) {
        setHotColumn(groupColumns()[static_cast<std::size_t>(hit.level)].column);
    } else {
        setHotColumn(hit.area == Area::heading ? hit.cell.column : kNoColumn);
    }
    tip_.leave(hit.cell);
    watchMouse();
}

void Grid::onLeftUp(Point point) {
    const Held held = drag_.held();
    const int column = drag_.column();
    const HeadingDrop where = held == Held::carried ? drag_.dropAt(point) : HeadingDrop{};
    endDrag(true);
    if (held == Held::carried) {
        drop(column, where);
    } else if (held == Held::heading) {
        headingReleased(column, point);
    }
}

void Grid::setHotColumn(int column) {
    if (column == hotColumn_) return;
    for (const int changed : {hotColumn_, column}) {
        if (changed >= 0 && changed < columnCount()) repaintHeading(changed);
    }
    hotColumn_ = column;
}

void Grid::watchMouse() const {
    TRACKMOUSEEVENT track{};
    track.cbSize = sizeof track;
    track.dwFlags = TME_LEAVE | (tip_.on() ? TME_HOVER : 0u);
    track.hwndTrack = hwnd();
    track.dwHoverTime = HOVER_DEFAULT;
    ::TrackMouseEvent(&track);
}

void Grid::onMouseLeave() {
    setHotColumn(kNoColumn);
    tip_.hide();
}

bool Grid::onSetCursor(int hitCode) const {
    if (hitCode != HTCLIENT) return false;
    POINT mouse{};
    ::GetCursorPos(&mouse);
    ::ScreenToClient(hwnd(), &mouse);
    const Hit hit = hitTest({static_cast<int>(mouse.x), static_cast<int>(mouse.y)});
    const bool border = hit.area == Area::headingBorder || drag_.held() == Held::border;
    ::SetCursor(::LoadCursorW(nullptr, border ? IDC_SIZEWE : IDC_ARROW));
    return true;
}

void Grid::onMouseHover(Point point) {
    const Hit hit = hitTest(point);
    const bool text = hit.area == Area::cell || hit.area == Area::heading;
    if (text && tip_.rest(hit.cell)) showTip(hit.cell);
}

void Grid::showTip(Cell cell) {
    const Scene now = scene();
    if (groups_.groupAt(cell.row) != kNoGroup || !textCutOff(now, cell)) return;
    const RowIndex row = cell.row == kNoRow ? kNoRow : grouping().at(cell.row).row;
    std::wstring tip = cell.row == kNoRow ? std::wstring() : cellText_.text;
    bool wrap = false;
    if (const auto procedure = onFetchCellTips) procedure(cell.column, row, tip, wrap);
    if (tip.empty() || !isCreated() || cell.column >= columnCount()) return;
    const Rect rect =
        cell.row == kNoRow ? geometry_.headingRect(cell.column) : geometry_.cellRect(cell);
    RECT screen = toRect(intersection(rect, {0, 0, geometry_.viewWidth(), geometry_.viewHeight()}));
    ::MapWindowPoints(hwnd(), nullptr, reinterpret_cast<POINT*>(&screen), 2);
    tip_.show(hwnd(), fromRect(screen), tip, wrap, fonts_.get(column(cell.column).font()).handle(),
              dpi());
}

}  // namespace grid
