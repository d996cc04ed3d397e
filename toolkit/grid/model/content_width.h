// Finds the width that shows the texts of a column in full.
//
//   ContentWidth content(measure);
//   for (const std::wstring& text : textsOnView) content.add(text, LineBreaks::blank);
//   int width = content.bounded(padding, smallest, largest);
//
// One thread (the measure's).
#pragma once

#include "toolkit/grid/model/text_layout.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace grid {

class ContentWidth {
public:
    /// At most `most` elements of a text are measured: longer ones are wider than any column.
    explicit ContentWidth(TextMeasure& measure, std::size_t most = 1024)
        : measure_(measure), most_(most) {}

    /// A cell's text as its source gives it. With kept line breaks the longest line counts.
    void add(std::wstring_view text, LineBreaks breaks);

    /// Something else that must fit, such as a heading with its picture.
    void addPixels(int width) { widest_ = std::max(widest_, width); }

    int widest() const { return widest_; }
    int bounded(int padding, int smallest, int largest) const {
        return std::min(std::max(widest_ + padding, smallest), largest);
    }

private:
    TextMeasure& measure_;
    std::size_t most_;
    std::wstring shown_;
    int widest_ = 0;
};

}  // namespace grid
