// What the left mouse button holds: a heading that is pressed or carried to another place, or the
// border of one.
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"

#include <algorithm>
#include <cstdlib>

namespace grid {

void Grid::beginDrag(Drag drag, int column, Point point) {
    drag_ = drag;
    dragColumn_ = column;
    dragStart_ = point;
    // From the width it has on the screen, which is more than its own when it fills the rest.
    dragWidth_ = this->column(column).width();
    dragFrom_ = geometry_.columns().width(column);
    dragMoved_ = false;
    dragInside_ = true;
    ::SetCapture(hwnd());
    invalidateHeadingOrChip(column);
}

void Grid::dragBorder(Point point) {
    int distance = point.x - dragStart_.x;
    if (!dragMoved_) {
        if (distance == 0) return;
        dragMoved_ = true;
        if (!resizeAllowed(dragColumn_)) {
            endDrag(false);
            return;
        }
        if (drag_ != Drag::border) return;
    }
    forms::Pixels width(std::max(dragFrom_ + distance, 0));
    column(dragColumn_).setWidth(forms::toTwips(width, dpi()));
    ::UpdateWindow(hwnd());
}

// A heading that is pulled further than a hand trembles is carried from then on.
void Grid::dragHeading(Point point) {
    const auto before = carriedHeading();
    dragPoint_ = point;
    if (drag_ == Drag::heading) {
        const int level = groupLevelOf(dragColumn_);
        const Rect place = level == kNoLevel ? geometry_.headingRect(dragColumn_)
                                             : geometry_.groupArea().chip(level);
        dragInside_ = place.contains(point);
        invalidateHeadingOrChip(dragColumn_);
        if (std::abs(point.x - dragStart_.x) <= ::GetSystemMetrics(SM_CXDRAG) &&
            std::abs(point.y - dragStart_.y) <= ::GetSystemMetrics(SM_CYDRAG)) {
            return;
        }
        drag_ = Drag::carried;
        dragGrip_ = place;
        // What is held in the hand is as wide as a chip; the rest of a wide heading stays behind.
        const int width = std::min(place.width(), 12 * geometry_.measures().headingHeight);
        dragGrip_.left = std::clamp(place.left, dragStart_.x - width + 1, dragStart_.x);
        dragGrip_.right = dragGrip_.left + width;
        dragGrip_.bottom = dragGrip_.top + geometry_.measures().headingHeight;
    }
    ::SetCursor(::LoadCursorW(nullptr, dropAt(point).to == Drop::To::nowhere ? IDC_NO : IDC_ARROW));
    invalidateCarried(before);
    invalidateCarried(carriedHeading());
}

// Over the group area the heading goes among the groups, over the headings among the columns. A
// chip that is let go of anywhere else is pulled out of the groups all the same.
Grid::Drop Grid::dropAt(Point point) const {
    const Rect groups = geometry_.groupArea().strip();
    const Rect headings = geometry_.headingArea();
    const bool allowed = columns_[static_cast<std::size_t>(dragColumn_)]->allowGrouping();
    if (allowed && groups.contains(point)) {
        return {Drop::To::groups, geometry_.groupArea().insertionAt(point.x)};
    }
    if (point.y >= headings.top && point.y < headings.bottom && point.x >= 0 &&
        point.x < headings.right) {
        return {Drop::To::columns, geometry_.columnPlaceAt(point.x)};
    }
    if (groupLevelOf(dragColumn_) != kNoLevel) {
        return {Drop::To::columns, geometry_.columns().place(dragColumn_)};
    }
    return {};
}

void Grid::drop(int column, const Drop& where) {
    const int oldLevel = groupLevelOf(column);
    std::vector<GroupColumn> groups = groupColumns_;
    GroupColumn moved{column, false};
    if (oldLevel != kNoLevel) {
        moved = groups[static_cast<std::size_t>(oldLevel)];
        groups.erase(groups.begin() + oldLevel);
    }
    // Places and levels were counted with the heading at its old one.
    if (where.to == Drop::To::groups) {
        const bool fromBefore = oldLevel != kNoLevel && oldLevel < where.index;
        groups.insert(groups.begin() + where.index - (fromBefore ? 1 : 0), moved);
    } else if (where.to == Drop::To::columns) {
        const int oldPlace = geometry_.columns().place(column);
        moveColumn(column, where.index - (oldPlace < where.index ? 1 : 0));
    } else {
        return;
    }
    if (groups != groupColumns_) setGroupColumns(std::move(groups));
}

void Grid::endDrag(bool keepWidth) {
    if (drag_ == Drag::none) return;
    bool restore = drag_ == Drag::border && dragMoved_ && !keepWidth;
    invalidateCarried(carriedHeading());
    drag_ = Drag::none;
    if (dragColumn_ < columnCount()) {
        if (restore) column(dragColumn_).setWidth(dragWidth_);
        invalidateHeadingOrChip(dragColumn_);
    }
    if (isCreated() && ::GetCapture() == hwnd()) ::ReleaseCapture();
}

std::optional<CarriedHeading> Grid::carriedHeading() const {
    if (drag_ != Drag::carried) return std::nullopt;
    CarriedHeading carried;
    carried.column = dragColumn_;
    const int right = dragPoint_.x - dragStart_.x;
    const int down = dragPoint_.y - dragStart_.y;
    carried.rect = {dragGrip_.left + right, dragGrip_.top + down, dragGrip_.right + right,
                    dragGrip_.bottom + down};
    const Drop where = dropAt(dragPoint_);
    const int thickness = 2 * Padding::forDpi(dpi()).line;
    if (where.to == Drop::To::groups) {
        carried.mark = geometry_.groupArea().insertionMark(where.index, thickness);
    } else if (where.to == Drop::To::columns) {
        const ColumnLayout& columns = geometry_.columns();
        const int x =
            geometry_.measures().selectorWidth - geometry_.scrollX() +
            (where.index < columns.count() ? columns.left(columns.columnAtPlace(where.index))
                                           : columns.totalWidth());
        const Rect headings = geometry_.headingArea();
        carried.mark = {x - thickness, headings.top, x + thickness, headings.bottom};
    }
    return carried;
}

void Grid::invalidateCarried(const std::optional<CarriedHeading>& carried) {
    if (carried) {
        invalidate(carried->rect);
        invalidate(carried->mark);
    }
}

void Grid::invalidateHeadingOrChip(int column) {
    const int level = groupLevelOf(column);
    if (level != kNoLevel) {
        invalidate(geometry_.groupArea().chip(level));
    } else {
        invalidate(intersection(geometry_.headingRect(column), geometry_.headingArea()));
    }
}

}  // namespace grid
