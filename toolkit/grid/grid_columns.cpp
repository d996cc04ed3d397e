// The grid's columns: their making, their places, their widths.
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/content_width.h"

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
    int count = source_ ? source_->columnCount() : 0;
    for (int index = 0; index < count; ++index) {
        columns_.push_back(std::make_unique<Column>(*this, index, source_->fieldName(index)));
    }
    geometry_.resetColumns(count, 0);
    groupColumns_.clear();
    columnsMoved();
}

// A column that the rows are grouped by has its heading in the group area instead.
bool Grid::shown(const Column& column) const {
    return column.visible() && groupLevelOf(column.index()) == kNoLevel;
}

void Grid::moveColumn(int column, int place) {
    if (geometry_.columns().place(column) != place) {
        geometry_.moveColumn(column, place);
        columnsMoved();
        invalidateAll();
    }
}

void Grid::columnsMoved() {
    placeGroupChips();
    placeColumns();
    hideTip();
    updateScrollBars();
}

// Gives every column its place and paints what lies elsewhere than before.
void Grid::placeColumns() {
    const ColumnLayout before = geometry_.columns();
    const int scrolledBefore = geometry_.scrollX();
    setColumnWidths();
    const ColumnLayout& after = geometry_.columns();
    if (geometry_.scrollX() != scrolledBefore) {
        invalidateAll();
        return;
    }
    int changed = geometry_.viewWidth();
    for (int column = 0; column < after.count(); ++column) {
        if (before.left(column) != after.left(column) ||
            before.right(column) != after.right(column)) {
            changed = std::min(changed, geometry_.headingRect(column).left);
        }
    }
    invalidate({std::max(changed, 0), geometry_.headingArea().top, geometry_.viewWidth(),
                geometry_.viewHeight()});
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
    if (groupLevelOf(column.index()) != kNoLevel) {
        placeGroupChips();
        invalidateRowsFrom(geometry_.firstRow());
        return;
    }
    invalidate(intersection(geometry_.headingRect(column.index()), geometry_.headingArea()));
}

void Grid::cellsChanged(const Column& column) {
    Rect cells = geometry_.headingRect(column.index());
    cells.top = geometry_.dataArea().top;
    cells.bottom = geometry_.viewHeight();
    invalidate(intersection(cells, geometry_.dataArea()));
    hideTip();
}

forms::Twips Grid::contentWidth(const Column& column) {
    const Padding padding = Padding::forDpi(dpi());
    ContentWidth content(fonts_.get(column.font()));
    content.addPixels(headingWidth(column));
    LineBreaks breaks = column.wrapText() ? LineBreaks::keep : LineBreaks::blank;
    const auto add = [&](RowIndex row) {
        cellText_.text.clear();
        source_->cellText(row, column.index(), cellText_.text);
        content.add(cellText_.text, breaks);
    };
    bool anyOnView = false;
    for (RowIndex view = geometry_.firstRow(); view < geometry_.endRow(); ++view) {
        const RowIndex row = grouping_.at(view).row;
        if (row != kNoRow) {
            add(row);
            anyOnView = true;
        }
    }
    if (!anyOnView) {
        // Where all groups are folded, some rows that will be seen when one is opened.
        for (RowIndex row = 0; row < std::min(geometry_.rowsOnAPage(), approxCount()); ++row) {
            add(row);
        }
    }
    int around = 2 * padding.side + padding.line;
    int largest = std::max(geometry_.dataArea().width(), headingWidth(column) + around);
    return forms::toTwips(forms::Pixels(content.bounded(around, 0, largest)), dpi());
}

// Caption and picture without the padding at both sides.
int Grid::headingWidth(const Column& column) {
    const Style& style = styles_.style(column.headingStyle());
    const Padding padding = Padding::forDpi(dpi());
    std::wstring shown;
    showable(column.caption(), LineBreaks::blank, column.caption().size(), shown);
    int width = fonts_.get(column.font(), style.bold).width(shown);
    bool picture = style.picture != HeadingPicture::none;
    return width + (picture ? padding.side + 2 * padding.picture - 1 : 0);
}

bool Grid::resizeAllowed(int column) {
    bool cancel = false;
    if (const auto procedure = onColResize) procedure(column, cancel);
    // The procedure may have set another source.
    return !cancel && column < columnCount();
}

}  // namespace grid
