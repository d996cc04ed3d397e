// Scrolling: what the bars and the wheel ask for, and the moving of what is on the screen already.
#include "toolkit/grid/grid.h"
#include "toolkit/grid/model/scroll_steps.h"

#include <cstdlib>

namespace grid {
namespace {

// A step of the horizontal arrows, and a character of the wheel's setting, at 96 dots per inch.
constexpr int kHorizontalStep = 16;

UINT wheelSetting(UINT which) {
    UINT value = 3;
    ::SystemParametersInfoW(which, 0, &value, 0);
    return value;
}

}  // namespace

void Grid::scroll(const std::function<void(Geometry&)>& change) {
    const RowIndex oldY = geometry_.scrollY();
    const int oldX = geometry_.scrollX();
    change(geometry_);
    if (oldY != geometry_.scrollY() || oldX != geometry_.scrollX()) moveView(oldY, oldX);
}

// Moves the pixels that stay on view and leaves the rest to the next paint.
void Grid::moveView(RowIndex oldY, int oldX) {
    tip_.hide();
    if (!isCreated()) return;
    const RowIndex down = oldY - geometry_.scrollY();
    const int right = oldX - geometry_.scrollX();
    const Rect data = geometry_.dataArea();
    // The rows of groups do not move sideways; what the mouse carries stays where it is.
    const bool partsStay =
        (right != 0 && groups_.active()) || drag_.held() == HeadingDrag::Held::carried;
    if (partsStay || std::abs(down) >= data.height() || std::abs(right) >= data.width()) {
        repaint_.all();
    } else {
        repaint_.scrolledRows(static_cast<int>(down));
        repaint_.scrolledColumns(right);
    }
    bars_.update();
    repaint_.now();
    if (const auto procedure = onScroll) procedure();
}

void Grid::scrollCurrentIntoView() {
    scroll([this](Geometry& geometry) { geometry.scrollRowIntoView(selection_.current().row); });
}

void Grid::setFirstRow(std::int64_t row) {
    scroll([&](Geometry& geometry) { geometry.scrollToRow(row); });
}

void Grid::onTimer(UINT_PTR timer) {
    if (timer == kBarTimer) {
        if (bars_.onTimer()) events_.rowsChanged();
    } else if (timer == kRegroupTimer) {
        regroup();
        followSource(false, false);
    }
}

void Grid::onVScroll(int code) {
    if (const auto y = bars_.verticalTarget(code)) {
        scroll([&](Geometry& geometry) { geometry.scrollToY(*y); });
    }
}

void Grid::onHScroll(int code) {
    if (const auto x = bars_.horizontalTarget(code, horizontalStep())) {
        scroll([&](Geometry& geometry) { geometry.scrollToX(*x); });
    }
}

void Grid::onWheel(int delta) {
    const RowIndex notch = wheelNotchY(geometry_, wheelSetting(SPI_GETWHEELSCROLLLINES));
    const RowIndex distance = wheelY_.turn(delta, notch);
    scroll([&](Geometry& geometry) { geometry.scrollToY(geometry.scrollY() - distance); });
}

void Grid::onSidewaysWheel(int delta) {
    const RowIndex notch =
        wheelNotchX(geometry_, wheelSetting(SPI_GETWHEELSCROLLCHARS), horizontalStep());
    const auto distance = static_cast<int>(wheelX_.turn(delta, notch));
    scroll([&](Geometry& geometry) { geometry.scrollToX(geometry.scrollX() - distance); });
}

int Grid::horizontalStep() const { return forms::scaled(kHorizontalStep, dpi()).value; }

}  // namespace grid
