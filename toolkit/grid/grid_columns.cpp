// The grid's columns: their making, their places, their widths.
#include "toolkit/grid/cell_measures.h"
#include "toolkit/grid/grid.h"

#include <algorithm>
#include <stdexcept>

namespace grid {

Column& Grid::column(int index) { return *columns_.at(static_cast<std::size_t>(index)); }

Column& Grid::column(const std::wstring& dataField) {
    int index = columnIndex(dataField);
    if (index == kNoColumn) throw std::out_of_range("The grid has no such column");
    return column(index);
}

int Grid::columnIndex(const std::wstring& dataField) const {
    auto found = std::find_if(columns_.begin(), columns_.end(),
                              [&](const auto& c) { return c->dataField() == dataField; });
    return found == columns_.end() ? kNoColumn : (*found)->index();
}

void Grid::makeColumns() {
    columns_.clear();
    const DataSource* source = cursor_.source();
    const int count = source ? source->columnCount() : 0;
    for (int index = 0; index < count; ++index) {
        columns_.push_back(std::make_unique<Column>(*this, index, source->fieldName(index)));
    }
    geometry_.resetColumns(count, 0);
    groups_.clear();
    columnsMoved();
}

// A column that the rows are grouped by has its heading in the group area instead.
bool Grid::shown(const Column& column) const {
    return column.visible() && groups_.levelOf(column.index()) == kNoLevel;
}

void Grid::moveColumn(int column, int place) {
    if (geometry_.columns().place(column) != place) {
        geometry_.moveColumn(column, place);
        columnsMoved();
        repaint_.all();
    }
}

void Grid::columnsMoved() {
    placeGroupChips();
    placeColumns();
    tip_.hide();
    bars_.update();
}

// Gives every column its place and paints what lies elsewhere than before.
void Grid::placeColumns() {
    const ColumnLayout before = geometry_.columns();
    const int scrolledBefore = geometry_.scrollX();
    setColumnWidths();
    const ColumnLayout& after = geometry_.columns();
    if (geometry_.scrollX() != scrolledBefore) {
        repaint_.all();
        return;
    }
    int changed = geometry_.viewWidth();
    for (int column = 0; column < after.count(); ++column) {
        if (before.left(column) != after.left(column) ||
            before.right(column) != after.right(column)) {
            changed = std::min(changed, geometry_.headingRect(column).left);
        }
    }
    repaint_.columnsFrom(changed);
}

// The column that fills the rest gets what the others leave.
void Grid::setColumnWidths() {
    int taken = 0;
    int filling = kNoColumn;
    for (const auto& column : columns_) {
        int width = forms::toPixels(column->width(), dpi()).value;
        geometry_.setColumnVisible(column->index(), shown(*column));
        geometry_.setColumnWidth(column->index(), width);
        taken += shown(*column) ? width : 0;
        if (shown(*column) && column->fillsRest()) filling = column->index();
    }
    int rest = geometry_.dataArea().width() - taken;
    if (filling != kNoColumn && rest > 0) {
        geometry_.setColumnWidth(filling, geometry_.columns().width(filling) + rest);
    }
}

void Grid::headingChanged(const Column& column) {
    if (groups_.levelOf(column.index()) != kNoLevel) {
        placeGroupChips();
        repaint_.rowsFrom(geometry_.firstRow());
        return;
    }
    repaint_.heading(column.index());
}

void Grid::cellsChanged(const Column& column) {
    repaint_.cells(column.index());
    tip_.hide();
}

forms::Twips Grid::contentWidth(const Column& column) {
    return forms::toTwips(forms::Pixels(grid::contentWidth(scene(), column)), dpi());
}

bool Grid::resizeAllowed(int column) {
    bool cancel = false;
    if (const auto procedure = onColResize) procedure(column, cancel);
    // The procedure may have set another source.
    return !cancel && column < columnCount();
}

}  // namespace grid
