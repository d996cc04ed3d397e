#include "toolkit/grid/model/group_area.h"

#include <algorithm>

namespace grid {

void GroupArea::layOut(const Rect& strip, const std::vector<int>& chipWidths, int gap) {
    strip_ = strip;
    gap_ = gap;
    chips_.clear();
    int left = strip.left + gap;
    for (const int width : chipWidths) {
        chips_.push_back({left, strip.top + gap, left + width, strip.bottom - gap});
        left += width + gap;
    }
}

int GroupArea::levelAt(Point point) const {
    auto found = std::find_if(chips_.begin(), chips_.end(),
                              [&](const Rect& chip) { return chip.contains(point); });
    return found == chips_.end() ? kNoLevel : static_cast<int>(found - chips_.begin());
}

int GroupArea::insertionAt(int x) const {
    auto found = std::find_if(chips_.begin(), chips_.end(),
                              [&](const Rect& chip) { return x < (chip.left + chip.right) / 2; });
    return static_cast<int>(found - chips_.begin());
}

Rect GroupArea::insertionMark(int level, int thickness) const {
    int left = strip_.left;
    if (level > 0 && level <= levelCount()) left = chip(level - 1).right;
    left += (gap_ - thickness) / 2;
    return {left, strip_.top + gap_ / 2, left + thickness, strip_.bottom - gap_ / 2};
}

}  // namespace grid
