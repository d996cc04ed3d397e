#include "toolkit/grid/cell_text.h"

#include <algorithm>

namespace grid {

void CellText::fetch(const DataSource& source, Cell cell, bool wrap, TextBox box,
                     TextMeasure& measure) {
    text.clear();
    source.cellText(cell.row, cell.column, text);
    layOut(wrap, box, measure);
}

void CellText::layOut(const std::wstring& newText, int width, TextMeasure& measure) {
    text = newText;
    layOut(false, {width, 1}, measure);
}

void CellText::layOut(bool wrap, TextBox box, TextMeasure& measure) {
    if (!wrap) box.lines = 1;
    // A letter takes at least a pixel: more than this many cannot be on show.
    auto most = static_cast<std::size_t>(std::max(box.width, 0) + 1) *
                static_cast<std::size_t>(std::max(box.lines, 1));
    showable(text, wrap ? LineBreaks::keep : LineBreaks::blank, most + 1, shown);
    whole = layOutText(shown, box, measure, lines);
}

}  // namespace grid
