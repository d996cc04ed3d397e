// Rows in groups by the values of some columns, groups within groups, folded or not.
//
//   Grouping grouping(rowCount, {{ranksOfComponent}, {ranksOfLevel, true}});
//   grouping.setUnfolded({0}, true);
//   for (RowIndex view = 0; view < grouping.viewCount(); ++view) draw(grouping.at(view));
//
// Rows have the numbers of their source. View rows are numbered from top to bottom: a row for every
// group, followed, if it is unfolded, by its inner groups or its rows.
//
// One thread at a time. Memory: 8 bytes a row, and the groups. Construction takes time proportional
// to rows times levels; folding, proportional to the groups.
#pragma once

#include "toolkit/grid/model/shapes.h"

#include <cstdint>
#include <vector>

namespace grid {

inline constexpr int kNoGroup = -1;

class Grouping {
public:
    /// One column to group by.
    struct Level {
        /// For each row a number; rows with equal ones form a group.
        std::vector<std::uint32_t> ranks;
        /// Whether the greatest rank comes first.
        bool descending = false;
    };

    /// Groups are in preorder: parents before children.
    struct Group {
        std::uint32_t firstPlace = 0;  ///< Of its rows in the order of all groups.
        std::uint32_t rowCount = 0;    ///< Including those of inner groups.
        int level = 0;                 ///< 0 for the outermost.
        int parent = kNoGroup;
        int end = 0;  ///< The next group outside this one.
        bool unfolded = false;
    };

    /// What a view row shows: a row of the source, or a group's own row.
    struct Place {
        RowIndex row = kNoRow;
        int group = kNoGroup;  ///< Of a group's own row.
    };

    /// Without groups: view rows are the source's rows.
    Grouping() = default;

    /// All groups folded; within a group the rows keep their order. Requires: every level has
    /// `rowCount` ranks, less than 2^32.
    Grouping(RowIndex rowCount, const std::vector<Level>& levels);

    bool active() const { return levelCount_ > 0; }
    int levelCount() const { return levelCount_; }
    RowIndex rowCount() const { return static_cast<RowIndex>(order_.size()); }

    int groupCount() const { return static_cast<int>(groups_.size()); }
    const Group& group(int index) const { return groups_[static_cast<std::size_t>(index)]; }
    /// A row of the group.
    RowIndex firstRowOf(int group) const;

    /// Without groups both return the number that they are given.
    RowIndex viewCount() const { return viewCount_; }
    /// Requires: 0 <= view < viewCount(), when there are groups.
    Place at(RowIndex view) const;
    /// The view row of a source's row; if it is hidden by folding, that of the innermost visible
    /// group around it. kNoRow for a row that is not grouped.
    RowIndex viewOf(RowIndex row) const;
    RowIndex viewOfGroup(int group) const;
    /// The innermost group that contains a row; kNoGroup for a row that is not grouped.
    int groupOf(RowIndex row) const;

    void setUnfolded(const std::vector<int>& groups, bool unfolded);
    void setAllUnfolded(bool unfolded);
    /// Unfolds all groups around a row; returns whether any was folded.
    bool reveal(RowIndex row);

private:
    struct Visible {
        RowIndex view;
        int group;
    };

    void sortRows(const std::vector<Level>& levels, RowIndex rowCount);
    void makeGroups(const std::vector<Level>& levels);
    void layOut();
    bool holdsRows(int group) const { return this->group(group).level == levelCount_ - 1; }
    std::vector<Visible>::const_iterator visibleAt(RowIndex view) const;

    int levelCount_ = 0;
    std::vector<std::uint32_t> order_;    // Rows by place.
    std::vector<std::uint32_t> placeOf_;  // Places by row.
    std::vector<Group> groups_;
    std::vector<Visible> visible_;  // The groups on view with their view rows, ascending.
    RowIndex viewCount_ = 0;
};

}  // namespace grid
