#include "toolkit/grid/text_font.h"

#include <algorithm>

namespace grid {
namespace {

// Windows takes the length of a text as an int; no line is as long as this.
constexpr std::size_t kMaxMeasured = 16'384;

int length(std::wstring_view text) { return static_cast<int>(std::min(text.size(), kMaxMeasured)); }

}  // namespace

TextFont::TextFont(const forms::Font& font, forms::Dpi dpi)
    : font_(font, dpi), dc_(::CreateCompatibleDC(nullptr)) {
    ::SelectObject(dc_, font_.handle());
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(dc_, &metrics);
    lineHeight_ = std::max(static_cast<int>(metrics.tmHeight), 1);
    ::GetCharWidth32W(dc_, 0, kRemembered - 1, widths_.data());
    ellipsisWidth_ = widthBySystem(std::wstring_view(&kEllipsis, 1));
}

TextFont::~TextFont() { ::DeleteDC(dc_); }

TextMeasure::Fit TextFont::fit(std::wstring_view text, int limit) {
    Fit fit;
    for (wchar_t c : text) {
        if (c >= kRemembered) return fitBySystem(text, limit);
        if (fit.width + widths_[c] > limit) break;
        fit.width += widths_[c];
        ++fit.count;
    }
    return fit;
}

TextMeasure::Fit TextFont::fitBySystem(std::wstring_view text, int limit) const {
    int count = 0;
    SIZE size{};
    ::GetTextExtentExPointW(dc_, text.data(), length(text), std::max(limit, 0), &count, nullptr,
                            &size);
    std::size_t fitting = static_cast<std::size_t>(count);
    return {fitting, widthBySystem(text.substr(0, fitting))};
}

int TextFont::width(std::wstring_view text) {
    if (text.size() == 1 && text.front() == kEllipsis) return ellipsisWidth_;
    int width = 0;
    for (wchar_t c : text) {
        if (c >= kRemembered) return widthBySystem(text);
        width += widths_[c];
    }
    return width;
}

int TextFont::widthBySystem(std::wstring_view text) const {
    SIZE size{};
    ::GetTextExtentPoint32W(dc_, text.data(), length(text), &size);
    return static_cast<int>(size.cx);
}

TextFont& TextFonts::get(const forms::Font& font, bool bold) {
    forms::Font wanted = font;
    wanted.bold = font.bold || bold;
    auto found = std::find_if(fonts_.begin(), fonts_.end(),
                              [&](const Entry& entry) { return entry.font == wanted; });
    if (found == fonts_.end()) {
        fonts_.push_back({wanted, std::make_unique<TextFont>(wanted, dpi_)});
        found = std::prev(fonts_.end());
    }
    return *found->made;
}

void TextFonts::clear(forms::Dpi dpi) {
    fonts_.clear();
    dpi_ = dpi;
}

}  // namespace grid
