#include "toolkit/grid/model/group_view.h"

#include <algorithm>
#include <utility>

namespace grid {

int GroupView::levelOf(int column) const {
    const auto found = std::find_if(columns_.begin(), columns_.end(),
                                    [&](const GroupColumn& by) { return by.column == column; });
    return found == columns_.end() ? kNoLevel : static_cast<int>(found - columns_.begin());
}

std::vector<GroupColumn> GroupView::with(int column, int level) const {
    const int old = levelOf(column);
    GroupColumn moved{column, false};
    if (old != kNoLevel) moved = columns_[static_cast<std::size_t>(old)];
    std::vector<GroupColumn> columns = without(column);
    const bool fromBefore = old != kNoLevel && old < level;
    columns.insert(columns.begin() + level - (fromBefore ? 1 : 0), moved);
    return columns;
}

std::vector<GroupColumn> GroupView::without(int column) const {
    std::vector<GroupColumn> columns = columns_;
    std::erase_if(columns, [&](const GroupColumn& by) { return by.column == column; });
    return columns;
}

std::vector<GroupColumn> GroupView::reversed(int level) const {
    std::vector<GroupColumn> columns = columns_;
    bool& descending = columns[static_cast<std::size_t>(level)].descending;
    descending = !descending;
    return columns;
}

void GroupView::setColumns(std::vector<GroupColumn> columns) {
    const auto [oldEnd, newEnd] =
        std::mismatch(columns_.begin(), columns_.end(), columns.begin(), columns.end(),
                      [](const auto& a, const auto& b) { return a.column == b.column; });
    const auto kept = static_cast<std::size_t>(newEnd - columns.begin());
    std::erase_if(toggled_, [&](const Path& path) { return path.size() > kept; });
    unfoldedAtFirst_ = unfoldedAtFirst_ && kept > 0;
    columns_ = std::move(columns);
}

void GroupView::group(const DataSource& source) {
    const RowIndex count = source.rowCount();
    std::vector<Grouping::Level> levels;
    for (const GroupColumn& by : columns_) {
        levels.push_back({source.valueRanks(by.column), by.descending});
        levels.back().ranks.resize(static_cast<std::size_t>(count));
    }
    Grouping made = levels.empty() ? Grouping() : Grouping(count, levels);
    restoreFolding(made, source);
    grouping_ = std::move(made);
}

void GroupView::clear() { *this = {}; }

void GroupView::restoreFolding(Grouping& grouping, const DataSource& source) const {
    if (unfoldedAtFirst_) grouping.setAllUnfolded(true);
    if (toggled_.empty()) return;
    std::vector<int> toggled;
    for (int group = 0; group < grouping.groupCount(); ++group) {
        if (toggled_.count(pathOf(grouping, group, source)) != 0) toggled.push_back(group);
    }
    grouping.setUnfolded(toggled, !unfoldedAtFirst_);
}

GroupView::Path GroupView::pathOf(const Grouping& grouping, int group,
                                  const DataSource& source) const {
    Path path(static_cast<std::size_t>(grouping.group(group).level) + 1);
    const RowIndex row = grouping.firstRowOf(group);
    for (std::size_t level = 0; level < path.size(); ++level) {
        source.cellText(row, columns_[level].column, path[level]);
    }
    return path;
}

void GroupView::remember(int group, bool unfolded, const DataSource& source) {
    Path path = pathOf(grouping_, group, source);
    if (unfolded == unfoldedAtFirst_) {
        toggled_.erase(path);
    } else {
        toggled_.insert(std::move(path));
    }
}

void GroupView::setUnfolded(int group, bool unfolded, const DataSource& source) {
    remember(group, unfolded, source);
    grouping_.setUnfolded({group}, unfolded);
}

void GroupView::setAllUnfolded(bool unfolded) {
    unfoldedAtFirst_ = unfolded;
    toggled_.clear();
    grouping_.setAllUnfolded(unfolded);
}

bool GroupView::reveal(RowIndex row, const DataSource& source) {
    for (int around = grouping_.groupOf(row); around != kNoGroup;
         around = grouping_.group(around).parent) {
        if (!grouping_.group(around).unfolded) remember(around, true, source);
    }
    return grouping_.reveal(row);
}

int GroupView::groupAt(RowIndex view) const {
    if (!active() || view < 0 || view >= grouping_.viewCount()) return kNoGroup;
    return grouping_.at(view).group;
}

RowIndex GroupView::viewNear(int group) const {
    RowIndex view = kNoRow;
    for (; group != kNoGroup && view == kNoRow; group = grouping_.group(group).parent) {
        view = grouping_.viewOfGroup(group);
    }
    return view;
}

std::wstring GroupView::text(int group, const std::wstring& heading,
                             const DataSource& source) const {
    const Grouping::Group& shown = grouping_.group(group);
    std::wstring value;
    source.cellText(grouping_.firstRowOf(group),
                    columns_[static_cast<std::size_t>(shown.level)].column, value);
    return heading + L": " + value + L"  (" + std::to_wstring(shown.rowCount) + L")";
}

}  // namespace grid
