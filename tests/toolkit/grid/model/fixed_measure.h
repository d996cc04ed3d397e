// A font for tests in which every code point is ten pixels wide.
#pragma once

#include "toolkit/grid/model/text_layout.h"
#include "toolkit/grid/model/text_units.h"

#include <algorithm>

namespace grid {

class FixedMeasure : public TextMeasure {
public:
    static constexpr int kWidth = 10;

    Fit fit(std::wstring_view text, int limit) override {
        Fit fit;
        while (fit.count < text.size() && fit.width + kWidth <= limit) {
            fit.count += codePointLength(text, fit.count);
            fit.width += kWidth;
        }
        return fit;
    }

    int width(std::wstring_view text) override {
        int width = 0;
        for (std::size_t i = 0; i < text.size(); i += codePointLength(text, i)) {
            width += kWidth;
        }
        return width;
    }
};

}  // namespace grid
