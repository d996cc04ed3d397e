// CellText: a cell's text, laid out as it is drawn.
//
//   cell.fetch(source, {row, column}, wrap, {width, lines}, font);
//   if (!cell.whole) offerTip(cell.text);
//
// The user-interface thread. The buffers are reused from cell to cell, so that painting a page does
// not allocate.
#pragma once

#include "toolkit/grid/model/data_source.h"
#include "toolkit/grid/model/shapes.h"
#include "toolkit/grid/model/text_layout.h"

#include <string>
#include <vector>

namespace grid {

struct CellText {
    std::wstring text;            ///< As the source gave it.
    std::wstring shown;           ///< What can be drawn of it.
    std::vector<TextLine> lines;  ///< Into shown.
    bool whole = true;            ///< Whether the lines show all of it.

    /// Without `wrap` the box's number of lines does not matter.
    void fetch(const DataSource& source, Cell cell, bool wrap, TextBox box, TextMeasure& measure);
    /// A text that comes from elsewhere, such as a caption, on one line.
    void layOut(const std::wstring& newText, int width, TextMeasure& measure);

private:
    void layOut(bool wrap, TextBox box, TextMeasure& measure);
};

}  // namespace grid
