#include "toolkit/grid/model/shapes.h"

#include <algorithm>

namespace grid {

Rect intersection(const Rect& a, const Rect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

}  // namespace grid
