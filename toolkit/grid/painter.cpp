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
            forms::scaled(4, dpi).value, forms::scaled(20, dpi).value};
}

Painter::Painter(const Scene& scene, HDC canvas, HDC visible)
    : scene_(scene),
      canvas_(canvas),
      visible_(visible),
      savedState_(::SaveDC(canvas)),
      highContrast_(highContrastOn()),
      lineColor_(Color::tint(COLOR_WINDOWTEXT, 12, COLOR_WINDOWTEXT).resolve(highContrast_)) {
    ::SetBkMode(canvas_, TRANSPARENT);
    ::SetTextAlign(canvas_, TA_LEFT | TA_TOP);
}

Painter::~Painter() { ::RestoreDC(canvas_, savedState_); }

void Painter::paint(const Rect& dirty) {
    dirty_ = dirty;
    paintRest();
    paintRows();
    paintHeadings();
    paintGroupArea();
    paintCarried();
}

bool Painter::needsPainting(const Rect& rect) const {
    RECT area = toRect(intersection(rect, dirty_));
    return area.left < area.right && area.top < area.bottom && ::RectVisible(visible_, &area);
}

Painter::Colors Painter::colors(const Style& style) const {
    return {style.text.resolve(highContrast_), style.back.resolve(highContrast_)};
}

const Style& Painter::rowStyle(RowIndex row) const {
    if (!scene_.selection.contains(row)) return scene_.styles.style(L"Normal");
    return scene_.styles.style(scene_.focused ? L"Selected" : L"SelectedInactive");
}

Alignment Painter::alignment(const Column& column, const Style& style) const {
    if (style.alignment || !scene_.source) return style.alignment.value_or(Alignment::left);
    return scene_.source->alignment(column.index());
}

// Rows first and headings last, so that a row partly scrolled away ends under the headings.
void Painter::paintRows() {
    const Geometry& geometry = scene_.geometry;
    for (RowIndex row = geometry.firstRow(); row < geometry.endRow(); ++row) {
        if (needsPainting(geometry.rowRect(row))) paintRow(row);
    }
}

void Painter::paintRow(RowIndex view) {
    const Geometry& geometry = scene_.geometry;
    const Grouping::Place place = scene_.groups.grouping().at(view);
    if (place.group != kNoGroup) {
        paintGroupRow(view, place.group);
        return;
    }
    const Style& style = rowStyle(view);
    Rect dataArea = geometry.dataArea();
    for (const auto& column : scene_.columns) {
        Cell position{view, column->index()};
        if (needsPainting(intersection(geometry.cellRect(position), dataArea))) {
            paintCell(position, place.row, style);
        }
    }
    if (needsPainting(geometry.selectorRect(view))) {
        paintSelector(view, scene_.styles.style(L"RecordSelector"));
    }
}

Rect Painter::groupGlyph(const Geometry& geometry, const Padding& padding, RowIndex view,
                         int level) {
    Rect rect = geometry.rowRect(view);
    rect.left = level * padding.indent;
    rect.right = rect.left + padding.indent;
    return rect;
}

void Painter::paintGroupRow(RowIndex view, int group) {
    const Grouping::Group& shown = scene_.groups.grouping().group(group);
    const bool selected = scene_.selection.contains(view);
    const Style& style = selected ? rowStyle(view) : scene_.styles.style(L"Caption");
    const Colors color = colors(style);
    const Rect rect = scene_.geometry.rowRect(view);
    const Rect body{rect.left, rect.top, rect.right, rect.bottom - scene_.padding.line};
    fill(canvas_, body, color.back);
    fill(canvas_, {rect.left, body.bottom, rect.right, rect.bottom}, lineColor_);

    const Rect glyph = groupGlyph(scene_.geometry, scene_.padding, view, shown.level);
    const int size = scene_.padding.picture + 1;
    const int base = 2 * size - 1;
    const int across = shown.unfolded ? base : size;
    const int down = shown.unfolded ? size : base;
    drawTriangle(canvas_, shown.unfolded ? Direction::down : Direction::right,
                 {glyph.left + (glyph.width() - across) / 2, body.top + (body.height() - down) / 2},
                 size, color.text);

    const Column& column = *scene_.columns[static_cast<std::size_t>(
        scene_.groups.columns()[static_cast<std::size_t>(shown.level)].column)];
    TextFont& font = scene_.fonts.get(column.font(), style.bold);
    const Rect inner{glyph.right + scene_.padding.side,
                     body.top + std::max(body.height() - font.lineHeight(), 0) / 2,
                     body.right - scene_.padding.side, body.bottom};
    scene_.cell.layOut(scene_.groupText(group), inner.width(), font);
    ::SetTextColor(canvas_, color.text);
    paintLines(inner, body, Alignment::left, font);
    if (scene_.focused && view == scene_.selection.current().row) {
        frame(canvas_, body, scene_.padding.line,
              ::GetSysColor(highContrast_ ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT));
    }
}

TextBox Painter::textBox(const Scene& scene, const Column& column, const TextFont& font) {
    int width = scene.geometry.columns().width(column.index());
    int room = scene.geometry.measures().rowHeight - scene.padding.line - 2;
    return {width - scene.padding.line - 2 * scene.padding.side,
            std::max(room / font.lineHeight(), 1)};
}

void Painter::paintCell(Cell position, RowIndex row, const Style& style) {
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
    scene_.cell.fetch(*scene_.source, {row, position.column}, column.wrapText(), box, font);
    ::SetTextColor(canvas_, color.text);
    // The first lines of all columns stand at one height, whether their cells wrap or not.
    int top = body.top + std::max(body.height() - box.lines * font.lineHeight(), 0) / 2;
    Rect inner{body.left + scene_.padding.side, top, body.right - scene_.padding.side, body.bottom};
    paintLines(inner, body, alignment(column, style), font);

    if (scene_.focused && position == scene_.selection.current()) {
        frame(canvas_, body, scene_.padding.line,
              ::GetSysColor(highContrast_ ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT));
    }
    ++paintedCells_;
}

void Painter::paintLines(const Rect& inner, const Rect& clip, Alignment alignment,
                         const TextFont& font) {
    ::SelectObject(canvas_, font.handle());
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
    if (!needsPainting({0, area.top, geometry.viewWidth(), area.bottom})) return;
    COLORREF back = colors(scene_.styles.style(L"Heading")).back;
    int right = area.left - geometry.scrollX() + geometry.columns().totalWidth();
    for (const auto& column : scene_.columns) {
        const Rect rect = geometry.headingRect(column->index());
        if (needsPainting(intersection(rect, area))) {
            paintHeading(*column, rect, headingState(*column),
                         scene_.styles.style(column->headingStyle()).picture);
        }
    }
    Rect beside{std::max(right, area.left), area.top, area.right, area.bottom};
    if (needsPainting(beside)) scene_.theme.draw(canvas_, beside, HeadingState::normal, back);
    Rect corner{0, area.top, area.left, area.bottom};
    if (needsPainting(corner)) scene_.theme.draw(canvas_, corner, HeadingState::normal, back);
    fill(canvas_, {0, area.bottom - scene_.padding.line, area.right, area.bottom}, lineColor_);
}

HeadingState Painter::headingState(const Column& column) const {
    if (column.index() == scene_.pressedColumn) return HeadingState::pressed;
    return column.index() == scene_.hotColumn ? HeadingState::hot : HeadingState::normal;
}

void Painter::paintHeading(const Column& column, const Rect& rect, HeadingState state,
                           HeadingPicture picture) {
    const Style& style = scene_.styles.style(column.headingStyle());
    Colors color = colors(style);
    scene_.theme.draw(canvas_, rect, state, color.back);

    Rect inner{rect.left + scene_.padding.side, rect.top,
               rect.right - scene_.padding.side - scene_.padding.line, rect.bottom};
    if (picture != HeadingPicture::none) {
        int size = scene_.padding.picture;
        Point at{inner.right - (2 * size - 1), inner.top + (inner.height() - size) / 2};
        Direction direction =
            picture == HeadingPicture::ascending ? Direction::up : Direction::down;
        if (at.x >= inner.left) drawTriangle(canvas_, direction, at, size, color.text);
        inner.right = at.x - scene_.padding.side;
    }
    TextFont& font = scene_.fonts.get(column.font(), style.bold);
    scene_.cell.layOut(column.caption(), inner.width(), font);
    ::SetTextColor(canvas_, color.text);
    inner.top += (inner.height() - font.lineHeight()) / 2;
    const Rect clip{rect.left, rect.top, inner.right + scene_.padding.side, rect.bottom};
    paintLines(inner, clip, alignment(column, style), font);
}

void Painter::paintGroupArea() {
    const GroupArea& area = scene_.geometry.groupArea();
    if (area.strip().empty() || !needsPainting(area.strip())) return;
    const Style& style = scene_.styles.style(L"Caption");
    const Colors color = colors(style);
    const Rect strip = area.strip();
    fill(canvas_, {strip.left, strip.top, strip.right, strip.bottom - scene_.padding.line},
         color.back);
    fill(canvas_, {strip.left, strip.bottom - scene_.padding.line, strip.right, strip.bottom},
         lineColor_);
    for (int level = 0; level < area.levelCount(); ++level) {
        const GroupColumn& group = scene_.groups.columns()[static_cast<std::size_t>(level)];
        const Column& column = *scene_.columns[static_cast<std::size_t>(group.column)];
        const Rect chip = area.chip(level);
        paintHeading(column, chip, headingState(column),
                     group.descending ? HeadingPicture::descending : HeadingPicture::ascending);
        frame(canvas_, chip, scene_.padding.line, lineColor_);
    }
    if (area.levelCount() == 0 && !scene_.columns.empty()) {
        TextFont& font = scene_.fonts.get(scene_.columns.front()->font(), style.bold);
        const int side = 2 * scene_.padding.side;
        const Rect inner{strip.left + side,
                         strip.top + std::max(strip.height() - font.lineHeight(), 0) / 2,
                         strip.right - side, strip.bottom};
        scene_.cell.layOut(scene_.groupByCaption, inner.width(), font);
        ::SetTextColor(canvas_, color.text);
        paintLines(inner, strip, Alignment::left, font);
    }
}

// Above everything else, like a thing that is held in the hand.
void Painter::paintCarried() {
    if (!scene_.carried) return;
    const CarriedHeading& carried = *scene_.carried;
    fill(canvas_, carried.mark, ::GetSysColor(COLOR_HIGHLIGHT));
    if (needsPainting(carried.rect)) {
        const Column& column = *scene_.columns[static_cast<std::size_t>(carried.column)];
        paintHeading(column, carried.rect, HeadingState::hot, HeadingPicture::none);
        frame(canvas_, carried.rect, scene_.padding.line, ::GetSysColor(COLOR_HIGHLIGHT));
    }
}

}  // namespace grid
