#include "toolkit/grid/model/column_layout.h"

#include "toolkit/grid/model/shapes.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace grid {

void ColumnLayout::resize(int count, int width) {
    columns_.assign(index(std::max(count, 0)), Extent{std::max(width, 0), 0, true});
    order_.resize(columns_.size());
    std::iota(order_.begin(), order_.end(), 0);
    layOut();
}

void ColumnLayout::setWidth(int column, int width) {
    columns_[index(column)].width = std::max(width, 0);
    layOut();
}

void ColumnLayout::setVisible(int column, bool visible) {
    columns_[index(column)].visible = visible;
    layOut();
}

int ColumnLayout::right(int column) const {
    const Extent& extent = columns_[index(column)];
    return extent.left + (extent.visible ? extent.width : 0);
}

int ColumnLayout::at(int x) const {
    for (int column = 0; column < count(); ++column) {
        if (x >= left(column) && x < right(column)) return column;
    }
    return kNoColumn;
}

int ColumnLayout::borderAt(int x, int reach) const {
    int found = kNoColumn;
    int nearest = reach;
    for (int column : order_) {
        int distance = std::abs(x - right(column));
        if (visible(column) && distance <= nearest) {
            found = column;
            nearest = distance;
        }
    }
    return found;
}

void ColumnLayout::move(int column, int place) {
    order_.erase(order_.begin() + this->place(column));
    order_.insert(order_.begin() + place, column);
    layOut();
}

int ColumnLayout::place(int column) const {
    auto found = std::find(order_.begin(), order_.end(), column);
    return static_cast<int>(found - order_.begin());
}

int ColumnLayout::placeAt(int x) const {
    for (int place = 0; place < count(); ++place) {
        int column = columnAtPlace(place);
        if (visible(column) && x < (left(column) + right(column)) / 2) return place;
    }
    return count();
}

int ColumnLayout::visibleFrom(int place, int step) const {
    for (; place >= 0 && place < count(); place += step) {
        if (visible(columnAtPlace(place))) return columnAtPlace(place);
    }
    return kNoColumn;
}

void ColumnLayout::layOut() {
    totalWidth_ = 0;
    for (int column : order_) {
        Extent& extent = columns_[index(column)];
        extent.left = totalWidth_;
        totalWidth_ += extent.visible ? extent.width : 0;
    }
}

}  // namespace grid
