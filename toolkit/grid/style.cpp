#include "toolkit/grid/style.h"

namespace grid {
namespace {

// How much of the highlight colour a selected row takes: its text stays as readable as the rest.
constexpr int kSelectionPercent = 20;
constexpr int kInactivePercent = 15;

BYTE mix(BYTE over, BYTE under, int percent) {
    return static_cast<BYTE>((over * percent + under * (100 - percent) + 50) / 100);
}

COLORREF mix(COLORREF over, COLORREF under, int percent) {
    return RGB(mix(GetRValue(over), GetRValue(under), percent),
               mix(GetGValue(over), GetGValue(under), percent),
               mix(GetBValue(over), GetBValue(under), percent));
}

Style colored(int text, int back) {
    Style style;
    style.text = Color::system(text);
    style.back = Color::system(back);
    return style;
}

Style selection(int index, int percent) {
    Style style;
    style.text = Color::system(COLOR_WINDOWTEXT, COLOR_HIGHLIGHTTEXT);
    style.back = Color::tint(index, percent, COLOR_HIGHLIGHT);
    return style;
}

Style sortedHeading(HeadingPicture picture) {
    Style style = colored(COLOR_BTNTEXT, COLOR_BTNFACE);
    style.picture = picture;
    return style;
}

Style bigRed() {
    Style style;
    style.text = Color::rgb(192, 0, 0);
    style.bold = true;
    return style;
}

}  // namespace

Color Color::rgb(int red, int green, int blue) {
    Color color;
    color.fixed_ = RGB(red, green, blue);
    return color;
}

Color Color::system(int index, int inHighContrast) { return tint(index, 100, inHighContrast); }

Color Color::tint(int index, int percent, int inHighContrast) {
    Color color;
    color.index_ = index;
    color.highContrastIndex_ = inHighContrast;
    color.percent_ = percent;
    return color;
}

COLORREF Color::resolve(bool highContrast) const {
    if (fixed_) return *fixed_;
    if (highContrast) return ::GetSysColor(highContrastIndex_);
    return mix(::GetSysColor(index_), ::GetSysColor(COLOR_WINDOW), percent_);
}

bool highContrastOn() {
    HIGHCONTRASTW setting{};
    setting.cbSize = sizeof setting;
    return ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof setting, &setting, 0) &&
           (setting.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

StyleSheet::StyleSheet() {
    const Style heading = colored(COLOR_BTNTEXT, COLOR_BTNFACE);
    styles_ = {
        {L"Normal", Style{}},
        {L"Heading", heading},
        {L"Footing", heading},
        {L"Selected", selection(COLOR_HIGHLIGHT, kSelectionPercent)},
        {L"SelectedInactive", selection(COLOR_WINDOWTEXT, kInactivePercent)},
        {L"Caption", heading},
        {L"HighlightRow", colored(COLOR_INFOTEXT, COLOR_INFOBK)},
        {L"EvenRow", Style{}},
        {L"OddRow", Style{}},
        {L"RecordSelector", heading},
        {L"FilterBar", Style{}},
        {L"Ascending", sortedHeading(HeadingPicture::ascending)},
        {L"Descending", sortedHeading(HeadingPicture::descending)},
        {L"BigRed", bigRed()},
        {L"imgSubscriber", Style{}},
    };
}

}  // namespace grid
