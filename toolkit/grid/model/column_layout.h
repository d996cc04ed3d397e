// Horizontal positions and order of the columns.
//
//   ColumnLayout columns;
//   columns.resize(3, 80);
//   columns.move(2, 0);
//   int column = columns.at(x);
//
// One thread at a time. Positions are pixels from the left edge of the first column, unscrolled. A
// column's number never changes; its place is the number of columns before it, including hidden
// ones.
#pragma once

#include <cstddef>
#include <vector>

namespace grid {

class ColumnLayout {
public:
    int count() const { return static_cast<int>(columns_.size()); }

    /// Replaces all columns by `count` visible ones of `width` pixels.
    void resize(int count, int width);

    /// Requires: 0 <= column < count(). Negative widths count as 0.
    void setWidth(int column, int width);
    void setVisible(int column, bool visible);

    /// Requires: 0 <= place < count(). The columns between close up.
    void move(int column, int place);
    int place(int column) const;
    int columnAtPlace(int place) const { return order_[index(place)]; }

    /// The width of the column while it is visible.
    int width(int column) const { return columns_[index(column)].width; }
    bool visible(int column) const { return columns_[index(column)].visible; }

    /// A hidden column has its left edge as its right edge.
    int left(int column) const { return columns_[index(column)].left; }
    int right(int column) const;
    int totalWidth() const { return totalWidth_; }

    /// The visible column under `x`, or kNoColumn.
    int at(int x) const;

    /// The column whose right border lies within `reach` pixels of `x`, or kNoColumn. Of two such
    /// borders the nearer wins; of two at one place the rightmost column, so that a column pulled
    /// to width 0 can be opened again.
    int borderAt(int x, int reach) const;

    /// The place for a column dropped at `x`, from 0 to count(), counted before it is removed from
    /// its old one: before the first visible column whose middle lies beyond.
    int placeAt(int x) const;

    /// The next visible column in a direction (+1 or -1), not `from` itself; kNoColumn at the end.
    int next(int from, int step) const { return visibleFrom(place(from) + step, step); }
    int firstVisible() const { return visibleFrom(0, 1); }
    int lastVisible() const { return visibleFrom(count() - 1, -1); }

private:
    struct Extent {
        int width = 0;
        int left = 0;  // Sum of the visible widths before it.
        bool visible = true;
    };

    static std::size_t index(int column) { return static_cast<std::size_t>(column); }
    int visibleFrom(int place, int step) const;
    void layOut();

    std::vector<Extent> columns_;
    std::vector<int> order_;  // Columns by place.
    int totalWidth_ = 0;
};

}  // namespace grid
