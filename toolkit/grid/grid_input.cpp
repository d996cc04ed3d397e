// What keys and mouse do in the grid.
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"

#include <windows.h>

#include <optional>

namespace grid {
namespace {

std::optional<Motion> motionOf(int key, bool ctrl) {
    switch (key) {
        case VK_LEFT:
            return Motion::left;
        case VK_RIGHT:
            return Motion::right;
        case VK_UP:
            return Motion::up;
        case VK_DOWN:
            return Motion::down;
        case VK_PRIOR:
            return Motion::pageUp;
        case VK_NEXT:
            return Motion::pageDown;
        case VK_HOME:
            return ctrl ? Motion::firstRow : Motion::rowStart;
        case VK_END:
            return ctrl ? Motion::lastRow : Motion::rowEnd;
        default:
            return std::nullopt;
    }
}

}  // namespace

// The arrows are the grid's; Tab, Enter and Escape stay the form's, but for the Escape that ends
// a drag.
LRESULT Grid::onGetDialogCode(const MSG* message) const {
    bool escape = message && message->message == WM_KEYDOWN && message->wParam == VK_ESCAPE;
    return DLGC_WANTARROWS | (escape && drag_ != Drag::none ? DLGC_WANTMESSAGE : 0);
}

void Grid::onKeyDown(int key) {
    hideTip();
    if (key == VK_ESCAPE) {
        endDrag(false);
        return;
    }
    const unsigned shift = forms::shiftState();
    const auto motion = motionOf(key, (shift & forms::kCtrl) != 0);
    if (motion && drag_ == Drag::none && (shift & forms::kAlt) == 0) {
        moveCurrent(navigate(geometry_, selection_.current(), *motion));
        scroll([this](Geometry& geometry) { geometry.scrollColumnIntoView(col()); });
    }
}

// The grid's areas as the user finds them: a border that may not be moved belongs to its heading.
Hit Grid::hitTest(Point point) const {
    Hit hit = geometry_.hitTest(point);
    if (hit.area != Area::headingBorder) {
        return hit;
    }
    const auto& column = columns_[static_cast<std::size_t>(hit.cell.column)];
    if (column->allowSizing()) {
        return hit;
    }
    int under = headingAt(point);
    return under == kNoColumn ? Hit{} : Hit{Area::heading, {kNoRow, under}};
}

int Grid::headingAt(Point point) const {
    if (!geometry_.headingArea().contains(point)) {
        return kNoColumn;
    }
    int x = point.x - geometry_.measures().selectorWidth + geometry_.scrollX();
    return geometry_.columns().at(x);
}

void Grid::onLeftDown(Point point) {
    hideTip();
    if (!hasFocus()) {
        setFocus();
    }
    const Hit hit = hitTest(point);
    switch (hit.area) {
        case Area::heading:
            beginDrag(Drag::heading, hit.cell.column, point);
            break;
        case Area::headingBorder:
            beginDrag(Drag::border, hit.cell.column, point);
            break;
        case Area::selector:
            moveCurrent({hit.cell.row, col()});
            break;
        case Area::cell:
            moveCurrent(hit.cell);
            break;
        default:
            break;
    }
}

void Grid::onLeftDouble(Point point) {
    const Hit hit = hitTest(point);
    if (hit.area != Area::headingBorder) {
        // The second of two quick clicks is a click like the first.
        onLeftDown(point);
    } else if (resizeAllowed(hit.cell.column)) {
        column(hit.cell.column).autoSize();
    }
}

void Grid::onMouseMoved(Point point) {
    if (drag_ == Drag::border) {
        dragBorder(point);
        return;
    }
    if (drag_ == Drag::heading) {
        bool inside = headingAt(point) == dragColumn_;
        if (inside != dragInside_) {
            dragInside_ = inside;
            headingChanged(column(dragColumn_));
        }
        return;
    }
    const Hit hit = hitTest(point);
    setHotColumn(hit.area == Area::heading ? hit.cell.column : kNoColumn);
    if (hit.cell != tipCell_) {
        hideTip();
    }
    watchMouse();
}

void Grid::onLeftUp(Point point) {
    bool clicked = drag_ == Drag::heading && headingAt(point) == dragColumn_;
    int column = dragColumn_;
    endDrag(true);
    if (clicked) {
        if (const auto procedure = onHeadClick) {
            procedure(column);
        }
    }
}

void Grid::beginDrag(Drag drag, int column, Point point) {
    drag_ = drag;
    dragColumn_ = column;
    dragStart_ = point;
    // From the width it has on the screen, which is more than its own when it fills the rest.
    dragWidth_ = this->column(column).width();
    dragFrom_ = geometry_.columns().width(column);
    dragMoved_ = false;
    dragInside_ = true;
    SetCapture(hwnd());
    headingChanged(this->column(column));
}

void Grid::dragBorder(Point point) {
    int distance = point.x - dragStart_.x;
    if (!dragMoved_) {
        if (distance == 0) {
            return;
        }
        dragMoved_ = true;
        if (!resizeAllowed(dragColumn_)) {
            endDrag(false);
            return;
        }
        if (drag_ != Drag::border) {
            return;
        }
    }
    forms::Pixels width(std::max(dragFrom_ + distance, 0));
    column(dragColumn_).setWidth(forms::toTwips(width, dpi()));
    UpdateWindow(hwnd());
}

void Grid::endDrag(bool keepWidth) {
    if (drag_ == Drag::none) {
        return;
    }
    bool restore = drag_ == Drag::border && dragMoved_ && !keepWidth;
    drag_ = Drag::none;
    if (dragColumn_ < columnCount()) {
        if (restore) {
            column(dragColumn_).setWidth(dragWidth_);
        }
        headingChanged(column(dragColumn_));
    }
    if (isCreated() && GetCapture() == hwnd()) {
        ReleaseCapture();
    }
}

void Grid::setHotColumn(int column) {
    if (column == hotColumn_) {
        return;
    }
    for (int changed : {hotColumn_, column}) {
        if (changed >= 0 && changed < columnCount()) {
            headingChanged(this->column(changed));
        }
    }
    hotColumn_ = column;
}

void Grid::watchMouse() const {
    TRACKMOUSEEVENT track{};
    track.cbSize = sizeof track;
    track.dwFlags = TME_LEAVE | (cellTipsOn_ ? TME_HOVER : 0u);
    track.hwndTrack = hwnd();
    track.dwHoverTime = HOVER_DEFAULT;
    TrackMouseEvent(&track);
}

void Grid::onMouseLeave() {
    setHotColumn(kNoColumn);
    hideTip();
}

bool Grid::onSetCursor(int hitCode) const {
    if (hitCode != HTCLIENT) {
        return false;
    }
    POINT mouse{};
    GetCursorPos(&mouse);
    ScreenToClient(hwnd(), &mouse);
    bool border =
        hitTest({static_cast<int>(mouse.x), static_cast<int>(mouse.y)}).area == Area::headingBorder;
    SetCursor(LoadCursorW(nullptr, border || drag_ == Drag::border ? IDC_SIZEWE : IDC_ARROW));
    return true;
}

void Grid::onMouseHover(Point point) {
    const Hit hit = hitTest(point);
    bool text = hit.area == Area::cell || hit.area == Area::heading;
    if (cellTipsOn_ && text && hit.cell != tipCell_) {
        // Asked once for every rest of the mouse, whatever comes of it.
        tipCell_ = hit.cell;
        showTip(hit.cell);
    }
}

void Grid::showTip(Cell cell) {
    if (!textCutOff(cell)) {
        return;
    }
    std::wstring tip = cell.row == kNoRow ? std::wstring() : cellText_.text;
    bool wrap = false;
    if (const auto procedure = onFetchCellTips) {
        procedure(cell.column, cell.row, tip, wrap);
    }
    if (tip.empty() || !isCreated() || cell.column >= columnCount()) {
        return;
    }
    Rect rect = cell.row == kNoRow ? geometry_.headingRect(cell.column) : geometry_.cellRect(cell);
    RECT screen = toRect(intersection(rect, {0, 0, geometry_.viewWidth(), geometry_.viewHeight()}));
    MapWindowPoints(hwnd(), nullptr, reinterpret_cast<POINT*>(&screen), 2);
    tip_.show(hwnd(), fromRect(screen), tip, wrap, fonts_.get(column(cell.column).font()).handle(),
              dpi());
}

// Whether the cell's text, which is left in cellText_, does not show whole.
bool Grid::textCutOff(Cell cell) {
    const Column& column = this->column(cell.column);
    const Scene now = scene();
    TextFont& font = fonts_.get(column.font());
    TextBox box = Painter::textBox(now, column, font);
    if (cell.row == kNoRow) {
        return headingWidth(column) > box.width;
    }
    if (!source_ || cell.row >= geometry_.rowCount()) {
        return false;
    }
    cellText_.fetch(*source_, cell, column.wrapText(), box, font);
    int widest = 0;
    for (const TextLine& line : cellText_.lines) {
        widest = std::max(widest, line.width);
    }
    Rect rect = geometry_.cellRect(cell);
    Rect data = geometry_.dataArea();
    bool hidden = rect.left + now.padding.side < data.left ||
                  rect.left + now.padding.side + widest > data.right;
    return !cellText_.whole || (hidden && widest > 0);
}

void Grid::hideTip() {
    tipCell_ = {};
    tip_.hide();
}

}  // namespace grid
