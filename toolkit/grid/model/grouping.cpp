#include "toolkit/grid/model/grouping.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace grid {
namespace {

// Reorders rows by rank, rows of equal rank as they were: a counting sort, since ranks are dense.
void sortByRank(const Grouping::Level& level, std::vector<std::uint32_t>& rows) {
    const std::uint32_t greatest = *std::max_element(level.ranks.begin(), level.ranks.end());
    const auto keyOf = [&](std::uint32_t row) {
        return level.descending ? greatest - level.ranks[row] : level.ranks[row];
    };
    std::vector<std::uint32_t> next(std::size_t{greatest} + 2);
    for (const std::uint32_t row : rows) {
        ++next[keyOf(row) + 1];
    }
    std::partial_sum(next.begin(), next.end(), next.begin());
    std::vector<std::uint32_t> sorted(rows.size());
    for (const std::uint32_t row : rows) {
        sorted[next[keyOf(row)]++] = row;
    }
    rows = std::move(sorted);
}

}  // namespace

Grouping::Grouping(RowIndex rowCount, const std::vector<Level>& levels)
    : levelCount_(static_cast<int>(levels.size())) {
    sortRows(levels, rowCount);
    makeGroups(levels);
    layOut();
}

void Grouping::sortRows(const std::vector<Level>& levels, RowIndex rowCount) {
    order_.resize(static_cast<std::size_t>(rowCount));
    std::iota(order_.begin(), order_.end(), 0u);
    if (!order_.empty()) {
        // From the innermost level out: a stable sort keeps what the inner ones decided.
        for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
            sortByRank(*level, order_);
        }
    }
    placeOf_.resize(order_.size());
    for (std::uint32_t place = 0; place < order_.size(); ++place) {
        placeOf_[order_[place]] = place;
    }
}

void Grouping::makeGroups(const std::vector<Level>& levels) {
    std::vector<int> open(levels.size(), kNoGroup);  // The group of each level that still grows.
    const auto endFrom = [&](std::size_t level) {
        for (; level < open.size(); ++level) {
            if (open[level] != kNoGroup) {
                groups_[static_cast<std::size_t>(open[level])].end = groupCount();
            }
        }
    };
    for (std::uint32_t place = 0; place < order_.size(); ++place) {
        std::size_t level = 0;
        while (place > 0 && level < levels.size() &&
               levels[level].ranks[order_[place]] == levels[level].ranks[order_[place - 1]]) {
            ++level;
        }
        endFrom(level);
        for (; level < levels.size(); ++level) {
            Group group;
            group.firstPlace = place;
            group.level = static_cast<int>(level);
            group.parent = level == 0 ? kNoGroup : open[level - 1];
            open[level] = groupCount();
            groups_.push_back(group);
        }
        for (const int group : open) {
            ++groups_[static_cast<std::size_t>(group)].rowCount;
        }
    }
    endFrom(0);
}

// Numbers the rows on view. Folded groups are stepped over with all that they hold.
void Grouping::layOut() {
    visible_.clear();
    viewCount_ = 0;
    for (int index = 0; index < groupCount();) {
        const Group& shown = group(index);
        visible_.push_back({viewCount_, index});
        viewCount_ += 1 + (shown.unfolded && holdsRows(index) ? RowIndex{shown.rowCount} : 0);
        index = shown.unfolded ? index + 1 : shown.end;
    }
}

RowIndex Grouping::firstRowOf(int group) const { return order_[this->group(group).firstPlace]; }

std::vector<Grouping::Visible>::const_iterator Grouping::visibleAt(RowIndex view) const {
    return std::prev(
        std::upper_bound(visible_.begin(), visible_.end(), view,
                         [](RowIndex v, const Visible& shown) { return v < shown.view; }));
}

Grouping::Place Grouping::at(RowIndex view) const {
    if (!active()) return {view, kNoGroup};
    const Visible& shown = *visibleAt(view);
    if (shown.view == view) return {kNoRow, shown.group};
    const auto place =
        group(shown.group).firstPlace + static_cast<std::size_t>(view - shown.view - 1);
    return {order_[place], kNoGroup};
}

int Grouping::groupOf(RowIndex row) const {
    if (!active() || row < 0 || row >= rowCount()) return kNoGroup;
    const std::uint32_t place = placeOf_[static_cast<std::size_t>(row)];
    // Of all groups that begin at or before the place the last one holds rows, the row among them:
    // groups begin with their first rows, and parents come before their children.
    const auto behind = std::upper_bound(
        groups_.begin(), groups_.end(), place,
        [](std::uint32_t p, const Group& candidate) { return p < candidate.firstPlace; });
    return static_cast<int>(behind - groups_.begin()) - 1;
}

RowIndex Grouping::viewOf(RowIndex row) const {
    if (!active()) return row;
    const int innermost = groupOf(row);
    if (innermost == kNoGroup) return kNoRow;
    int folded = kNoGroup;
    for (int around = innermost; around != kNoGroup; around = group(around).parent) {
        folded = group(around).unfolded ? folded : around;
    }
    if (folded != kNoGroup) return viewOfGroup(folded);
    return viewOfGroup(innermost) + 1 + placeOf_[static_cast<std::size_t>(row)] -
           group(innermost).firstPlace;
}

RowIndex Grouping::viewOfGroup(int group) const {
    const auto found =
        std::lower_bound(visible_.begin(), visible_.end(), group,
                         [](const Visible& shown, int wanted) { return shown.group < wanted; });
    return found == visible_.end() || found->group != group ? kNoRow : found->view;
}

void Grouping::setUnfolded(const std::vector<int>& groups, bool unfolded) {
    for (const int group : groups) {
        groups_[static_cast<std::size_t>(group)].unfolded = unfolded;
    }
    layOut();
}

void Grouping::setAllUnfolded(bool unfolded) {
    for (Group& each : groups_) {
        each.unfolded = unfolded;
    }
    layOut();
}

bool Grouping::reveal(RowIndex row) {
    bool changed = false;
    for (int around = groupOf(row); around != kNoGroup; around = group(around).parent) {
        bool& unfolded = groups_[static_cast<std::size_t>(around)].unfolded;
        changed = changed || !unfolded;
        unfolded = true;
    }
    if (changed) layOut();
    return changed;
}

}  // namespace grid
