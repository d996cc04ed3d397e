#include "toolkit/grid/grid_accessible.h"

#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/trimmed.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace grid {
namespace {

using Kind = GridAccessible::Kind;
using Part = GridAccessible::Part;

constexpr RowIndex kMaxChildren = std::numeric_limits<LONG>::max();

// The columns on view, from left to right.
std::vector<int> columnsOf(const Grid& grid) {
    const ColumnLayout& columns = grid.geometry().columns();
    std::vector<int> found;
    for (int c = columns.firstVisible(); c != kNoColumn; c = columns.next(c, 1)) {
        found.push_back(c);
    }
    return found;
}

int groupAt(const Grid& grid, RowIndex view) {
    return grid.grouping().active() ? grid.grouping().at(view).group : kNoGroup;
}

void put(IDispatch* object, VARIANT& answer) {
    if (object) {
        answer.vt = VT_DISPATCH;
        answer.pdispVal = object;
    }
}

// COM interfaces have no destructors: an object ends in its own Release.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// Rows of a range, one after the other.
class RowEnumerator : public IEnumVARIANT {
public:
    RowEnumerator(std::shared_ptr<GridLink> link, RowIndex next, RowIndex end)
        : link_(std::move(link)), first_(next), next_(next), end_(end) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || iid == IID_IEnumVARIANT;
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* rows, ULONG* fetched) override {
        ULONG count = 0;
        for (; count < wanted && next_ < end_; ++count, ++next_) {
            VariantInit(&rows[count]);
            put(new GridAccessible(link_, {Kind::row, next_}), rows[count]);
        }
        if (fetched) *fetched = count;
        return count == wanted ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        next_ = std::min(next_ + static_cast<RowIndex>(count), end_);
        return next_ < end_ ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        next_ = first_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** clone) override {
        *clone = new RowEnumerator(link_, next_, end_);
        return S_OK;
    }

private:
    virtual ~RowEnumerator() = default;

    std::shared_ptr<GridLink> link_;
    RowIndex first_;
    RowIndex next_;
    RowIndex end_;
    ULONG references_ = 1;
};

#pragma GCC diagnostic pop

}  // namespace

GridAccessible::GridAccessible(std::shared_ptr<GridLink> link, const Part& part)
    : link_(std::move(link)), part_(part) {}

Grid& GridAccessible::grid() const {
    if (!link_->grid) throw std::runtime_error("The grid is gone");
    return *link_->grid;
}

LONG GridAccessible::childOf(const Grid& grid, Cell viewCell) {
    if (viewCell.row == kNoRow) return CHILDID_SELF;
    const RowIndex columns = std::max(grid.columnCount(), 1);
    const bool cell = viewCell.column != kNoColumn && groupAt(grid, viewCell.row) == kNoGroup;
    if (cell && viewCell.row < kMaxChildren / columns - 1) {
        return static_cast<LONG>(-1 - (viewCell.row * columns + viewCell.column));
    }
    return viewCell.row < kMaxChildren - 2 ? static_cast<LONG>(viewCell.row + 2) : CHILDID_SELF;
}

bool GridAccessible::exists(const Part& part) const {
    const Geometry& geometry = grid().geometry();
    const bool row = part.view >= 0 && part.view < geometry.rowCount();
    const bool column = part.column >= 0 && part.column < geometry.columns().count() &&
                        geometry.columns().visible(part.column);
    switch (part.kind) {
        case Kind::heading:
            return column;
        case Kind::row:
            return row;
        case Kind::cell:
            return row && column && groupAt(grid(), part.view) == kNoGroup;
        default:
            return true;
    }
}

std::optional<Part> GridAccessible::childPart(LONG child) const {
    Part found;
    const RowIndex columns = std::max(grid().columnCount(), 1);
    if (part_.kind == Kind::table && child < 0) {
        const RowIndex number = -1 - RowIndex{child};
        found = {Kind::cell, number / columns, static_cast<int>(number % columns)};
    } else if (part_.kind == Kind::table) {
        found = child == 1 ? Part{Kind::headingRow} : Part{Kind::row, RowIndex{child} - 2};
    } else if (part_.kind == Kind::headingRow || part_.kind == Kind::row) {
        const std::vector<int> shown = columnsOf(grid());
        if (child < 1 || static_cast<std::size_t>(child) > shown.size()) return std::nullopt;
        const bool heading = part_.kind == Kind::headingRow;
        found = {heading ? Kind::heading : Kind::cell, part_.view,
                 shown[static_cast<std::size_t>(child) - 1]};
    } else {
        return std::nullopt;
    }
    return exists(found) ? std::optional(found) : std::nullopt;
}

Part GridAccessible::part(LONG child) const {
    if (!exists(part_)) throw std::out_of_range("The row or column is gone");
    const auto found = child == CHILDID_SELF ? std::optional(part_) : childPart(child);
    if (!found) throw std::out_of_range("No such child");
    return *found;
}

IDispatch* GridAccessible::object(const std::optional<Part>& part) const {
    return part ? new GridAccessible(link_, *part) : nullptr;
}

std::wstring GridAccessible::cellText(RowIndex view, int column) const {
    std::wstring text;
    const RowIndex row = grid().grouping().at(view).row;
    grid().dataSource()->cellText(row, column, text);
    return text;
}

std::wstring GridAccessible::name(LONG child) {
    const Part of = part(child);
    switch (of.kind) {
        case Kind::table:
            return grid().text();
        case Kind::heading:
        case Kind::cell:
            return trimmed(grid().column(of.column).caption());
        case Kind::row: {
            const int group = groupAt(grid(), of.view);
            if (group != kNoGroup) return grid().groupText(group);
            std::wstring text;
            for (const int column : columnsOf(grid())) {
                text += (text.empty() ? L"" : L"; ") + cellText(of.view, column);
            }
            return text;
        }
        default:
            return {};
    }
}

std::wstring GridAccessible::value(LONG child) {
    const Part of = part(child);
    return of.kind == Kind::cell ? cellText(of.view, of.column) : std::wstring();
}

long GridAccessible::role(LONG child) {
    switch (part(child).kind) {
        case Kind::table:
            return ROLE_SYSTEM_TABLE;
        case Kind::heading:
            return ROLE_SYSTEM_COLUMNHEADER;
        case Kind::cell:
            return ROLE_SYSTEM_CELL;
        default:
            return ROLE_SYSTEM_ROW;
    }
}

long GridAccessible::state(LONG child) {
    const Part of = part(child);
    const Selection& selected = grid().selection();
    const Geometry& geometry = grid().geometry();
    long state = STATE_SYSTEM_READONLY;
    if (of.kind == Kind::table || of.view != kNoRow) state |= STATE_SYSTEM_FOCUSABLE;
    if (of.kind == Kind::table) {
        return state | STATE_SYSTEM_MULTISELECTABLE |
               (grid().hasFocus() ? STATE_SYSTEM_FOCUSED : 0);
    }
    if (of.view == kNoRow) return state;
    state |= STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_MULTISELECTABLE;
    if (selected.contains(of.view)) state |= STATE_SYSTEM_SELECTED;
    const int group = groupAt(grid(), of.view);
    const bool focused =
        of.view == selected.current().row &&
        (of.kind == Kind::row ? group != kNoGroup : of.column == selected.current().column);
    if (focused && grid().hasFocus()) state |= STATE_SYSTEM_FOCUSED;
    if (of.view < geometry.firstRow() || of.view >= geometry.endRow()) {
        state |= STATE_SYSTEM_OFFSCREEN;
    }
    if (group != kNoGroup) {
        state |= grid().grouping().group(group).unfolded ? STATE_SYSTEM_EXPANDED
                                                         : STATE_SYSTEM_COLLAPSED;
    }
    return state;
}

RECT GridAccessible::location(LONG child) {
    const Part of = part(child);
    const Geometry& geometry = grid().geometry();
    Rect rect{0, 0, geometry.viewWidth(), geometry.viewHeight()};
    const bool onView = of.view >= geometry.firstRow() && of.view < geometry.endRow();
    switch (of.kind) {
        case Kind::headingRow:
            rect = geometry.headingArea();
            break;
        case Kind::heading:
            rect = intersection(geometry.headingRect(of.column), geometry.headingArea());
            break;
        case Kind::row:
            rect = onView ? intersection(geometry.rowRect(of.view), rect) : Rect{};
            break;
        case Kind::cell:
            rect = onView
                       ? intersection(geometry.cellRect({of.view, of.column}), geometry.dataArea())
                       : Rect{};
            break;
        default:
            break;
    }
    RECT screen = toRect(rect);
    ::MapWindowPoints(grid().hwnd(), nullptr, reinterpret_cast<POINT*>(&screen), 2);
    return screen;
}

long GridAccessible::childCount() {
    switch (part(CHILDID_SELF).kind) {
        case Kind::table:
            return static_cast<long>(std::min(grid().geometry().rowCount() + 1, kMaxChildren));
        case Kind::row:
            if (groupAt(grid(), part_.view) != kNoGroup) return 0;
            [[fallthrough]];
        case Kind::headingRow:
            return static_cast<long>(columnsOf(grid()).size());
        default:
            return 0;
    }
}

IDispatch* GridAccessible::child(LONG child) {
    if (child == CHILDID_SELF) {
        AddRef();
        return this;
    }
    return object(childPart(child));
}

IDispatch* GridAccessible::parent() {
    switch (part(CHILDID_SELF).kind) {
        case Kind::table: {
            void* window = nullptr;
            ::AccessibleObjectFromWindow(grid().hwnd(), static_cast<DWORD>(OBJID_WINDOW),
                                         IID_IDispatch, &window);
            return static_cast<IDispatch*>(window);
        }
        case Kind::heading:
            return object(Part{Kind::headingRow});
        case Kind::cell:
            return object(Part{Kind::row, part_.view});
        default:
            return object(Part{Kind::table});
    }
}

// The current cell, or the row of a group.
void GridAccessible::focus(VARIANT& answer) {
    if (!grid().hasFocus()) return;
    const Cell current = grid().selection().current();
    Part focused{Kind::cell, current.row, current.column};
    if (!exists(focused)) focused = {Kind::row, current.row};
    if (!exists(focused)) focused = {};
    put(object(focused), answer);
}

void GridAccessible::selection(VARIANT& answer) {
    const Selection& selected = grid().selection();
    if (part_.kind != Kind::table || selected.current().row == kNoRow) return;
    if (selected.firstRow() == selected.lastRow()) {
        put(object(Part{Kind::row, selected.firstRow()}), answer);
    } else {
        answer.vt = VT_UNKNOWN;
        answer.punkVal = new RowEnumerator(link_, selected.firstRow(), selected.lastRow() + 1);
    }
}

void GridAccessible::hitTest(POINT screen, VARIANT& answer) {
    ::ScreenToClient(grid().hwnd(), &screen);
    const Point point{static_cast<int>(screen.x), static_cast<int>(screen.y)};
    const Geometry& geometry = grid().geometry();
    if (!Rect{0, 0, geometry.viewWidth(), geometry.viewHeight()}.contains(point)) return;
    const Hit hit = geometry.hitTest(point);
    std::optional<Part> found;
    if (hit.cell.row != kNoRow) {
        const bool cell = hit.area == Area::cell && groupAt(grid(), hit.cell.row) == kNoGroup;
        found = Part{cell ? Kind::cell : Kind::row, hit.cell.row, hit.cell.column};
    } else if (hit.cell.column != kNoColumn) {
        found = Part{Kind::heading, kNoRow, hit.cell.column};
    }
    if (found) {
        put(object(found), answer);
    } else {
        answer.vt = VT_I4;
        answer.lVal = CHILDID_SELF;
    }
}

std::optional<Part> GridAccessible::neighbour(long direction, const Part& from) const {
    const bool forward =
        direction == NAVDIR_NEXT || direction == NAVDIR_DOWN || direction == NAVDIR_RIGHT;
    const bool across = direction == NAVDIR_LEFT || direction == NAVDIR_RIGHT;
    const bool inRow = from.kind == Kind::cell || from.kind == Kind::heading;
    const bool sequence = direction == NAVDIR_NEXT || direction == NAVDIR_PREVIOUS;
    Part to = from;
    if (inRow && (across || sequence)) {
        to.column = grid().geometry().columns().next(from.column, forward ? 1 : -1);
    } else if (from.kind == Kind::headingRow && forward && !across) {
        to = {Kind::row, 0};
    } else if (from.kind == Kind::row && from.view == 0 && !forward && !across) {
        to = {Kind::headingRow};
    } else if ((from.kind == Kind::row || from.kind == Kind::cell) && !across) {
        to.view += forward ? 1 : -1;
    } else {
        return std::nullopt;
    }
    return exists(to) ? std::optional(to) : std::nullopt;
}

void GridAccessible::navigate(long direction, LONG child, VARIANT& answer) {
    if (direction == NAVDIR_FIRSTCHILD || direction == NAVDIR_LASTCHILD) {
        const long count = childCount();
        put(count == 0 ? nullptr : object(childPart(direction == NAVDIR_FIRSTCHILD ? 1 : count)),
            answer);
    } else {
        put(object(neighbour(direction, part(child))), answer);
    }
}

bool GridAccessible::select(long flags, LONG child) {
    const Part of = part(child);
    if ((flags & SELFLAG_TAKEFOCUS) != 0) grid().setFocus();
    if ((flags & (SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION)) != 0 && of.view != kNoRow) {
        grid().setCurrentCell(of.view,
                              of.kind == Kind::cell ? of.column : std::max(grid().col(), 0));
    }
    return of.kind == Kind::table || of.view != kNoRow;
}

std::wstring GridAccessible::action(LONG child) {
    const Part of = part(child);
    if (of.kind == Kind::heading) return L"Click";
    const int group = of.kind == Kind::row ? groupAt(grid(), of.view) : kNoGroup;
    if (group == kNoGroup) return {};
    return grid().grouping().group(group).unfolded ? L"Collapse" : L"Expand";
}

bool GridAccessible::doAction(LONG child) {
    const Part of = part(child);
    if (of.kind == Kind::heading) {
        if (const auto procedure = grid().onHeadClick) procedure(of.column);
        return true;
    }
    const int group = of.kind == Kind::row ? groupAt(grid(), of.view) : kNoGroup;
    if (group != kNoGroup) grid().setGroupUnfolded(group, !grid().grouping().group(group).unfolded);
    return group != kNoGroup;
}

}  // namespace grid
