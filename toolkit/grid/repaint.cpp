#include "toolkit/grid/repaint.h"

#include "toolkit/grid/drawing.h"

#include <algorithm>

namespace grid {

void Repaint::part(const Rect& rect) const {
    if (window_ && !rect.empty()) {
        const RECT area = toRect(rect);
        ::InvalidateRect(window_, &area, FALSE);
    }
}

void Repaint::all() const { part({0, 0, geometry_.viewWidth(), geometry_.viewHeight()}); }

void Repaint::heading(int column) const {
    part(intersection(geometry_.headingRect(column), geometry_.headingArea()));
}

void Repaint::row(RowIndex view) const {
    if (view >= geometry_.firstRow() && view < geometry_.endRow()) {
        Rect rect = geometry_.rowRect(view);
        rect.top = std::max(rect.top, geometry_.dataArea().top);
        part(rect);
    }
}

void Repaint::rowsFrom(RowIndex view) const {
    view = std::max(view, geometry_.firstRow());
    if (view > geometry_.firstRow() + geometry_.rowsOnAPage() + 1) return;
    const int top = std::max(geometry_.rowRect(view).top, geometry_.dataArea().top);
    part({0, top, geometry_.viewWidth(), geometry_.viewHeight()});
}

void Repaint::columnsFrom(int left) const {
    part({std::max(left, 0), geometry_.headingArea().top, geometry_.viewWidth(),
          geometry_.viewHeight()});
}

void Repaint::cells(int column) const {
    const Rect data = geometry_.dataArea();
    const Rect heading = geometry_.headingRect(column);
    part(intersection({heading.left, data.top, heading.right, data.bottom}, data));
}

void Repaint::scrolledRows(int down) const {
    if (window_ && down != 0) {
        const RECT rows{0, geometry_.dataArea().top, geometry_.viewWidth(), geometry_.viewHeight()};
        ::ScrollWindowEx(window_, 0, down, &rows, &rows, nullptr, nullptr, SW_INVALIDATE);
    }
}

void Repaint::scrolledColumns(int right) const {
    if (window_ && right != 0) {
        const RECT columns{geometry_.dataArea().left, geometry_.headingArea().top,
                           geometry_.viewWidth(), geometry_.viewHeight()};
        ::ScrollWindowEx(window_, right, 0, &columns, &columns, nullptr, nullptr, SW_INVALIDATE);
    }
}

void Repaint::now() const {
    if (window_) ::UpdateWindow(window_);
}

}  // namespace grid
