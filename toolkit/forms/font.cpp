#include "toolkit/forms/font.h"

#include "toolkit/forms/window.h"

#include <cmath>
#include <utility>

namespace forms {
namespace {

// A screen device context that has the font selected, for measuring.
class Measuring {
public:
    explicit Measuring(HFONT font) : dc_(::GetDC(nullptr)), previous_(::SelectObject(dc_, font)) {}
    ~Measuring() {
        ::SelectObject(dc_, previous_);
        ::ReleaseDC(nullptr, dc_);
    }
    Measuring(const Measuring&) = delete;
    Measuring& operator=(const Measuring&) = delete;

    HDC dc() const { return dc_; }

private:
    HDC dc_;
    HGDIOBJ previous_;
};

}  // namespace

Font messageFont() {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    // Asked for at 72 dots per inch a height is a number of points, but it would come rounded; at
    // ten times that it keeps one decimal.
    constexpr unsigned kTenthsOfPoint = 720;
    if (!::SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                                      kTenthsOfPoint)) {
        throwLastError("SystemParametersInfoForDpi");
    }
    const LOGFONTW& logical = metrics.lfMessageFont;
    Font font;
    font.name = logical.lfFaceName;
    font.points = std::abs(static_cast<double>(logical.lfHeight)) / 10;
    font.bold = logical.lfWeight >= FW_BOLD;
    font.charset = logical.lfCharSet;
    return font;
}

Font inFace(const Font& font, const std::optional<FontFace>& face) {
    Font result = font;
    if (face) {
        result.name = face->name;
        result.charset = face->charset;
    }
    return result;
}

GdiFont::GdiFont(const Font& font, Dpi dpi) {
    const int height = -static_cast<int>(std::lround(font.points * dpi.value / kPointsPerInch));
    const DWORD pitch = font.fixedPitch ? DWORD{FIXED_PITCH | FF_MODERN} : DWORD{DEFAULT_PITCH};
    handle_ = ::CreateFontW(height, 0, 0, 0, font.bold ? FW_BOLD : FW_NORMAL, FALSE, font.underline,
                            FALSE, static_cast<DWORD>(font.charset), OUT_DEFAULT_PRECIS,
                            CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, pitch, font.name.c_str());
    if (!handle_) throwLastError("CreateFontW");
}

GdiFont::~GdiFont() {
    if (handle_) ::DeleteObject(handle_);
}

GdiFont::GdiFont(GdiFont&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

GdiFont& GdiFont::operator=(GdiFont&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

Pixels GdiFont::lineHeight() const {
    const Measuring screen(handle_);
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(screen.dc(), &metrics);
    return Pixels(metrics.tmHeight);
}

Pixels GdiFont::textWidth(const std::wstring& text) const {
    const Measuring screen(handle_);
    SIZE size{};
    ::GetTextExtentPoint32W(screen.dc(), text.c_str(), static_cast<int>(text.size()), &size);
    return Pixels(size.cx);
}

}  // namespace forms
