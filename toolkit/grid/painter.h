// Painter: draws headings, record selectors and cells into a device context.
//
//   Painter painter(scene, canvas, screenDc);
//   painter.paint(dirty);
//   count += painter.paintedCells();
//
// The user-interface thread. A Painter is used for one paint. It makes no decisions: the scene says
// what is where and in which state.
#pragma once

#include "toolkit/forms/units.h"
#include "toolkit/grid/cell_text.h"
#include "toolkit/grid/column.h"
#include "toolkit/grid/heading_theme.h"
#include "toolkit/grid/model/geometry.h"
#include "toolkit/grid/model/group_view.h"
#include "toolkit/grid/model/heading_drag.h"
#include "toolkit/grid/model/selection.h"
#include "toolkit/grid/style.h"
#include "toolkit/grid/text_font.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace grid {

/// The distances between a cell's edge and its text, in device pixels.
struct Padding {
    int side = 0;     ///< Left and right of the text.
    int line = 1;     ///< The thickness of the grid lines.
    int picture = 0;  ///< Height of a heading's picture and of the current row's marker.
    int indent = 0;   ///< Of a group within another.

    static Padding forDpi(forms::Dpi dpi);
};

/// Everything a paint shows. References are to the grid's own parts.
struct Scene {
    const Geometry& geometry;
    const std::vector<std::unique_ptr<Column>>& columns;
    const StyleSheet& styles;
    const Selection& selection;
    const GroupView& groups;
    const std::wstring& groupByCaption;
    std::function<std::wstring(int group)> groupText;
    const DataSource* source;  ///< Null without one.
    const HeadingTheme& theme;
    TextFonts& fonts;
    CellText& cell;  ///< Working space.
    Padding padding;
    bool focused;
    int hotColumn;      ///< The heading under the mouse, or kNoColumn.
    int pressedColumn;  ///< The heading held down, or kNoColumn.
    std::optional<CarriedHeading> carried;
};

class Painter {
public:
    /// `visible` is queried for the parts that need painting; it may be `canvas` itself.
    Painter(const Scene& scene, HDC canvas, HDC visible);
    ~Painter();

    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;

    void paint(const Rect& dirty);

    /// How many cells of the data source were drawn.
    std::int64_t paintedCells() const { return paintedCells_; }

    /// The space for a cell's text.
    static TextBox textBox(const Scene& scene, const Column& column, const TextFont& font);
    /// The part of a group's row that toggles it when clicked.
    static Rect groupGlyph(const Geometry& geometry, const Padding& padding, RowIndex view,
                           int level);

private:
    struct Colors {
        COLORREF text;
        COLORREF back;
    };

    void paintHeadings();
    void paintHeading(const Column& column, const Rect& rect, HeadingState state,
                      HeadingPicture picture);
    HeadingState headingState(const Column& column) const;
    void paintGroupArea();
    void paintCarried();
    void paintRows();
    void paintRow(RowIndex view);
    void paintGroupRow(RowIndex view, int group);
    void paintSelector(RowIndex row, const Style& style);
    void paintCell(Cell position, RowIndex row, const Style& style);
    // The lines of the scene's cell text within `inner`. Antialiased letters may extend a pixel
    // beyond their width, so only `clip` cuts them off.
    void paintLines(const Rect& inner, const Rect& clip, Alignment alignment, const TextFont& font);
    void paintRest();

    bool needsPainting(const Rect& rect) const;
    Colors colors(const Style& style) const;
    const Style& rowStyle(RowIndex row) const;
    Alignment alignment(const Column& column, const Style& style) const;

    const Scene& scene_;
    HDC canvas_;
    HDC visible_;
    int savedState_;
    bool highContrast_;
    COLORREF lineColor_;
    Rect dirty_;
    std::int64_t paintedCells_ = 0;
};

}  // namespace grid
