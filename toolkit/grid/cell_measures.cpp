#include "toolkit/grid/cell_measures.h"

#include "toolkit/grid/model/content_width.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace grid {
namespace {

int pictureWidth(const Padding& padding) { return padding.side + 2 * padding.picture - 1; }

bool hasPicture(const Scene& scene, const Column& column) {
    return scene.styles.style(column.headingStyle()).picture != HeadingPicture::none;
}

// The rows of the source that are on view. Where all groups are folded, some that will be seen when
// one is opened.
std::vector<RowIndex> sampleRows(const Scene& scene) {
    std::vector<RowIndex> rows;
    const Geometry& geometry = scene.geometry;
    for (RowIndex view = geometry.firstRow(); view < geometry.endRow(); ++view) {
        const RowIndex row = scene.groups.grouping().at(view).row;
        if (row != kNoRow) rows.push_back(row);
    }
    if (rows.empty()) {
        rows.resize(
            static_cast<std::size_t>(std::min(geometry.rowsOnAPage(), scene.source->rowCount())));
        std::iota(rows.begin(), rows.end(), RowIndex{0});
    }
    return rows;
}

int widestLine(const CellText& cell) {
    int widest = 0;
    for (const TextLine& line : cell.lines) {
        widest = std::max(widest, line.width);
    }
    return widest;
}

}  // namespace

int headingWidth(const Scene& scene, const Column& column) {
    const Style& style = scene.styles.style(column.headingStyle());
    std::wstring shown;
    showable(column.caption(), LineBreaks::blank, column.caption().size(), shown);
    return scene.fonts.get(column.font(), style.bold).width(shown) +
           (hasPicture(scene, column) ? pictureWidth(scene.padding) : 0);
}

int chipWidth(const Scene& scene, const Column& column) {
    return headingWidth(scene, column) +
           (hasPicture(scene, column) ? 0 : pictureWidth(scene.padding)) + 2 * scene.padding.side +
           scene.padding.line;
}

int contentWidth(const Scene& scene, const Column& column) {
    ContentWidth content(scene.fonts.get(column.font()));
    content.addPixels(headingWidth(scene, column));
    const LineBreaks breaks = column.wrapText() ? LineBreaks::keep : LineBreaks::blank;
    for (const RowIndex row : sampleRows(scene)) {
        scene.cell.text.clear();
        scene.source->cellText(row, column.index(), scene.cell.text);
        content.add(scene.cell.text, breaks);
    }
    const int around = 2 * scene.padding.side + scene.padding.line;
    const int largest =
        std::max(scene.geometry.dataArea().width(), headingWidth(scene, column) + around);
    return content.bounded(around, 0, largest);
}

bool textCutOff(const Scene& scene, Cell viewCell) {
    const Column& column = *scene.columns[static_cast<std::size_t>(viewCell.column)];
    TextFont& font = scene.fonts.get(column.font());
    const TextBox box = Painter::textBox(scene, column, font);
    if (viewCell.row == kNoRow) return headingWidth(scene, column) > box.width;
    if (!scene.source || viewCell.row >= scene.geometry.rowCount()) return false;
    const RowIndex row = scene.groups.grouping().at(viewCell.row).row;
    scene.cell.fetch(*scene.source, {row, viewCell.column}, column.wrapText(), box, font);
    const int widest = widestLine(scene.cell);
    const int left = scene.geometry.cellRect(viewCell).left + scene.padding.side;
    const Rect data = scene.geometry.dataArea();
    const bool hidden = left < data.left || left + widest > data.right;
    return !scene.cell.whole || (hidden && widest > 0);
}

}  // namespace grid
