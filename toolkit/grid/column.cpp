#include "toolkit/grid/column.h"

#include "toolkit/grid/grid.h"

#include <algorithm>
#include <utility>

namespace grid {
namespace {

// 80 pixels at 96 dots per inch.
constexpr forms::Twips kDefaultWidth{1200};

}  // namespace

Column::Column(Grid& grid, int index, std::wstring dataField)
    : grid_(grid),
      index_(index),
      dataField_(std::move(dataField)),
      caption_(dataField_),
      width_(kDefaultWidth) {}

void Column::setCaption(const std::wstring& caption) {
    if (caption_ != caption) {
        caption_ = caption;
        grid_.headingChanged(*this);
    }
}

void Column::setWidth(forms::Twips width) {
    width = std::max(width, forms::Twips(0));
    if (width_ != width) {
        width_ = width;
        grid_.columnsMoved();
    }
}

void Column::autoSize() { setWidth(grid_.contentWidth(*this)); }

void Column::setFillsRest(bool fills) {
    fillsRest_ = fills;
    grid_.columnsMoved();
}

void Column::setWrapText(bool wrap) {
    if (wrapText_ != wrap) {
        wrapText_ = wrap;
        grid_.cellsChanged(*this);
    }
}

void Column::setVisible(bool visible) {
    if (visible_ != visible) {
        visible_ = visible;
        grid_.columnsMoved();
    }
}

const forms::Font& Column::font() const { return font_ ? *font_ : grid_.font(); }

void Column::setFont(const forms::Font& font) {
    if (!font_ || *font_ != font) {
        font_ = font;
        grid_.headingChanged(*this);
        grid_.cellsChanged(*this);
    }
}

void Column::setHeadingStyle(const std::wstring& name) {
    grid_.style(name);
    if (headingStyle_ != name) {
        headingStyle_ = name;
        grid_.headingChanged(*this);
    }
}

}  // namespace grid
