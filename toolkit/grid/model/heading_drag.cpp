#include "toolkit/grid/model/heading_drag.h"

#include <algorithm>
#include <cstdlib>

namespace grid {
namespace {

// What is held in the hand is as wide as a chip, at most so many times its height; the rest of a
// wide heading stays behind.
constexpr int kMaxGripWidth = 12;

Rect movedBy(const Rect& rect, int right, int down) {
    return {rect.left + right, rect.top + down, rect.right + right, rect.bottom + down};
}

}  // namespace

void HeadingDrag::take(Held what, int column, Point at) {
    held_ = what;
    column_ = column;
    start_ = at;
    at_ = at;
    inside_ = true;
    moved_ = false;
}

void HeadingDrag::takeHeading(int column, bool mayGroup, Point at) {
    take(Held::heading, column, at);
    mayGroup_ = mayGroup;
}

// From the width it has on the screen, which is more than its own when it fills the rest.
void HeadingDrag::takeBorder(int column, Point at) {
    take(Held::border, column, at);
    width_ = geometry_.columns().width(column);
}

HeadingDrag::Held HeadingDrag::letGo() {
    const Held was = held_;
    held_ = Held::nothing;
    return was;
}

Rect HeadingDrag::placeOf(int column) const {
    const int level = groups_.levelOf(column);
    return level == kNoLevel ? geometry_.headingRect(column) : geometry_.groupArea().chip(level);
}

void HeadingDrag::pull(Point to, Point slack) {
    at_ = to;
    if (held_ != Held::heading) return;
    const Rect place = placeOf(column_);
    inside_ = place.contains(to);
    if (std::abs(to.x - start_.x) > slack.x || std::abs(to.y - start_.y) > slack.y) {
        beginToCarry(place);
    }
}

void HeadingDrag::beginToCarry(const Rect& place) {
    const int height = geometry_.measures().headingHeight;
    const int width = std::min(place.width(), kMaxGripWidth * height);
    const int left = std::clamp(place.left, start_.x - width + 1, start_.x);
    grip_ = {left, place.top, left + width, place.top + height};
    held_ = Held::carried;
}

// Over the group area the heading goes among the groups, over the headings among the columns. A
// chip that is let go of anywhere else is pulled out of the groups all the same.
HeadingDrop HeadingDrag::dropAt(Point point) const {
    const Rect headings = geometry_.headingArea();
    if (mayGroup_ && geometry_.groupArea().strip().contains(point)) {
        return {HeadingDrop::To::groups, geometry_.groupArea().insertionAt(point.x)};
    }
    if (Rect{0, headings.top, headings.right, headings.bottom}.contains(point)) {
        return {HeadingDrop::To::columns, geometry_.columnPlaceAt(point.x)};
    }
    if (groups_.levelOf(column_) != kNoLevel) {
        return {HeadingDrop::To::columns, geometry_.columns().place(column_)};
    }
    return {};
}

std::optional<CarriedHeading> HeadingDrag::carried(int markThickness) const {
    if (held_ != Held::carried) return std::nullopt;
    return CarriedHeading{column_, movedBy(grip_, at_.x - start_.x, at_.y - start_.y),
                          dropMark(dropAt(at_), markThickness)};
}

Rect HeadingDrag::dropMark(const HeadingDrop& where, int thickness) const {
    if (where.to == HeadingDrop::To::nowhere) return {};
    if (where.to == HeadingDrop::To::groups) {
        return geometry_.groupArea().insertionMark(where.index, thickness);
    }
    const ColumnLayout& columns = geometry_.columns();
    const int left = where.index < columns.count()
                         ? columns.left(columns.columnAtPlace(where.index))
                         : columns.totalWidth();
    const int x = geometry_.measures().selectorWidth - geometry_.scrollX() + left;
    const Rect headings = geometry_.headingArea();
    return {x - thickness, headings.top, x + thickness, headings.bottom};
}

HeadingDrag::BorderStep HeadingDrag::pullBorder(Point to) {
    at_ = to;
    if (moved_) return BorderStep::next;
    moved_ = to.x != start_.x;
    return moved_ ? BorderStep::first : BorderStep::none;
}

int HeadingDrag::borderWidth(Point at) const { return std::max(width_ + at.x - start_.x, 0); }

}  // namespace grid
