// Grid: a control that shows the rows of a data source in columns.
//
//   tdbgridData.setDataSource(&source);
//   tdbgridData.column(L"Trace").setWrapText(true);
//   tdbgridData.onHeadClick = [this](int column) { sortBy(column); };
//
// The grid is virtual: it asks the source for the cells on view and nothing else, so that a paint
// takes as long for ten million rows as for ten. It has no current row of its own but shows the
// source's; code that moves it notifies the grid (see the notifications below).
//
// Users group rows by a column by dragging its heading to the strip above the headings. The source
// does not know about groups. The rows that the grid then shows, including one for each group, are
// called view rows.
//
// The user-interface thread. Lengths are twips unless they say pixels; rows and columns are
// counted from 0.
#pragma once

#include "toolkit/forms/control.h"
#include "toolkit/grid/accessible_events.h"
#include "toolkit/grid/back_buffer.h"
#include "toolkit/grid/cell_text.h"
#include "toolkit/grid/cell_tip.h"
#include "toolkit/grid/column.h"
#include "toolkit/grid/delayed_update.h"
#include "toolkit/grid/heading_theme.h"
#include "toolkit/grid/model/data_source.h"
#include "toolkit/grid/model/geometry.h"
#include "toolkit/grid/model/group_view.h"
#include "toolkit/grid/model/heading_drag.h"
#include "toolkit/grid/model/selection.h"
#include "toolkit/grid/model/source_cursor.h"
#include "toolkit/grid/model/wheel.h"
#include "toolkit/grid/painter.h"
#include "toolkit/grid/repaint.h"
#include "toolkit/grid/scroll_bars.h"
#include "toolkit/grid/style.h"
#include "toolkit/grid/text_font.h"
#include "toolkit/grid/timers.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace grid {

class Grid : public forms::Control {
public:
    Grid() = default;
    ~Grid() override;

    /// Shows another source, or none, from its first row, with one default column for every field.
    /// Raises onRowColChange. The source must stay alive until another one is set.
    void setDataSource(DataSource* source);
    DataSource* dataSource() const { return cursor_.source(); }

    // Notifications from the source's owner.

    /// The number of rows has changed. Cheap enough to be called for every row that arrives: only
    /// rows that become visible are painted, and the scroll position is kept.
    void rowCountChanged();
    /// The source moved its current row itself, as a search does: it is scrolled into view.
    void currentRowChanged();
    /// Content or order of the rows may have changed, as after a sort. The current row is scrolled
    /// into view if its number has changed. Always raises onRowColChange, since the current row may
    /// be a different record.
    void dataChanged();
    /// The source has other columns: the same as setting it again.
    void reset() { setDataSource(dataSource()); }

    /// Columns.
    int columnCount() const { return static_cast<int>(columns_.size()); }
    /// Both throw std::out_of_range. References are valid until another source is set.
    Column& column(int index);
    Column& column(const std::wstring& dataField);
    /// -1 if there is no such field.
    int columnIndex(const std::wstring& dataField) const;
    /// Columns by display position, including hidden ones; the user moves them by dragging.
    int columnAtPlace(int place) const { return geometry_.columns().columnAtPlace(place); }
    void moveColumn(int column, int place);

    // Grouping.

    /// The text in the strip above the headings while nothing is grouped; if it is empty there is
    /// no strip, and the user cannot group.
    const std::wstring& groupByCaption() const { return groupByCaption_; }
    void setGroupByCaption(const std::wstring& caption);
    /// The columns that the rows are grouped by, from the outermost in; their headings stand in the
    /// strip. All groups are folded at first. Throws std::out_of_range for a wrong column.
    const std::vector<GroupColumn>& groupColumns() const { return groups_.columns(); }
    void setGroupColumns(std::vector<GroupColumn> columns);
    const Grouping& grouping() const { return groups_.grouping(); }
    void setGroupUnfolded(int group, bool unfolded);
    void setAllGroupsUnfolded(bool unfolded);
    /// What a group's row says: heading, value and number of rows.
    std::wstring groupText(int group) const;

    // The height of a row; by default that of one line of the grid's font.
    forms::Twips rowHeight() const;
    void setRowHeight(forms::Twips height);

    /// The current number of rows in the source.
    std::int64_t approxCount() const { return cursor_.rowCount(); }

    /// The current cell: the source's current row and a column of the grid, -1 for none.
    std::int64_t row() const { return cursor_.row(); }
    int col() const { return selection_.current().column; }
    void setCol(int column);

    /// Moves to a view row and a column as the user would; ignored if there is no such row.
    void setCurrentCell(std::int64_t viewRow, int column);

    /// The selected view rows, and the view row with the focus: the current row's or a group's.
    const Selection& selection() const { return selection_; }
    /// The selected rows as text: the visible columns separated by tabs, each row ended by CR LF;
    /// the text of the current cell if no whole row is selected. A field with a tab, a line break
    /// or a quote is quoted, with quotes doubled, as spreadsheets expect.
    std::wstring selectedText() const;

    /// The view row at the upper edge. Setting it scrolls as far as there are rows.
    std::int64_t firstRow() const { return geometry_.firstRow(); }
    void setFirstRow(std::int64_t row);

    /// The column at the left that marks the current row.
    bool recordSelectors() const { return recordSelectors_; }
    void setRecordSelectors(bool show);

    /// Whether hovering over a truncated cell shows its full text.
    bool cellTips() const { return tip_.on(); }
    void setCellTips(bool on) { tip_.setOn(on); }

    const Style& style(const std::wstring& name) const { return styles_.style(name); }
    void setStyle(const std::wstring& name, const Style& style);

    // Events. A handler may do anything to the grid, including setting another source.

    /// A heading was clicked.
    std::function<void(int column)> onHeadClick;
    /// The user starts to drag the border of a heading, or double-clicks it to fit the content. Set
    /// `cancel` to keep the width.
    std::function<void(int column, bool& cancel)> onColResize;
    /// The current cell moved, for whatever reason.
    std::function<void()> onRowColChange;
    /// A tip is about to be shown for a truncated cell. `tip` is the cell's text and may be
    /// changed; an empty one shows nothing; `wrap` allows several lines. For a truncated heading
    /// the row is -1 and the tip is empty.
    std::function<void(int column, std::int64_t row, std::wstring& tip, bool& wrap)>
        onFetchCellTips;
    /// The view was scrolled, vertically or horizontally.
    std::function<void()> onScroll;

    /// Paint statistics, for tests and tools: cells painted since the window was created, and rows
    /// visible at the last paint.
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

    // What happens to the selected rows when another cell becomes current.
    enum class Selecting { one, range, wholeRow };

    // Columns (grid_columns.cpp).
    void makeColumns();
    void columnsMoved();
    void placeColumns();
    void setColumnWidths();
    void headingChanged(const Column& column);
    void cellsChanged(const Column& column);
    forms::Twips contentWidth(const Column& column);
    bool resizeAllowed(int column);
    bool shown(const Column& column) const;

    // Rows and the current cell (grid_rows.cpp).
    RowIndex rowsKnown() const;
    void takeRowCount();
    void moveCurrent(Cell cell, Selecting how = Selecting::one);
    void followSource(bool intoView, bool always);
    void select(const Selection& next);
    void selectAll();
    void raiseRowColChange();

    // Groups (grid_groups.cpp).
    void regroup();
    void groupRows();
    void takeView();
    void viewRowsChanged();
    void placeGroupChips();
    int focusedGroup() const;
    void focusNear(int group, RowIndex row);
    bool onGroupKey(int key);
    void foldOrStep(int group, bool unfold);
    bool onGroupClick(RowIndex view, Point point, bool doubleClick);

    // Scrolling (grid_scroll.cpp).
    void scroll(const std::function<void(Geometry&)>& change);
    void scrollCurrentIntoView();
    void moveView(RowIndex oldY, int oldX);
    void onVScroll(int code);
    void onHScroll(int code);
    void onWheel(int delta);
    void onSidewaysWheel(int delta);
    void onTimer(UINT_PTR timer);
    int horizontalStep() const;

    // Keyboard (grid_keyboard.cpp).
    LRESULT onGetDialogCode(const MSG* message) const;
    void onKeyDown(int key);
    void onChar(wchar_t character);
    void copy();

    // Mouse (grid_mouse.cpp).
    Hit hitTest(Point point) const;
    int headingAt(Point point) const;
    void onLeftDown(Point point);
    void onMouseMoved(Point point);
    void onLeftUp(Point point);
    void onLeftDouble(Point point);
    void onMouseLeave();
    void onMouseHover(Point point);
    bool onSetCursor(int hitCode) const;
    void setHotColumn(int column);
    void watchMouse() const;
    void showTip(Cell cell);

    // Dragging headings and their borders (grid_heading_drag.cpp).
    void takeHeading(int column, Point point);
    void takeBorder(int column, Point point);
    void dragBorder(Point point);
    void dragHeading(Point point);
    void endDrag(bool keepWidth);
    void drop(int column, const HeadingDrop& where);
    void headingReleased(int column, Point point);
    std::optional<CarriedHeading> carriedHeading() const;
    void repaintHeading(int column) const;
    void repaintCarried(const std::optional<CarriedHeading>& carried) const;

    // The window (grid.cpp, grid_paint.cpp).
    void onDestroy();
    void onSize(int width, int height);
    void updateMeasures();
    void onFocusChanged();
    void onSystemChanged();
    Scene scene();
    void onPaint();
    void paintTo(HDC target, HDC visible, const Rect& dirty);
    void paintFrame() const;

    // What is shown.
    SourceCursor cursor_;
    std::vector<std::unique_ptr<Column>> columns_;
    GroupView groups_;
    Geometry geometry_;
    Selection selection_;  // In view rows.

    // How it looks.
    StyleSheet styles_;
    std::wstring groupByCaption_;
    std::optional<forms::Twips> rowHeight_;  // Without a value the font's.
    bool recordSelectors_ = true;

    // What it is painted with.
    TextFonts fonts_;
    HeadingTheme theme_;
    BackBuffer buffer_;
    CellText cellText_;
    Repaint repaint_{geometry_};
    std::int64_t paintedCells_ = 0;
    std::int64_t paintedRows_ = 0;

    // What the user does with it.
    ScrollBars bars_{geometry_};
    Wheel wheelY_;
    Wheel wheelX_;
    HeadingDrag drag_{geometry_, groups_};
    forms::Twips widthBeforeDrag_;
    int hotColumn_ = kNoColumn;
    CellTip tip_;

    DelayedUpdate regrouping_{kRegroupTimer, 500};  // For rows that keep arriving.
    AccessibleEvents events_{*this};
};

}  // namespace grid
