// The grid's accessible objects for screen readers: a table of rows of cells.
//
//   const LONG child = GridAccessible::childOf(dataGrid, {row, column});
//   ::NotifyWinEvent(EVENT_OBJECT_FOCUS, hwnd(), OBJID_CLIENT, child);
//
// Child 1 of the table is the row of headings, child n + 2 is view row n. Child k of a row is the
// cell of the k-th column on view; a group's row has none.
//
// Every part is an object of its own, created on demand. So that an event can name a cell, the
// table also has negative child numbers: -1 - (view row * columns + column).
//
// The user-interface thread; objects may outlive the grid and then report that they are gone.
#pragma once

#include "toolkit/forms/accessible_object.h"
#include "toolkit/grid/model/shapes.h"

#include <memory>
#include <optional>

namespace grid {

class Grid;

/// The grid, while it lives.
struct GridLink {
    Grid* grid = nullptr;
};

class GridAccessible : public forms::AccessibleObject {
public:
    enum class Kind { table, headingRow, heading, row, cell };

    /// What an object represents: a column by its number, a row by its view row.
    struct Part {
        Kind kind = Kind::table;
        RowIndex view = kNoRow;
        int column = kNoColumn;
    };

    GridAccessible(std::shared_ptr<GridLink> link, const Part& part);

    /// The table's child number for a cell, or for its row if the number does not fit or there is
    /// no such cell.
    static LONG childOf(const Grid& grid, Cell viewCell);

    std::wstring name(LONG child) override;
    std::wstring value(LONG child) override;
    std::wstring action(LONG child) override;
    long role(LONG child) override;
    long state(LONG child) override;
    RECT location(LONG child) override;
    long childCount() override;
    IDispatch* child(LONG child) override;
    IDispatch* parent() override;
    void focus(VARIANT& answer) override;
    void selection(VARIANT& answer) override;
    void hitTest(POINT screen, VARIANT& answer) override;
    void navigate(long direction, LONG child, VARIANT& answer) override;
    bool select(long flags, LONG child) override;
    bool doAction(LONG child) override;

private:
    Grid& grid() const;
    Part part(LONG child) const;
    std::optional<Part> childPart(LONG child) const;
    std::optional<Part> neighbour(long direction, const Part& from) const;
    bool exists(const Part& part) const;
    IDispatch* object(const std::optional<Part>& part) const;
    std::wstring cellText(RowIndex view, int column) const;

    std::shared_ptr<GridLink> link_;
    Part part_;
};

}  // namespace grid
