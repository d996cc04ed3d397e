// The strip above the headings with the columns by which the rows are grouped.
//
//   GroupArea area;
//   area.layOut({0, 0, width, height}, {componentWidth, levelWidth}, gap);
//   int level = area.levelAt(mouse);
//
// One thread at a time. Distances are device pixels. An empty rectangle means no strip.
#pragma once

#include "toolkit/grid/model/shapes.h"

#include <vector>

namespace grid {

inline constexpr int kNoLevel = -1;

class GroupArea {
public:
    /// One chip, a small heading, for each level, from left to right, `gap` around each.
    void layOut(const Rect& strip, const std::vector<int>& chipWidths, int gap);

    const Rect& strip() const { return strip_; }
    int levelCount() const { return static_cast<int>(chips_.size()); }
    const Rect& chip(int level) const { return chips_[static_cast<std::size_t>(level)]; }

    /// The level whose chip is under the point, or kNoLevel.
    int levelAt(Point point) const;
    /// The level for a heading dropped at `x`, from 0 to levelCount().
    int insertionAt(int x) const;
    /// Where the mark that shows this is drawn.
    Rect insertionMark(int level, int thickness) const;

private:
    Rect strip_;
    std::vector<Rect> chips_;
    int gap_ = 0;
};

}  // namespace grid
