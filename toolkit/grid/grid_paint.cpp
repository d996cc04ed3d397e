// How the grid's window comes to its picture.
#include "toolkit/grid/drawing.h"
#include "toolkit/grid/grid.h"

namespace grid {
namespace {

// BeginPaint with its EndPaint, also when a data source throws in between.
class PaintScope {
public:
    explicit PaintScope(HWND window) : window_(window), dc_(::BeginPaint(window, &paint_)) {}
    ~PaintScope() { ::EndPaint(window_, &paint_); }

    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    HDC dc() const { return dc_; }
    Rect dirty() const { return fromRect(paint_.rcPaint); }

private:
    HWND window_;
    PAINTSTRUCT paint_{};
    HDC dc_;
};

}  // namespace

Scene Grid::scene() {
    return {geometry_,
            columns_,
            styles_,
            selection_,
            groups_,
            groupByCaption_,
            [this](int group) { return groupText(group); },
            dataSource(),
            theme_,
            fonts_,
            cellText_,
            Padding::forDpi(dpi()),
            hasFocus(),
            hotColumn_,
            drag_.heldDown() ? drag_.column() : kNoColumn,
            carriedHeading()};
}

void Grid::onPaint() {
    PaintScope scope(hwnd());
    const Rect dirty = scope.dirty();
    if (!dirty.empty()) {
        HDC canvas = buffer_.open(scope.dc(), geometry_.viewWidth(), geometry_.viewHeight());
        paintTo(canvas ? canvas : scope.dc(), scope.dc(), dirty);
        if (canvas) buffer_.copyTo(scope.dc(), dirty, {dirty.left, dirty.top});
    }
    paintedRows_ = geometry_.endRow() - geometry_.firstRow();
}

void Grid::paintTo(HDC target, HDC visible, const Rect& dirty) {
    const Scene now = scene();
    Painter painter(now, target, visible);
    painter.paint(dirty);
    paintedCells_ += painter.paintedCells();
}

// A thin edge in a quiet colour instead of the black one that Windows draws for WS_BORDER.
void Grid::paintFrame() const {
    HDC dc = ::GetWindowDC(hwnd());
    RECT window{};
    ::GetWindowRect(hwnd(), &window);
    Rect edge{0, 0, static_cast<int>(window.right - window.left),
              static_cast<int>(window.bottom - window.top)};
    Color color = Color::tint(COLOR_WINDOWTEXT, 35, COLOR_WINDOWTEXT);
    frame(dc, edge, ::GetSystemMetrics(SM_CXBORDER), color.resolve(highContrastOn()));
    ::ReleaseDC(hwnd(), dc);
}

}  // namespace grid
