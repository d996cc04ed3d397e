#include "toolkit/grid/model/geometry.h"

#include <algorithm>
#include <utility>

namespace grid {

void Geometry::setView(int width, int height) {
    viewWidth_ = std::max(width, 0);
    viewHeight_ = std::max(height, 0);
    layOutGroupArea();
    clamp();
}

void Geometry::setMeasures(const Measures& measures) {
    RowIndex top = firstRow();
    RowIndex offset = scrollY_ % measures_.rowHeight;
    RowIndex oldHeight = measures_.rowHeight;
    measures_ = measures;
    measures_.rowHeight = std::max(measures_.rowHeight, 1);
    scrollY_ = top * measures_.rowHeight + offset * measures_.rowHeight / oldHeight;
    layOutGroupArea();
    clamp();
}

void Geometry::setGroupChips(std::vector<int> widths) {
    chipWidths_ = std::move(widths);
    layOutGroupArea();
}

void Geometry::layOutGroupArea() {
    groupArea_.layOut({0, 0, viewWidth_, std::min(headingTop(), viewHeight_)}, chipWidths_,
                      measures_.groupAreaGap);
}

void Geometry::setRowCount(RowIndex count) {
    // Beyond this the position in pixels would not fit in 64 bits.
    constexpr RowIndex kMaxRows = RowIndex{1} << 46;
    rowCount_ = std::clamp<RowIndex>(count, 0, kMaxRows);
    clamp();
}

void Geometry::setColumnWidth(int column, int width) {
    columns_.setWidth(column, width);
    clamp();
}

void Geometry::setColumnVisible(int column, bool visible) {
    columns_.setVisible(column, visible);
    clamp();
}

void Geometry::resetColumns(int count, int width) {
    columns_.resize(count, width);
    clamp();
}

Rect Geometry::dataArea() const {
    return {std::min(measures_.selectorWidth, viewWidth_), std::min(dataTop(), viewHeight_),
            viewWidth_, viewHeight_};
}

Rect Geometry::headingArea() const {
    return {std::min(measures_.selectorWidth, viewWidth_), std::min(headingTop(), viewHeight_),
            viewWidth_, std::min(dataTop(), viewHeight_)};
}

int Geometry::dataHeight() const { return dataArea().height(); }
int Geometry::dataWidth() const { return dataArea().width(); }

RowIndex Geometry::firstRow() const { return scrollY_ / measures_.rowHeight; }

RowIndex Geometry::endRow() const {
    RowIndex height = measures_.rowHeight;
    RowIndex end = (scrollY_ + dataHeight() + height - 1) / height;
    return std::clamp<RowIndex>(end, 0, rowCount_);
}

RowIndex Geometry::rowsOnAPage() const {
    return std::max<RowIndex>(dataHeight() / measures_.rowHeight, 1);
}

bool Geometry::fullyVisible(RowIndex row) const {
    RowIndex top = row * measures_.rowHeight;
    return top >= scrollY_ && top + measures_.rowHeight <= scrollY_ + dataHeight();
}

Rect Geometry::cellRect(Cell cell) const {
    Rect row = rowRect(cell.row);
    Rect column = headingRect(cell.column);
    return {column.left, row.top, column.right, row.bottom};
}

Rect Geometry::rowRect(RowIndex row) const {
    int top = dataTop() + static_cast<int>(row * measures_.rowHeight - scrollY_);
    return {0, top, viewWidth_, top + measures_.rowHeight};
}

Rect Geometry::headingRect(int column) const {
    int origin = measures_.selectorWidth - scrollX_;
    return {origin + columns_.left(column), headingTop(), origin + columns_.right(column),
            dataTop()};
}

Rect Geometry::selectorRect(RowIndex row) const {
    Rect rect = rowRect(row);
    rect.right = measures_.selectorWidth;
    return rect;
}

Hit Geometry::hitTest(Point point) const {
    if (point.x < 0 || point.y < 0 || point.x >= viewWidth_ || point.y >= viewHeight_) return {};
    if (point.y < headingTop()) {
        const int level = groupArea_.levelAt(point);
        return {level == kNoLevel ? Area::groupArea : Area::groupChip, {}, level};
    }
    int x = point.x - measures_.selectorWidth + scrollX_;
    bool inSelectors = point.x < measures_.selectorWidth;
    if (point.y < dataTop()) {
        // A border scrolled under the corner is out of reach, one just at the corner is not.
        int border = columns_.borderAt(x, measures_.borderReach);
        if (border != kNoColumn && x >= scrollX_ - (inSelectors ? measures_.borderReach : 0)) {
            return {Area::headingBorder, {kNoRow, border}};
        }
        if (inSelectors) return {Area::corner, {}};
        int column = columns_.at(x);
        return column == kNoColumn ? Hit{} : Hit{Area::heading, {kNoRow, column}};
    }
    RowIndex row = (scrollY_ + point.y - dataTop()) / measures_.rowHeight;
    if (row >= rowCount_) return {};
    if (inSelectors) return {Area::selector, {row, kNoColumn}};
    int column = columns_.at(x);
    return column == kNoColumn ? Hit{} : Hit{Area::cell, {row, column}};
}

int Geometry::columnPlaceAt(int x) const {
    return columns_.placeAt(x - measures_.selectorWidth + scrollX_);
}

RowIndex Geometry::maximumScrollY() const {
    // The top row at the end is a whole one, so that stepping back stays aligned.
    return verticalRange().lastTop() * measures_.rowHeight;
}

int Geometry::maximumScrollX() const { return std::max(columns_.totalWidth() - dataWidth(), 0); }

bool Geometry::scrollToY(RowIndex pixels) {
    RowIndex before = scrollY_;
    scrollY_ = std::clamp<RowIndex>(pixels, 0, maximumScrollY());
    return scrollY_ != before;
}

bool Geometry::scrollToX(int pixels) {
    int before = scrollX_;
    scrollX_ = std::clamp(pixels, 0, maximumScrollX());
    return scrollX_ != before;
}

bool Geometry::scrollToRow(RowIndex topRow) {
    topRow = std::clamp<RowIndex>(topRow, 0, rowCount_);
    return scrollToY(topRow * measures_.rowHeight);
}

bool Geometry::scrollRowIntoView(RowIndex row) {
    if (row < 0 || row >= rowCount_ || fullyVisible(row)) return false;
    bool above = row * measures_.rowHeight < scrollY_;
    return scrollToRow(above ? row : row - rowsOnAPage() + 1);
}

bool Geometry::scrollColumnIntoView(int column) {
    if (column < 0 || column >= columns_.count() || !columns_.visible(column)) return false;
    int left = columns_.left(column);
    int right = columns_.right(column);
    if (left < scrollX_ || right - left >= dataWidth()) {
        // Of a column wider than the view its beginning is what one wants to read.
        bool someShows = right > scrollX_ && left < scrollX_ + dataWidth();
        bool tooWide = right - left >= dataWidth();
        return tooWide && someShows ? false : scrollToX(left);
    }
    return right > scrollX_ + dataWidth() ? scrollToX(right - dataWidth()) : false;
}

void Geometry::clamp() {
    scrollToY(scrollY_);
    scrollToX(scrollX_);
}

}  // namespace grid
