// HeadingDrag: what the left mouse button holds in the headings: a heading that is pressed or
// carried to another place, or the border of one.
//
//   HeadingDrag drag(geometry, groups);
//   drag.takeHeading(column, true, mouse);
//   drag.pull({mouse.x + 40, mouse.y}, {4, 4});
//   HeadingDrop where = drag.dropAt({mouse.x + 40, mouse.y});
//
// It computes places and widths. Mouse capture, painting and the effect of a drop are up to the
// grid. Chips in the group area count as headings. One thread. Distances are device pixels.
#pragma once

#include "toolkit/grid/model/geometry.h"
#include "toolkit/grid/model/group_view.h"

#include <optional>

namespace grid {

/// A heading that the mouse carries to another place.
struct CarriedHeading {
    int column = kNoColumn;
    Rect rect;
    Rect mark;  ///< Shows where it would go; empty for nowhere.
};

/// Where a carried heading would go.
struct HeadingDrop {
    enum class To { nowhere, columns, groups } to = To::nowhere;
    int index =
        0;  ///< A place among the columns, or a level, counted with the heading where it was.

    friend bool operator==(const HeadingDrop&, const HeadingDrop&) = default;
};

class HeadingDrag {
public:
    enum class Held { nothing, heading, carried, border };
    enum class BorderStep { none, first, next };

    /// Both must outlive the drag.
    HeadingDrag(const Geometry& geometry, const GroupView& groups)
        : geometry_(geometry), groups_(groups) {}

    Held held() const { return held_; }
    bool active() const { return held_ != Held::nothing; }
    /// Whose heading or border it is. The last one when nothing is held.
    int column() const { return column_; }

    void takeHeading(int column, bool mayGroup, Point at);
    void takeBorder(int column, Point at);
    /// Returns what was held.
    Held letGo();

    /// The mouse moved with a heading. One pulled further than `slack` from where it was taken is
    /// carried from then on.
    void pull(Point to, Point slack);
    /// Whether a heading is held down: pressed, and the mouse is over it.
    bool heldDown() const { return held_ == Held::heading && inside_; }
    /// Where a heading, or its chip while it is grouped by, stands.
    Rect placeOf(int column) const;

    /// Requires, as the next one: a heading is held.
    HeadingDrop dropAt(Point point) const;
    std::optional<CarriedHeading> carried(int markThickness) const;

    /// The mouse moved with a border: not yet, for the first time, or on.
    BorderStep pullBorder(Point to);
    bool borderMoved() const { return held_ == Held::border && moved_; }
    /// The column's width with the border at the mouse.
    int borderWidth(Point at) const;

private:
    void take(Held what, int column, Point at);
    void beginToCarry(const Rect& place);
    Rect dropMark(const HeadingDrop& where, int thickness) const;

    const Geometry& geometry_;
    const GroupView& groups_;
    Held held_ = Held::nothing;
    int column_ = kNoColumn;
    bool mayGroup_ = false;
    Point start_;
    Point at_;
    Rect grip_;            // Where the carried heading was taken from.
    bool inside_ = false;  // The mouse is over the heading that it holds down.
    int width_ = 0;        // Of the column when its border was taken.
    bool moved_ = false;
};

}  // namespace grid
