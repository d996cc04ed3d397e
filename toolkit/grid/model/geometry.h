// Layout, scrolling and hit testing: group area, headings, record selectors and cells.
//
//   geometry.setView(client.cx, client.cy);
//   for (RowIndex row = geometry.firstRow(); row < geometry.endRow(); ++row) draw(row);
//   Hit hit = geometry.hitTest(mouse);
//
// One thread at a time. All distances are device pixels. The vertical scroll position is a 64-bit
// pixel distance, so that a high-resolution wheel scrolls smoothly at any row count.
#pragma once

#include "toolkit/grid/model/column_layout.h"
#include "toolkit/grid/model/group_area.h"
#include "toolkit/grid/model/scroll_range.h"
#include "toolkit/grid/model/shapes.h"

#include <vector>

namespace grid {

/// The fixed measures, which follow font and DPI.
struct Measures {
    int headingHeight = 0;
    int selectorWidth = 0;    ///< The column of record selectors at the left; 0 for none.
    int rowHeight = 1;        ///< At least 1.
    int borderReach = 4;      ///< How far from a heading's border the mouse can drag it.
    int groupAreaHeight = 0;  ///< The strip above the headings; 0 for none.
    int groupAreaGap = 0;     ///< Around the chips in it.

    friend bool operator==(const Measures&, const Measures&) = default;
};

enum class Area {
    groupArea,      // The strip above the headings, beside its chips.
    groupChip,      // level
    nowhere,        // Beside the columns or below the last row.
    corner,         // Where the headings meet the record selectors.
    heading,        // column
    headingBorder,  // column: the one whose width the border changes
    selector,       // row
    cell            // row and column
};

struct Hit {
    Area area = Area::nowhere;
    Cell cell;
    int level = kNoLevel;
};

class Geometry {
public:
    /// Setters keep the top row where they can and clamp the scroll position.
    void setView(int width, int height);
    void setMeasures(const Measures& measures);
    void setRowCount(RowIndex count);
    void setColumnWidth(int column, int width);
    void setColumnVisible(int column, bool visible);
    void resetColumns(int count, int width);
    void moveColumn(int column, int place) { columns_.move(column, place); }
    /// Widths of the chips in the group area, one for each level.
    void setGroupChips(std::vector<int> widths);

    const Measures& measures() const { return measures_; }
    const ColumnLayout& columns() const { return columns_; }
    const GroupArea& groupArea() const { return groupArea_; }
    RowIndex rowCount() const { return rowCount_; }
    int viewWidth() const { return viewWidth_; }
    int viewHeight() const { return viewHeight_; }

    /// The area that the cells scroll in.
    Rect dataArea() const;
    /// The strip of the headings, right of the corner.
    Rect headingArea() const;

    /// The rows that show at least one pixel are firstRow() to endRow(), the latter excluded.
    RowIndex firstRow() const;
    RowIndex endRow() const;
    /// Rows that fit completely, at least 1.
    RowIndex rowsOnAPage() const;
    bool fullyVisible(RowIndex row) const;

    /// May lie outside the view, and under the headings where a row or column is cut off.
    /// Requires for rows: a row within a few pages of the view.
    Rect cellRect(Cell cell) const;
    Rect rowRect(RowIndex row) const;  ///< From the selector to the view's right edge.
    Rect headingRect(int column) const;
    Rect selectorRect(RowIndex row) const;

    Hit hitTest(Point point) const;
    /// The place among the columns for a heading dropped at `x`.
    int columnPlaceAt(int x) const;

    RowIndex scrollY() const { return scrollY_; }
    int scrollX() const { return scrollX_; }
    RowIndex maximumScrollY() const;
    int maximumScrollX() const;

    /// Each returns whether the position changed; positions are clamped.
    bool scrollToY(RowIndex pixels);
    bool scrollToX(int pixels);
    bool scrollToRow(RowIndex topRow);
    bool scrollRowIntoView(RowIndex row);
    bool scrollColumnIntoView(int column);

    ScrollRange verticalRange() const { return {rowCount_, rowsOnAPage()}; }

private:
    void clamp();
    void layOutGroupArea();
    int headingTop() const { return measures_.groupAreaHeight; }
    int dataTop() const { return measures_.groupAreaHeight + measures_.headingHeight; }
    int dataHeight() const;
    int dataWidth() const;

    ColumnLayout columns_;
    GroupArea groupArea_;
    std::vector<int> chipWidths_;
    Measures measures_;
    RowIndex rowCount_ = 0;
    RowIndex scrollY_ = 0;  // 0 <= scrollY_ <= maximumScrollY()
    int scrollX_ = 0;       // 0 <= scrollX_ <= maximumScrollX()
    int viewWidth_ = 0;
    int viewHeight_ = 0;
};

}  // namespace grid
