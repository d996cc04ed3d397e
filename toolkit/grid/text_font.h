// TextFont: a font for drawing and measuring text; TextFonts: a cache of those in use.
//
//   TextFont& font = fonts.get(column.font(), style.bold);
//   ::SelectObject(dc, font.handle());
//   int width = font.width(L"text");
//
// The user-interface thread. Widths of common letters are cached, so that measuring a line of trace
// text is a few additions; other scripts are measured by Windows, which may take their glyphs from
// other fonts.
#pragma once

#include "toolkit/forms/font.h"
#include "toolkit/grid/model/text_layout.h"

#include <windows.h>

#include <array>
#include <memory>
#include <vector>

namespace grid {

class TextFont : public TextMeasure {
public:
    TextFont(const forms::Font& font, forms::Dpi dpi);
    ~TextFont() override;

    TextFont(const TextFont&) = delete;
    TextFont& operator=(const TextFont&) = delete;

    HFONT handle() const { return font_.handle(); }
    int lineHeight() const { return lineHeight_; }

    Fit fit(std::wstring_view text, int limit) override;
    int width(std::wstring_view text) override;

private:
    // The Latin letters with their accents; their glyphs are in every text font.
    static constexpr std::size_t kRemembered = 0x180;

    Fit fitBySystem(std::wstring_view text, int limit) const;
    int widthBySystem(std::wstring_view text) const;

    forms::GdiFont font_;
    HDC dc_;
    int lineHeight_ = 0;
    int ellipsisWidth_ = 0;
    std::array<int, kRemembered> widths_{};
};

class TextFonts {
public:
    /// Creates the font on first use. The reference is valid until clear().
    TextFont& get(const forms::Font& font, bool bold = false);

    /// Drops all fonts; called when their sizes are for another display.
    void clear(forms::Dpi dpi);

private:
    struct Entry {
        forms::Font font;
        std::unique_ptr<TextFont> made;
    };

    forms::Dpi dpi_;
    std::vector<Entry> fonts_;
};

}  // namespace grid
