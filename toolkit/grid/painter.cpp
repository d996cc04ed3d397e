#include "toolkit/grid/painter.h"

#include "toolkit/grid/drawing.h"

#include <algorithm>

namespace grid {
namespace {

int lineStart(const Rect& inner, Alignment alignment, int width) {
    switch (alignment) {
        case Alignment::right:
            return std::max(inner.right - width, inner.left);
        case Alignment::center:
            return inner.left + std::max(inner.width() - width, 0) / 2;
        default:
            return inner.left;
    }
}

}  // namespace

Padding Padding::forDpi(forms::Dpi dpi) {
    // A line grows at 200 %, not before: two pixels look heavy on a display of 150 %.
    return {forms::scaled(5, dpi).value, std::max(static_cast<int>(dpi.value / 96), 1),
            forms::scaled(4, dpi).value};
}

Painter::Painter(const Scene& scene, HDC canvas, HDC visible)
    : scene_(scene),
      canvas_(canvas),
      visible_(visible),
      savedState_(SaveDC(canvas)),
      highContrast_(highContrastOn()),
      lineColor_(Color::tint(COLOR_WINDOWTEXT, 12, COLOR_WINDOWTEXT).resolve(highContrast_)) {
    SetBkMode(canvas_, TRANSPARENT);
    SetTextAlign(canvas_, TA_LEFT | TA_TOP);
}

Painter::~Painter() { RestoreDC(canvas_, savedState_); }

void Painter::paint(const Rect& dirty) {
    dirty_ = dirty;
    paintRows();
    paintRest();
    paintHeadings();
}

bool Painter::needsPainting(const Rect& rect) const {
    RECT area = toRect(intersection(rect, dirty_));
    return area.left < area.right && area.top < area.bottom && RectVisible(visible_, &area);
}

Painter::Colors Painter::colors(const Style& style) const {
    return {style.text.resolve(highContrast_), style.back.resolve(highContrast_)};
}

const Style& Painter::rowStyle(RowIndex row) const {
    if (!scene_.selection.contains(row)) {
        return scene_.styles.style(L"Normal");
    }
    return scene_.styles.style(scene_.focused ? L"Selected" : L"SelectedInactive");
}

Alignment Painter::alignment(const Column& column, const Style& style) const {
    if (style.alignment || !scene_.source) {
        return style.alignment.value_or(Alignment::left);
    }
    return scene_.source->alignment(column.index());
}

// Rows first and headings last, so that a row partly scrolled away ends under the headings.
void Painter::paintRows() {
    const Geometry& geometry = scene_.geometry;
    for (RowIndex row = geometry.firstRow(); row < geometry.endRow(); ++row) {
        if (needsPainting(geometry.rowRect(row))) {
            paintRow(row);
        }
    }
}

void Painter::paintRow(RowIndex row) {
    const Geometry& geometry = scene_.geometry;
    const Style& style = rowStyle(row);
    Rect dataArea = geometry.dataArea();
    for (const auto& column : scene_.columns) {
        Cell position{row, column->index()};
        if (needsPainting(intersection(geometry.cellRect(position), dataArea))) {
            paintCell(position, style);
        }
    }
    if (needsPainting(geometry.selectorRect(row))) {
        paintSelector(row, scene_.styles.style(L"RecordSelector"));
    }
}

TextBox Painter::textBox(const Scene& scene, const Column& column, const TextFont& font) {
    int width = scene.geometry.columns().width(column.index());
    int room = scene.geometry.measures().rowHeight - scene.padding.line - 2;
    return {width - scene.padding.line - 2 * scene.padding.side,
            std::max(room / font.lineHeight(), 1)};
}

void Painter::paintCell(Cell position, const Style& style) {
    const Column& column = *scene_.columns[static_cast<std::size_t>(position.column)];
    const Rect rect = scene_.geometry.cellRect(position);
    const Rect body{rect.left, rect.top, rect.right - scene_.padding.line,
                    rect.bottom - scene_.padding.line};
    Colors color = colors(style);
    fill(canvas_, body, color.back);
    fill(canvas_, {rect.left, body.bottom, rect.right, rect.bottom}, lineColor_);
    fill(canvas_, {body.right, rect.top, rect.right, body.bottom}, lineColor_);

    TextFont& font = scene_.fonts.get(column.font(), style.bold);
    TextBox box = textBox(scene_, column, font);
    scene_.cell.fetch(*scene_.source, position, column.wrapText(), box, font);
    SetTextColor(canvas_, color.text);
    // The first lines of all columns stand at one height, whether their cells wrap or not.
    int top = body.top + std::max(body.height() - box.lines * font.lineHeight(), 0) / 2;
    Rect inner{body.left + scene_.padding.side, top, body.right - scene_.padding.side, body.bottom};
    paintLines(inner, body, alignment(column, style), font);

    if (scene_.focused && position == scene_.selection.current()) {
        frame(canvas_, body, scene_.padding.line,
              GetSysColor(highContrast_ ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT));
    }
    ++paintedCells_;
}

void Painter::paintLines(const Rect& inner, const Rect& clip, Alignment alignment,
                         const TextFont& font) {
    SelectObject(canvas_, font.handle());
    Point at{0, inner.top};
    std::wstring_view shown = scene_.cell.shown;
    for (const TextLine& line : scene_.cell.lines) {
        at.x = lineStart(inner, alignment, line.width);
        if (line.ellipsis) {
            scene_.cell.text.assign(shown.substr(line.begin, line.length));
            scene_.cell.text.push_back(kEllipsis);
            drawText(canvas_, at, clip, scene_.cell.text);
        } else {
            drawText(canvas_, at, clip, shown.substr(line.begin, line.length));
        }
        at.y += font.lineHeight();
    }
}

void Painter::paintSelector(RowIndex row, const Style& style) {
    Rect rect = scene_.geometry.selectorRect(row);
    Rect body{rect.left, rect.top, rect.right - scene_.padding.line,
              rect.bottom - scene_.padding.line};
    Colors color = colors(style);
    fill(canvas_, rect, lineColor_);
    fill(canvas_, body, color.back);
    if (row == scene_.selection.current().row) {
        int size = scene_.padding.picture + 1;
        Point at{body.left + (body.width() - size) / 2,
                 body.top + (body.height() - (2 * size - 1)) / 2};
        drawTriangle(canvas_, Direction::right, at, size, color.text);
    }
}

void Painter::paintRest() {
    const Geometry& geometry = scene_.geometry;
    Rect data = geometry.dataArea();
    COLORREF back = colors(scene_.styles.style(L"Normal")).back;
    int right =
        geometry.measures().selectorWidth - geometry.scrollX() + geometry.columns().totalWidth();
    int bottom = geometry.endRow() == 0 ? data.top : geometry.rowRect(geometry.endRow() - 1).bottom;
    Rect beside{std::max(right, data.left), data.top, data.right, data.bottom};
    Rect below{0, std::max(bottom, data.top), data.right, data.bottom};
    fill(canvas_, intersection(beside, dirty_), back);
    fill(canvas_, intersection(below, dirty_), back);
}

void Painter::paintHeadings() {
    const Geometry& geometry = scene_.geometry;
    Rect area = geometry.headingArea();
    if (!needsPainting({0, 0, geometry.viewWidth(), area.bottom})) {
        return;
    }
    COLORREF back = colors(scene_.styles.style(L"Heading")).back;
    int right = area.left - geometry.scrollX() + geometry.columns().totalWidth();
    for (const auto& column : scene_.columns) {
        if (needsPainting(intersection(geometry.headingRect(column->index()), area))) {
            paintHeading(*column);
        }
    }
    Rect beside{std::max(right, area.left), 0, area.right, area.bottom};
    if (needsPainting(beside)) {
        scene_.theme.draw(canvas_, beside, HeadingState::normal, back);
    }
    Rect corner{0, 0, area.left, area.bottom};
    if (needsPainting(corner)) {
        scene_.theme.draw(canvas_, corner, HeadingState::normal, back);
    }
    fill(canvas_, {0, area.bottom - scene_.padding.line, area.right, area.bottom}, lineColor_);
}

void Painter::paintHeading(const Column& column) {
    Rect rect = scene_.geometry.headingRect(column.index());
    const Style& style = scene_.styles.style(column.headingStyle());
    Colors color = colors(style);
    bool pressed = column.index() == scene_.pressedColumn;
    bool hot = column.index() == scene_.hotColumn;
    scene_.theme.draw(canvas_, rect,
                      pressed ? HeadingState::pressed
                      : hot   ? HeadingState::hot
                              : HeadingState::normal,
                      color.back);

    Rect inner{rect.left + scene_.padding.side, rect.top,
               rect.right - scene_.padding.side - scene_.padding.line, rect.bottom};
    if (style.picture != HeadingPicture::none) {
        int size = scene_.padding.picture;
        Point at{inner.right - (2 * size - 1), inner.top + (inner.height() - size) / 2};
        Direction direction =
            style.picture == HeadingPicture::ascending ? Direction::up : Direction::down;
        if (at.x >= inner.left) {
            drawTriangle(canvas_, direction, at, size, color.text);
        }
        inner.right = at.x - scene_.padding.side;
    }
    TextFont& font = scene_.fonts.get(column.font(), style.bold);
    scene_.cell.layOut(column.caption(), inner.width(), font);
    SetTextColor(canvas_, color.text);
    inner.top += (inner.height() - font.lineHeight()) / 2;
    rect.right = inner.right + scene_.padding.side;
    paintLines(inner, rect, alignment(column, style), font);
}

}  // namespace grid
