#include "toolkit/grid/model/column_layout.h"

#include "toolkit/grid/model/shapes.h"

#include <algorithm>
#include <cstdlib>

namespace grid {

void ColumnLayout::resize(int count, int width) {
    columns_.assign(index(std::max(count, 0)), Place{std::max(width, 0), 0, true});
    place();
}

void ColumnLayout::setWidth(int column, int width) {
    columns_[index(column)].width = std::max(width, 0);
    place();
}

void ColumnLayout::setVisible(int column, bool visible) {
    columns_[index(column)].visible = visible;
    place();
}

int ColumnLayout::right(int column) const {
    const Place& place = columns_[index(column)];
    return place.left + (place.visible ? place.width : 0);
}

int ColumnLayout::at(int x) const {
    for (int column = 0; column < count(); ++column) {
        if (x >= left(column) && x < right(column)) {
            return column;
        }
    }
    return kNoColumn;
}

int ColumnLayout::borderAt(int x, int reach) const {
    int found = kNoColumn;
    int nearest = reach;
    for (int column = 0; column < count(); ++column) {
        int distance = std::abs(x - right(column));
        if (visible(column) && distance <= nearest) {
            found = column;
            nearest = distance;
        }
    }
    return found;
}

int ColumnLayout::next(int from, int step) const {
    for (int column = from + step; column >= 0 && column < count(); column += step) {
        if (visible(column)) {
            return column;
        }
    }
    return kNoColumn;
}

void ColumnLayout::place() {
    totalWidth_ = 0;
    for (Place& place : columns_) {
        place.left = totalWidth_;
        totalWidth_ += place.visible ? place.width : 0;
    }
}

}  // namespace grid
