// Font: a typeface by name and size in points, independent of the display; GdiFont: the handle
// that Windows draws with, made from a Font for one number of dots per inch.
//
//   Font fixed{L"Courier New", 9.0};
//   fixed.fixedPitch = true;
//   GdiFont handle(fixed, window.dpi());
//
// The values may be used by any thread, a handle by the thread that draws.
#pragma once

#include "toolkit/forms/units.h"

#include <windows.h>

#include <optional>
#include <string>

namespace forms {

struct Font {
    std::wstring name = {};
    double points = 9.0;
    bool bold = false;
    /// A GDI character set: 1 leaves the choice to Windows, 128 Japanese, 129 Korean, 134 and 136
    /// Chinese.
    int charset = DEFAULT_CHARSET;
    /// A hint for the font mapper if the face is not installed.
    bool fixedPitch = false;
    bool underline = false;

    bool operator==(const Font&) const = default;
};

/// The part of a font that a script needs: the face and its character set, in any size or weight.
struct FontFace {
    std::wstring name = {};
    int charset = DEFAULT_CHARSET;

    bool operator==(const FontFace&) const = default;
};

/// The font in that face, or as it is when there is none.
Font inFace(const Font& font, const std::optional<FontFace>& face);

/// The font of the system's message boxes, which is what dialogs are drawn with.
Font messageFont();

class GdiFont {
public:
    GdiFont() = default;
    GdiFont(const Font& font, Dpi dpi);
    ~GdiFont();

    GdiFont(GdiFont&& other) noexcept;
    GdiFont& operator=(GdiFont&& other) noexcept;

    HFONT handle() const { return handle_; }

    /// The height of one line of text without external leading.
    Pixels lineHeight() const;
    Pixels textWidth(const std::wstring& text) const;

private:
    HFONT handle_ = nullptr;
};

}  // namespace forms
