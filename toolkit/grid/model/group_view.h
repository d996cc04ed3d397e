// GroupView: by which columns the rows of a source are grouped, and which groups are unfolded.
//
//   GroupView view;
//   view.setColumns({{column}});
//   view.group(source);
//   view.setUnfolded(2, true, source);
//   std::wstring line = view.text(2, L"Component", source);
//
// After a sort, or when rows were added, groups are recognised by the values on their paths and
// stay folded or unfolded as before. One thread.
#pragma once

#include "toolkit/grid/model/data_source.h"
#include "toolkit/grid/model/group_area.h"
#include "toolkit/grid/model/grouping.h"
#include "toolkit/grid/model/shapes.h"

#include <set>
#include <string>
#include <vector>

namespace grid {

/// A column that the rows are grouped by.
struct GroupColumn {
    int column = kNoColumn;
    bool descending = false;

    friend bool operator==(const GroupColumn&, const GroupColumn&) = default;
};

class GroupView {
public:
    /// From the outermost in.
    const std::vector<GroupColumn>& columns() const { return columns_; }
    /// Of a column's group; kNoLevel if the rows are not grouped by it.
    int levelOf(int column) const;

    /// The columns if `column` were put in front of what is at `level` now, taken out, or reversed.
    std::vector<GroupColumn> with(int column, int level) const;
    std::vector<GroupColumn> without(int column) const;
    std::vector<GroupColumn> reversed(int level) const;

    /// Groups come with the next call of group. What was folded within columns that stay is kept.
    void setColumns(std::vector<GroupColumn> columns);
    /// Groups all rows that the source has by now. What the source throws leaves everything as it
    /// was.
    void group(const DataSource& source);
    /// No columns, no groups, nothing remembered.
    void clear();

    bool active() const { return grouping_.active(); }
    const Grouping& grouping() const { return grouping_; }

    void setUnfolded(int group, bool unfolded, const DataSource& source);
    void setAllUnfolded(bool unfolded);
    /// Unfolds all groups around a row; returns whether any was folded.
    bool reveal(RowIndex row, const DataSource& source);

    /// The group whose own row this is; kNoGroup for other rows, and outside the view.
    int groupAt(RowIndex view) const;
    /// The row of a group, or of the innermost one around it that is on view.
    RowIndex viewNear(int group) const;

    /// What a group's row says: heading, value and number of rows.
    std::wstring text(int group, const std::wstring& heading, const DataSource& source) const;

private:
    using Path = std::vector<std::wstring>;

    void remember(int group, bool unfolded, const DataSource& source);
    void restoreFolding(Grouping& grouping, const DataSource& source) const;
    Path pathOf(const Grouping& grouping, int group, const DataSource& source) const;

    std::vector<GroupColumn> columns_;
    Grouping grouping_;
    bool unfoldedAtFirst_ = false;
    std::set<Path> toggled_;  // The groups that are not as they were at first.
};

}  // namespace grid
