// Grid: a control that shows the rows of a data source in columns.
//
//   tdbgridData.setDataSource(&source);
//   tdbgridData.column(L"Trace").setWrapText(true);
//   tdbgridData.onHeadClick = [this](int column) { sortBy(column); };
//
// The grid is virtual: it asks the source for the cells on view and for nothing else, so that a
// paint costs the same for ten rows and for ten million. The source's current row is the grid's;
// whoever moves it tells the grid, as described at the notifications below.
//
// The user can group the rows by columns, by dragging their headings to a strip above. The source
// knows nothing of it: the grid then shows other rows below each other than the source has, called
// view rows here, among them one for every group.
//
// The user-interface thread. Lengths are twips unless they say pixels; rows and columns are
// counted from 0.
#pragma once

#include "toolkit/forms/control.h"
#include "toolkit/grid/back_buffer.h"
#include "toolkit/grid/cell_text.h"
#include "toolkit/grid/cell_tip.h"
#include "toolkit/grid/column.h"
#include "toolkit/grid/heading_theme.h"
#include "toolkit/grid/model/data_source.h"
#include "toolkit/grid/model/geometry.h"
#include "toolkit/grid/model/grouping.h"
#include "toolkit/grid/model/navigation.h"
#include "toolkit/grid/model/selection.h"
#include "toolkit/grid/model/wheel.h"
#include "toolkit/grid/painter.h"
#include "toolkit/grid/style.h"
#include "toolkit/grid/text_font.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace grid {

struct GridLink;

class Grid : public forms::Control {
public:
    Grid() = default;
    ~Grid() override;

    /// Shows another source, or none, from its first row: one column for every field, as a new
    /// grid has them. Raises onRowColChange. The source must outlive its being set.
    void setDataSource(DataSource* source);
    DataSource* dataSource() const { return source_; }

    // Notifications from the source's owner.

    /// There are more rows than before, or fewer. Cheap, may be called for every row that arrives:
    /// nothing is painted but rows that come into view, and the scroll position stays.
    void rowCountChanged();
    /// The source moved its current row by itself, as a search does: it is scrolled into view.
    void currentRowChanged();
    /// Any row may have another content or place, as after a sort. The current row is scrolled
    /// into view if it has another number now. Raises onRowColChange in any case, since the record
    /// at the current row may be another one.
    void dataChanged();
    /// The source has other columns: as if it were set anew.
    void reset() { setDataSource(source_); }

    /// Columns.
    int columnCount() const { return static_cast<int>(columns_.size()); }
    /// Both throw std::out_of_range. A reference is good until another source is set.
    Column& column(int index);
    Column& column(const std::wstring& dataField);
    /// -1 when there is no such field.
    int columnIndex(const std::wstring& dataField) const;
    /// Columns by the places they stand at, hidden ones included; the user moves them by dragging.
    int columnAtPlace(int place) const { return geometry_.columns().columnAtPlace(place); }
    void moveColumn(int column, int place);

    // Grouping.

    /// The text in the strip above the headings while nothing is grouped; without a text there is no
    /// strip, and the user cannot group.
    const std::wstring& groupByCaption() const { return groupByCaption_; }
    void setGroupByCaption(const std::wstring& caption);
    /// The columns that the rows are grouped by, from the outermost in; their headings stand in the
    /// strip. All groups are folded at first. Throws std::out_of_range for a wrong column.
    const std::vector<GroupColumn>& groupColumns() const { return groupColumns_; }
    void setGroupColumns(std::vector<GroupColumn> columns);
    const Grouping& grouping() const { return grouping_; }
    void setGroupUnfolded(int group, bool unfolded);
    void setAllGroupsUnfolded(bool unfolded);
    /// What a group's row says: heading, value and number of rows.
    std::wstring groupText(int group) const;

    // The height of a row; by default that of one line of the grid's font.
    forms::Twips rowHeight() const;
    void setRowHeight(forms::Twips height);

    /// How many rows the source has at this moment.
    std::int64_t approxCount() const { return source_ ? source_->rowCount() : 0; }

    /// The current cell: the source's current row and a column of the grid, -1 for none.
    std::int64_t row() const { return sourceRow_; }
    int col() const { return selection_.current().column; }
    void setCol(int column);

    /// Goes to a view row and a column as the user does; outside the view's rows it does nothing.
    void setCurrentCell(std::int64_t viewRow, int column);

    /// Which view rows are selected, and which view row has the focus: the current row's, or that of
    /// a group.
    const Selection& selection() const { return selection_; }
    /// The selected rows as text, tabs between the columns on view, CR LF at the end of each; the
    /// text of the current cell if no whole row is selected. A field with a tab, a line break or a
    /// quote stands in quotes, doubled within, as spreadsheets read it.
    std::wstring selectedText() const;

    /// The view row at the upper edge. Setting it scrolls as far as there are rows.
    std::int64_t firstRow() const { return geometry_.firstRow(); }
    void setFirstRow(std::int64_t row);

    /// The strip at the left with the marker of the current row.
    bool recordSelectors() const { return recordSelectors_; }
    void setRecordSelectors(bool show);

    /// Whether a cell whose text is cut off shows all of it while the mouse rests on it.
    bool cellTips() const { return cellTipsOn_; }
    void setCellTips(bool on);

    const Style& style(const std::wstring& name) const { return styles_.style(name); }
    void setStyle(const std::wstring& name, const Style& style);

    // Events. A handler may do anything to the grid, also set another source.

    /// A heading was clicked.
    std::function<void(int column)> onHeadClick;
    /// The user begins to drag the border of a heading, or double clicks it for the width of the
    /// content. With `cancel` set the column keeps its width.
    std::function<void(int column, bool& cancel)> onColResize;
    /// The current cell moved, whoever moved it.
    std::function<void()> onRowColChange;
    /// A tip is about to be shown for a cell whose text is cut off. `tip` is the cell's text and
    /// may be changed; an empty one shows nothing; `wrap` lets it take several lines. For a
    /// heading that is cut off the row is -1 and the tip is empty.
    std::function<void(int column, std::int64_t row, std::wstring& tip, bool& wrap)>
        onFetchCellTips;
    /// The view was scrolled, vertically or horizontally.
    std::function<void()> onScroll;

    /// What is painted, for tests and tools: how many cells in all since the window was made, and
    /// how many rows were on view at the last paint.
    std::int64_t paintedCells() const { return paintedCells_; }
    std::int64_t paintedRows() const { return paintedRows_; }
    /// In device pixels, for tests and tools.
    const Geometry& geometry() const { return geometry_; }
    const CellTip& cellTip() const { return tip_; }

protected:
    Kind kind() const override;
    void created() override;
    void fontChanged() override;
    void dpiChanged() override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    forms::AccessibleObject* makeAccessible() override;

private:
    friend class Column;

    // What the left mouse button holds: a heading or a chip, a heading or a chip on its way to
    // another place, a border.
    enum class Drag { none, heading, carried, border };

    // What happens to the selected rows when another cell becomes current.
    enum class Selecting { one, range, wholeRow };

    // Where a carried heading would go.
    struct Drop {
        enum class To { nowhere, columns, groups } to = To::nowhere;
        int index = 0;  // A place among the columns, or a level.
    };

    // Columns (grid_columns.cpp).
    void makeColumns();
    void columnsMoved();
    void placeColumns();
    void setColumnWidths();
    void headingChanged(const Column& column);
    void cellsChanged(const Column& column);
    forms::Twips contentWidth(const Column& column);
    int headingWidth(const Column& column);
    bool resizeAllowed(int column);
    bool shown(const Column& column) const;

    // Data and current cell (grid_data.cpp).
    void takeRowCount();
    RowIndex currentOfSource() const;
    void moveSource(RowIndex row);
    void moveCurrent(Cell cell, Selecting how = Selecting::one);
    void followSource(bool intoView, bool always);
    void select(const Selection& next);
    void raiseRowColChange();
    void invalidateRow(RowIndex row);
    void invalidateRowsFrom(RowIndex row);

    // Groups (grid_groups.cpp).
    void regroup();
    Grouping madeGrouping() const;
    void takeView();
    void regroupSoon();
    void restoreFolding();
    void viewRowsChanged();
    std::vector<std::wstring> groupPath(int group) const;
    void markUnfolded(int group, bool unfolded);
    void reveal(RowIndex row);
    void placeGroupChips();
    int groupLevelOf(int column) const;
    void reverseGroup(int level);
    int focusedGroup() const;
    bool onGroupKey(int key);
    bool onGroupClick(RowIndex view, Point point, bool doubleClick);

    // Screen readers (grid_accessible.cpp).
    void reportFocus() const;
    void reportGroup(int group) const;
    void reportRows() const;

    // Copying (grid_copy.cpp).
    void copy();
    bool appendSelectedText(std::wstring& text, const std::function<bool()>& goesOn) const;
    void appendRowText(RowIndex view, std::wstring& text) const;

    // Scrolling (grid_scroll.cpp).
    void scroll(const std::function<void(Geometry&)>& change);
    void moveRows(int down);
    void moveColumns(int right);
    int trackPosition(int bar) const;
    void moveView(RowIndex oldY, int oldX);
    void updateScrollBars();
    void updateScrollBarsSoon();
    void setBar(int bar, int maximum, int page, int position) const;
    void setVerticalBar();
    void setHorizontalBar();
    void onVScroll(int code);
    void onHScroll(int code);
    void onWheel(int delta, bool sideways);
    void onTimer(UINT_PTR timer);
    int horizontalStep() const;

    // Keyboard and mouse (grid_input.cpp).
    void onKeyDown(int key);
    void onChar(wchar_t character);
    LRESULT onGetDialogCode(const MSG* message) const;
    void onLeftDown(Point point);
    void onMouseMoved(Point point);
    void onLeftUp(Point point);
    void onLeftDouble(Point point);
    void onMouseLeave();
    void onMouseHover(Point point);
    bool onSetCursor(int hitCode) const;
    Hit hitTest(Point point) const;
    int headingAt(Point point) const;
    void selectAll();
    void setHotColumn(int column);
    void watchMouse() const;
    void showTip(Cell cell);
    bool textCutOff(Cell cell);
    void hideTip();

    // Dragging (grid_drag.cpp).
    void beginDrag(Drag drag, int column, Point point);
    void dragBorder(Point point);
    void dragHeading(Point point);
    void endDrag(bool keepWidth);
    Drop dropAt(Point point) const;
    void drop(int column, const Drop& where);
    void invalidateHeadingOrChip(int column);
    std::optional<CarriedHeading> carriedHeading() const;
    void invalidateCarried(const std::optional<CarriedHeading>& carried);

    // Measures and painting (grid.cpp, grid_paint.cpp).
    void onDestroy();
    void onSize(int width, int height);
    void updateMeasures();
    Scene scene();
    void onPaint();
    void paintTo(HDC target, HDC visible, const Rect& dirty);
    void paintFrame() const;
    void onFocusChanged();
    void onSystemChanged();
    void invalidate(const Rect& rect);
    void invalidateAll();

    // Data.
    DataSource* source_ = nullptr;
    std::vector<std::unique_ptr<Column>> columns_;
    StyleSheet styles_;
    Geometry geometry_;
    Selection selection_;          // In view rows.
    RowIndex sourceRow_ = kNoRow;  // The source's current row as the grid last saw it.
    bool movingSource_ = false;    // The grid itself moves the source's current row.

    // Groups.
    std::wstring groupByCaption_;
    std::vector<GroupColumn> groupColumns_;
    Grouping grouping_;
    bool unfoldedAtFirst_ = false;  // Unless they are among these, by the values on their path:
    std::set<std::vector<std::wstring>> toggledGroups_;
    bool regroupDue_ = false;  // Rows came that are in no group yet.

    // What screen readers hold of this grid, who may outlive it.
    std::shared_ptr<GridLink> link_;

    // Look.
    std::optional<forms::Twips> rowHeight_;  // Without a value the font's.
    bool recordSelectors_ = true;
    TextFonts fonts_;
    HeadingTheme theme_;
    BackBuffer buffer_;
    CellText cellText_;
    CellTip tip_;
    bool cellTipsOn_ = true;
    Cell tipCell_;
    std::int64_t paintedCells_ = 0;
    std::int64_t paintedRows_ = 0;

    // Scrolling.
    Wheel wheelY_;
    Wheel wheelX_;
    bool updatingBars_ = false;
    bool barsDue_ = false;  // The bars lag behind the row count until the timer.
    bool thumbTracking_ = false;

    // Mouse.
    Drag drag_ = Drag::none;
    int dragColumn_ = kNoColumn;
    Point dragStart_;
    forms::Twips dragWidth_;  // The column's width before the drag.
    int dragFrom_ = 0;        // The same in pixels, as it was shown.
    bool dragMoved_ = false;
    bool dragInside_ = false;  // The mouse is over the heading that it holds down.
    Point dragPoint_;          // Where a carried heading is.
    Rect dragGrip_;            // Where it was taken from.
    int hotColumn_ = kNoColumn;
};

}  // namespace grid
