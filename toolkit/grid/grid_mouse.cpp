// What keys and mouse do in the grid.
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"

#include <windows.h>

#include <algorithm>
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

// The key of the number pad that types a character; 0 if none does.
int padKeyOf(wchar_t character) {
    switch (character) {
        case L'+':
            return VK_ADD;
        case L'-':
            return VK_SUBTRACT;
        case L'*':
            return VK_MULTIPLY;
        case L'/':
            return VK_DIVIDE;
        default:
            return 0;
    }
}

}  // namespace

// Arrows and characters are the grid's; Tab, Enter and Escape stay the form's, but for the Escape
// that ends a drag.
LRESULT Grid::onGetDialogCode(const MSG* message) const {
    bool escape = message && message->message == WM_KEYDOWN && message->wParam == VK_ESCAPE;
    return DLGC_WANTARROWS | DLGC_WANTCHARS |
           (escape && drag_ != Drag::none ? DLGC_WANTMESSAGE : 0);
}

void Grid::onKeyDown(int key) {
    hideTip();
    if (key == VK_ESCAPE) {
        endDrag(false);
        return;
    }
    const unsigned shift = forms::shiftState();
    const bool ctrl = (shift & forms::kCtrl) != 0;
    if (drag_ != Drag::none || (shift & forms::kAlt) != 0) return;
    if (ctrl && (key == 'C' || key == VK_INSERT)) {
        copy();
    } else if (ctrl && key == 'A') {
        selectAll();
    } else if (shift != 0 || !onGroupKey(key)) {
        if (const auto motion = motionOf(key, ctrl)) {
            moveCurrent(navigate(geometry_, selection_.current(), *motion),
                        (shift & forms::kShift) != 0 ? Selecting::range : Selecting::one);
            scroll([this](Geometry& geometry) { geometry.scrollColumnIntoView(col()); });
        }
    }
}

// Each keyboard has plus, minus, star and slash on keys of its own, some with Shift. Where the key
// itself was understood already, the character finds nothing left to do.
void Grid::onChar(wchar_t character) {
    const int key = padKeyOf(character);
    if (key != 0 && drag_ == Drag::none) onGroupKey(key);
}

void Grid::selectAll() {
    if (geometry_.rowCount() > 0) {
        Selection all = selection_;
        all.selectRows(0, geometry_.rowCount() - 1);
        select(all);
    }
}

// The grid's areas as the user finds them: a border that may not be moved belongs to its heading.
Hit Grid::hitTest(Point point) const {
    Hit hit = geometry_.hitTest(point);
    if (hit.area != Area::headingBorder) return hit;
    const auto& column = columns_[static_cast<std::size_t>(hit.cell.column)];
    if (column->allowSizing()) return hit;
    int under = headingAt(point);
    return under == kNoColumn ? Hit{} : Hit{Area::heading, {kNoRow, under}};
}

int Grid::headingAt(Point point) const {
    if (!geometry_.headingArea().contains(point)) return kNoColumn;
    int x = point.x - geometry_.measures().selectorWidth + geometry_.scrollX();
    return geometry_.columns().at(x);
}

void Grid::onLeftDown(Point point) {
    hideTip();
    if (!hasFocus()) setFocus();
    const Hit hit = hitTest(point);
    const bool shift = (forms::shiftState() & forms::kShift) != 0;
    if (hit.cell.row != kNoRow && onGroupClick(hit.cell.row, point, false)) return;
    switch (hit.area) {
        case Area::groupChip:
            beginDrag(Drag::heading, groupColumns_[static_cast<std::size_t>(hit.level)].column,
                      point);
            break;
        case Area::heading:
            beginDrag(Drag::heading, hit.cell.column, point);
            break;
        case Area::headingBorder:
            beginDrag(Drag::border, hit.cell.column, point);
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
    if (drag_ == Drag::border) {
        dragBorder(point);
        return;
    }
    if (drag_ == Drag::heading || drag_ == Drag::carried) {
        dragHeading(point);
        return;
    }
    const Hit hit = hitTest(point);
    if (hit.area == Area::groupChip) {
        setHotColumn(groupColumns_[static_cast<std::size_t>(hit.level)].column);
    } else {
        setHotColumn(hit.area == Area::heading ? hit.cell.column : kNoColumn);
    }
    if (hit.cell != tipCell_) hideTip();
    watchMouse();
}

void Grid::onLeftUp(Point point) {
    const Drag held = drag_;
    const int column = dragColumn_;
    const int level = held == Drag::none ? kNoLevel : groupLevelOf(column);
    const Drop where = held == Drag::carried ? dropAt(point) : Drop{};
    endDrag(true);
    if (held == Drag::carried) {
        drop(column, where);
    } else if (held == Drag::heading && level != kNoLevel) {
        if (hitTest(point).level == level) reverseGroup(level);
    } else if (held == Drag::heading && headingAt(point) == column) {
        if (const auto procedure = onHeadClick) procedure(column);
    }
}

void Grid::setHotColumn(int column) {
    if (column == hotColumn_) return;
    for (int changed : {hotColumn_, column}) {
        if (changed >= 0 && changed < columnCount()) invalidateHeadingOrChip(changed);
    }
    hotColumn_ = column;
}

void Grid::watchMouse() const {
    TRACKMOUSEEVENT track{};
    track.cbSize = sizeof track;
    track.dwFlags = TME_LEAVE | (cellTipsOn_ ? TME_HOVER : 0u);
    track.hwndTrack = hwnd();
    track.dwHoverTime = HOVER_DEFAULT;
    ::TrackMouseEvent(&track);
}

void Grid::onMouseLeave() {
    setHotColumn(kNoColumn);
    hideTip();
}

bool Grid::onSetCursor(int hitCode) const {
    if (hitCode != HTCLIENT) return false;
    POINT mouse{};
    ::GetCursorPos(&mouse);
    ::ScreenToClient(hwnd(), &mouse);
    bool border =
        hitTest({static_cast<int>(mouse.x), static_cast<int>(mouse.y)}).area == Area::headingBorder;
    ::SetCursor(::LoadCursorW(nullptr, border || drag_ == Drag::border ? IDC_SIZEWE : IDC_ARROW));
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
    const RowIndex row = cell.row == kNoRow ? kNoRow : grouping_.at(cell.row).row;
    const bool onGroup = cell.row != kNoRow && row == kNoRow;
    if (onGroup || !textCutOff(cell)) return;
    std::wstring tip = cell.row == kNoRow ? std::wstring() : cellText_.text;
    bool wrap = false;
    if (const auto procedure = onFetchCellTips) procedure(cell.column, row, tip, wrap);
    if (tip.empty() || !isCreated() || cell.column >= columnCount()) return;
    Rect rect = cell.row == kNoRow ? geometry_.headingRect(cell.column) : geometry_.cellRect(cell);
    RECT screen = toRect(intersection(rect, {0, 0, geometry_.viewWidth(), geometry_.viewHeight()}));
    ::MapWindowPoints(hwnd(), nullptr, reinterpret_cast<POINT*>(&screen), 2);
    tip_.show(hwnd(), fromRect(screen), tip, wrap, fonts_.get(column(cell.column).font()).handle(),
              dpi());
}

// Whether the cell's text, which is left in cellText_, does not show whole.
bool Grid::textCutOff(Cell cell) {
    const Column& column = this->column(cell.column);
    const Scene now = scene();
    TextFont& font = fonts_.get(column.font());
    TextBox box = Painter::textBox(now, column, font);
    if (cell.row == kNoRow) return headingWidth(column) > box.width;
    if (!source_ || cell.row >= geometry_.rowCount()) return false;
    cellText_.fetch(*source_, {grouping_.at(cell.row).row, cell.column}, column.wrapText(), box,
                    font);
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
