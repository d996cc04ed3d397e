#include "toolkit/grid/text_font.h"

#include <gtest/gtest.h>

#include <string>

namespace grid {
namespace {

// What Windows itself says, for comparison with the remembered widths.
class SystemMeasure {
public:
    explicit SystemMeasure(const TextFont& font) : dc_(::CreateCompatibleDC(nullptr)) {
        ::SelectObject(dc_, font.handle());
    }
    ~SystemMeasure() { ::DeleteDC(dc_); }
    int width(const std::wstring& text) const {
        SIZE size{};
        ::GetTextExtentPoint32W(dc_, text.data(), static_cast<int>(text.size()), &size);
        return static_cast<int>(size.cx);
    }

private:
    HDC dc_;
};

class TextFontTest : public testing::TestWithParam<const wchar_t*> {
protected:
    TextFontTest() : font(forms::Font{GetParam(), 9.0}, forms::Dpi(144)), system(font) {}
    TextFont font;
    SystemMeasure system;
};

TEST_P(TextFontTest, WidthsAreThoseOfWindows) {
    for (const wchar_t* text :
         {L"", L"The call was routed", L"AVATAR To. Wj", L"\u00E4\u00DF\u00E9\u017F",
          L"\u65E5\u672C\u8A9E mixed", L"\U0001F600 done", L"\u2026"}) {
        EXPECT_EQ(font.width(text), system.width(text));
    }
}

TEST_P(TextFontTest, FitIsTheLongestStartThatFits) {
    const std::wstring texts[] = {L"The call was routed to agent group 17",
                                  L"Fehler \u65E5\u672C\u8A9E im Dienst \u65E5\u672C"};
    for (const std::wstring& text : texts) {
        for (int limit = 0; limit < 400; limit += 7) {
            TextMeasure::Fit fit = font.fit(text, limit);
            EXPECT_LE(fit.width, limit);
            EXPECT_EQ(fit.width, system.width(text.substr(0, fit.count)));
            if (fit.count < text.size()) {
                EXPECT_GT(system.width(text.substr(0, fit.count + 1)), limit);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Faces, TextFontTest,
                         testing::Values(L"Segoe UI", L"Courier New", L"Times New Roman"));

TEST(TextFonts, AreMadeOnce) {
    TextFonts fonts;
    forms::Font font{L"Segoe UI", 9.0};
    TextFont& first = fonts.get(font);
    EXPECT_EQ(&fonts.get(font), &first);
    EXPECT_NE(&fonts.get(font, true), &first);
}

}  // namespace
}  // namespace grid
