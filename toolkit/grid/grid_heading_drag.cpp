// What follows in the window when a heading or its border is dragged (model/heading_drag.h).
#include "toolkit/grid/grid.h"

#include <utility>

namespace grid {

void Grid::takeHeading(int column, Point point) {
    drag_.takeHeading(column, this->column(column).allowGrouping(), point);
    ::SetCapture(hwnd());
    repaintHeading(column);
}

void Grid::takeBorder(int column, Point point) {
    drag_.takeBorder(column, point);
    widthBeforeDrag_ = this->column(column).width();
    ::SetCapture(hwnd());
    repaintHeading(column);
}

void Grid::dragBorder(Point point) {
    const HeadingDrag::BorderStep step = drag_.pullBorder(point);
    if (step == HeadingDrag::BorderStep::none) return;
    if (step == HeadingDrag::BorderStep::first && !resizeAllowed(drag_.column())) endDrag(false);
    // Whoever was asked may have ended it, too.
    if (drag_.held() != HeadingDrag::Held::border) return;
    const forms::Pixels width(drag_.borderWidth(point));
    column(drag_.column()).setWidth(forms::toTwips(width, dpi()));
    repaint_.now();
}

void Grid::dragHeading(Point point) {
    const auto before = carriedHeading();
    if (!before) repaintHeading(drag_.column());
    drag_.pull(point, {::GetSystemMetrics(SM_CXDRAG), ::GetSystemMetrics(SM_CYDRAG)});
    if (drag_.held() != HeadingDrag::Held::carried) return;
    const bool nowhere = drag_.dropAt(point).to == HeadingDrop::To::nowhere;
    ::SetCursor(::LoadCursorW(nullptr, nowhere ? IDC_NO : IDC_ARROW));
    repaintCarried(before);
    repaintCarried(carriedHeading());
}

void Grid::drop(int column, const HeadingDrop& where) {
    if (where.to == HeadingDrop::To::nowhere) return;
    const bool grouped = where.to == HeadingDrop::To::groups;
    auto groups = grouped ? groups_.with(column, where.index) : groups_.without(column);
    if (!grouped) {
        const int oldPlace = geometry_.columns().place(column);
        moveColumn(column, where.index - (oldPlace < where.index ? 1 : 0));
    }
    if (groups != groupColumns()) setGroupColumns(std::move(groups));
}

// A heading that was pressed and let go of without being carried: a click, if that was over it.
void Grid::headingReleased(int column, Point point) {
    const int level = groups_.levelOf(column);
    if (level != kNoLevel) {
        if (hitTest(point).level == level) setGroupColumns(groups_.reversed(level));
    } else if (headingAt(point) == column) {
        if (const auto procedure = onHeadClick) procedure(column);
    }
}

void Grid::endDrag(bool keepWidth) {
    if (!drag_.active()) return;
    repaintCarried(carriedHeading());
    const bool restore = drag_.borderMoved() && !keepWidth;
    drag_.letGo();
    if (drag_.column() < columnCount()) {
        if (restore) column(drag_.column()).setWidth(widthBeforeDrag_);
        repaintHeading(drag_.column());
    }
    if (isCreated() && ::GetCapture() == hwnd()) ::ReleaseCapture();
}

std::optional<CarriedHeading> Grid::carriedHeading() const {
    return drag_.carried(2 * Padding::forDpi(dpi()).line);
}

void Grid::repaintCarried(const std::optional<CarriedHeading>& carried) const {
    if (carried) {
        repaint_.part(carried->rect);
        repaint_.part(carried->mark);
    }
}

void Grid::repaintHeading(int column) const {
    const int level = groups_.levelOf(column);
    if (level != kNoLevel) {
        repaint_.part(geometry_.groupArea().chip(level));
    } else {
        repaint_.heading(column);
    }
}

}  // namespace grid
