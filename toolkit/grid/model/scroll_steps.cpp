#include "toolkit/grid/model/scroll_steps.h"

#include <algorithm>

namespace grid {
namespace {

RowIndex pageRows(const Geometry& geometry) {
    return std::max<RowIndex>(geometry.rowsOnAPage() - 1, 1);
}

}  // namespace

RowIndex steppedY(const Geometry& geometry, ScrollStep step) {
    const RowIndex row = geometry.measures().rowHeight;
    switch (step) {
        case ScrollStep::lineBack:
            return geometry.scrollY() - row;
        case ScrollStep::lineOn:
            return geometry.scrollY() + row;
        case ScrollStep::pageBack:
            return geometry.scrollY() - pageRows(geometry) * row;
        case ScrollStep::pageOn:
            return geometry.scrollY() + pageRows(geometry) * row;
        case ScrollStep::first:
            return 0;
        default:
            return geometry.maximumScrollY();
    }
}

int steppedX(const Geometry& geometry, ScrollStep step, int line) {
    const int page = std::max(geometry.dataArea().width() - line, line);
    switch (step) {
        case ScrollStep::lineBack:
            return geometry.scrollX() - line;
        case ScrollStep::lineOn:
            return geometry.scrollX() + line;
        case ScrollStep::pageBack:
            return geometry.scrollX() - page;
        case ScrollStep::pageOn:
            return geometry.scrollX() + page;
        case ScrollStep::first:
            return 0;
        default:
            return geometry.maximumScrollX();
    }
}

RowIndex wheelNotchY(const Geometry& geometry, std::int64_t lines) {
    return std::min<RowIndex>(lines, pageRows(geometry)) * geometry.measures().rowHeight;
}

RowIndex wheelNotchX(const Geometry& geometry, std::int64_t characters, int line) {
    return std::min<RowIndex>(characters * line, geometry.dataArea().width());
}

}  // namespace grid
