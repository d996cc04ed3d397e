// That no caption is cut off in any language: each is measured in its control's own font and
// compared with the room that the control has for it, on displays of two densities.
#include "engine/jet/text.h"
#include "src/i18n/language_codes.h"
#include "src/ui/about/frm_about.h"
#include "tests/src/ui/language_libraries.h"
#include "tests/src/ui/macro_traces_test.h"
#include "tests/support/language_table.h"

#include <windows.h>
#include <commctrl.h>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <algorithm>
#include <functional>
#include <tuple>

namespace {

using namespace forms::literals;
using forms::Control;

/// What the system draws around a text, in pixels at 96 dots per inch: a button's edges on both
/// sides, above and below; the box or circle before a text; the ends of a frame's line.
constexpr int kButtonEdges = 10;
constexpr int kButtonHeights = 6;
constexpr int kOptionMark = 20;
constexpr int kFrameEnds = 18;
constexpr int kTabEdges = 8;
constexpr int kHeadingEdges = 8;

/// Windows' own message font, Segoe UI in 9 points, is about an eighth wider than the one that
/// stands in for it where these tests usually run; a sixth is kept free.
LONG withReserve(LONG width) { return width + width / 6; }

std::wstring withoutMark(std::wstring text) {
    const std::size_t mark = text.find(L'&');
    if (mark != std::wstring::npos) text.erase(mark, 1);
    return text;
}

SIZE clientSize(HWND window) {
    RECT rect{};
    ::GetClientRect(window, &rect);
    return {rect.right, rect.bottom};
}

RECT placeOf(const Control& control) {
    RECT rect{};
    ::GetWindowRect(control.hwnd(), &rect);
    return rect;
}

/// The room that a text takes when its lines break at the given width.
SIZE brokenAt(LONG width, const Control& control) {
    const HDC dc = ::GetDC(control.hwnd());
    const HGDIOBJ previous = ::SelectObject(dc, control.fontHandle());
    RECT rect{0, 0, width, 0};
    const std::wstring text = control.text();
    ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &rect,
                DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    ::SelectObject(dc, previous);
    ::ReleaseDC(control.hwnd(), dc);
    return {rect.right, rect.bottom};
}

/// A failure names form, control, text and what is missing.
class Room {
public:
    Room(const forms::Form& form, const std::wstring& what, const std::wstring& text)
        : where_{toUtf8(form.caption()) + ", " + toUtf8(what) + ", \"" + toUtf8(text) + "\""} {}

    void expect(const char* side, LONG needed, LONG there) const {
        EXPECT_LE(needed, there) << where_ << ": " << side;
    }

private:
    static std::string toUtf8(const std::wstring& text) { return jet::toUtf8(fromWide(text)); }

    std::string where_;
};

/// Language and density.
class LayoutTest : public MacroTracesTest,
                   public testing::WithParamInterface<std::tuple<std::string, unsigned>> {
protected:
    LayoutTest() {
        const std::string& code = std::get<0>(GetParam());
        LanguageFolder::use(modLocalize::languageOfCode(std::u16string{code.begin(), code.end()}));
    }
    ~LayoutTest() override {
        macros.destroy();
        about.destroy();
        LanguageFolder::use(kEnglish);
    }

    unsigned density() const { return std::get<1>(GetParam()); }
    LONG scaled(int pixels) const { return forms::scaled(pixels, forms::Dpi{density()}).value; }

    /// As if the form had come to a display of that density.
    void toDensity(forms::Form& one) const {
        RECT rect{};
        ::GetWindowRect(one.hwnd(), &rect);
        const auto sized = [&](LONG length) {
            return length * static_cast<LONG>(density()) / static_cast<LONG>(one.dpi().value);
        };
        const RECT suggested{rect.left, rect.top, rect.left + sized(rect.right - rect.left),
                             rect.top + sized(rect.bottom - rect.top)};
        ::SendMessageW(one.hwnd(), WM_DPICHANGED, MAKEWPARAM(density(), density()),
                       reinterpret_cast<LPARAM>(&suggested));
        ASSERT_EQ(one.dpi().value, density());
    }

    void expectOneLine(const forms::Form& one, const Control& control, int around) const {
        const std::wstring text = withoutMark(control.text());
        const Room room{one, control.name(), text};
        const SIZE there = clientSize(control.hwnd());
        room.expect("width", withReserve(control.gdiFont().textWidth(text).value) + scaled(around),
                    there.cx);
        room.expect("height", control.gdiFont().lineHeight().value, there.cy);
    }

    void expectLabelFits(const forms::Form& one, const Control& label) const {
        const SIZE there = clientSize(label.hwnd());
        const SIZE needed = brokenAt(there.cx * 6 / 7, label);
        const Room room{one, label.name(), label.text()};
        room.expect("width", withReserve(needed.cx), there.cx);
        room.expect("height", needed.cy, there.cy);
    }

    void expectTabsFit(const forms::Form& one, const forms::TabStrip& tabs) const {
        RECT rect{};
        for (int tab = 0; tab < tabs.tabCount(); ++tab) {
            ::SendMessageW(tabs.hwnd(), TCM_GETITEMRECT, static_cast<WPARAM>(tab),
                           reinterpret_cast<LPARAM>(&rect));
            const std::wstring& text = tabs.tabCaption(tab);
            Room{one, tabs.name(), text}.expect(
                "width", tabs.gdiFont().textWidth(text).value + scaled(kTabEdges),
                rect.right - rect.left);
        }
        Room{one, tabs.name(), L""}.expect("all tabs", rect.right, clientSize(tabs.hwnd()).cx);
    }

    void expectControlFits(const forms::Form& one, const Control& control) const {
        if (const auto* button = dynamic_cast<const forms::Button*>(&control)) {
            expectOneLine(one, *button, kButtonEdges);
            Room{one, control.name(), L""}.expect(
                "height with edges", control.gdiFont().lineHeight().value + scaled(kButtonHeights),
                clientSize(control.hwnd()).cy);
        } else if (dynamic_cast<const forms::OptionButton*>(&control) != nullptr) {
            expectOneLine(one, control, kOptionMark);
        } else if (dynamic_cast<const forms::Frame*>(&control) != nullptr) {
            expectOneLine(one, control, kFrameEnds);
        } else if (dynamic_cast<const forms::Label*>(&control) != nullptr) {
            expectLabelFits(one, control);
        } else if (const auto* tabs = dynamic_cast<const forms::TabStrip*>(&control)) {
            expectTabsFit(one, *tabs);
        }
    }

    /// Siblings of one container and one tab.
    static bool together(const Control& a, const Control& b) {
        return a.container() == b.container() && a.tab() == b.tab();
    }

    void expectNoOverlap(const forms::Form& one) const {
        const std::vector<Control*> controls = one.controls();
        for (std::size_t i = 0; i < controls.size(); ++i) {
            for (std::size_t k = i + 1; k < controls.size(); ++k) {
                if (!together(*controls[i], *controls[k])) continue;
                RECT common{};
                const RECT a = placeOf(*controls[i]);
                const RECT b = placeOf(*controls[k]);
                EXPECT_FALSE(::IntersectRect(&common, &a, &b))
                    << toUtf8(controls[i]->name()) << " lies over " << toUtf8(controls[k]->name());
            }
        }
    }

    void expectInside(const forms::Form& one) const {
        RECT client{0, 0, clientSize(one.hwnd()).cx, clientSize(one.hwnd()).cy};
        ::MapWindowPoints(one.hwnd(), nullptr, reinterpret_cast<POINT*>(&client), 2);
        for (const Control* control : one.controls()) {
            const RECT place = placeOf(*control);
            const RECT around =
                control->container() == nullptr ? client : placeOf(*control->container());
            const Room room{one, control->name(), L""};
            room.expect("right edge", place.right, around.right);
            room.expect("lower edge", place.bottom, around.bottom);
            EXPECT_TRUE(place.left < place.right && place.top < place.bottom)
                << toUtf8(control->name()) << " has no room at all";
        }
    }

    void expectTextFits(int number) {
        int edges[5] = {};
        ::SendMessageW(form.statusbarMain.hwnd(), SB_GETPARTS, 5, reinterpret_cast<LPARAM>(edges));
        const LONG left = number == 1 ? 0 : edges[number - 2];
        const Room room{form, L"status bar", panel(number)};
        room.expect("width", form.statusbarMain.gdiFont().textWidth(panel(number)).value,
                    edges[number - 1] - left);
        room.expect("right edge", edges[number - 1], clientSize(form.statusbarMain.hwnd()).cx);
    }

    /// The title leaves room for an icon and the buttons at the right.
    void expectTitleFits(const forms::Form& one) const {
        NONCLIENTMETRICSW metrics{};
        metrics.cbSize = sizeof metrics;
        ASSERT_TRUE(::SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics,
                                                 0, density()));
        const HFONT font = ::CreateFontIndirectW(&metrics.lfCaptionFont);
        const HDC dc = ::GetDC(nullptr);
        const HGDIOBJ previous = ::SelectObject(dc, font);
        SIZE size{};
        const std::wstring title = one.caption();
        ::GetTextExtentPoint32W(dc, title.c_str(), static_cast<int>(title.size()), &size);
        ::SelectObject(dc, previous);
        ::ReleaseDC(nullptr, dc);
        ::DeleteObject(font);
        Room{one, L"title", title}.expect("width", size.cx + 4 * metrics.iCaptionWidth,
                                          clientSize(one.hwnd()).cx);
    }

    void expectFormFits(const forms::Form& one) const {
        for (const Control* control : one.controls()) expectControlFits(one, *control);
        expectNoOverlap(one);
        expectInside(one);
        expectTitleFits(one);
    }

    static std::string toUtf8(const std::wstring& text) { return jet::toUtf8(fromWide(text)); }

    frmMacroTraces macros{form.tvUniqueTraces};
    frmAbout about;
};

TEST_P(LayoutTest, OfTheMainWindow) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    toDensity(form);
    form.setupTraceGrid();
    expectFormFits(form);
    form.sstabMain.setTab(1);
    expectFormFits(form);
}

TEST_P(LayoutTest, OfTheGridsHeadings) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    toDensity(form);
    form.setupTraceGrid();
    for (int i = 0; i < form.tdbgridData.columnCount(); ++i) {
        const grid::Column& column = form.tdbgridData.column(i);
        const grid::Style& style = form.tdbgridData.style(column.headingStyle());
        forms::Font font = column.font();
        font.bold = font.bold || style.bold;
        const forms::GdiFont drawn{font, form.dpi()};
        Room{form, L"heading", column.caption()}.expect(
            "width", drawn.textWidth(column.caption()).value + scaled(kHeadingEdges),
            form.tdbgridData.geometry().columns().width(i));
    }
}

TEST_P(LayoutTest, OfTheStatusBar) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    toDensity(form);
    rows().setAbsolutePosition(300);
    expectTextFits(3);
    expectTextFits(5);
}

TEST_P(LayoutTest, OfTheMainWindowAtItsLeastSize) {
    open(makeFile("a.mdb", 300));
    ASSERT_TRUE(waitLoaded());
    toDensity(form);
    form.move({0_tw, 0_tw, 1000_tw, 1000_tw});
    forms::doEvents();
    ASSERT_NEAR(form.width().value, 5000, 15);
    rows().setAbsolutePosition(300);
    for (const int tab : {0, 1}) {
        form.sstabMain.setTab(tab);
        expectFormFits(form);
    }
    expectTextFits(3);
    expectTextFits(5);
}

TEST_P(LayoutTest, OfTheFindDialog) {
    form.findDialog.load();
    toDensity(form.findDialog);
    expectFormFits(form.findDialog);
}

TEST_P(LayoutTest, OfTheStatusWindow) {
    form.status.load();
    toDensity(form.status);
    expectFormFits(form.status);
    using modLocalize::Text;
    for (const Text name :
         {Text::LoadingPleaseWait, Text::SortingPleaseWait, Text::StatusTextGoesHere}) {
        form.status.setStatus(modLocalize::text(name));
        expectFormFits(form.status);
    }
}

TEST_P(LayoutTest, OfTheMacroDialog) {
    read({macroRow(u"A", u"t")});
    macros.load();
    toDensity(macros);
    expectFormFits(macros);
}

TEST_P(LayoutTest, OfTheAboutBox) {
    about.load();
    about.lblVersion.setText(L"100.200 Build30000");
    toDensity(about);
    expectFormFits(about);
}

INSTANTIATE_TEST_SUITE_P(Languages, LayoutTest,
                         testing::Combine(testing::ValuesIn(fixture::languageCodes()),
                                          testing::Values(96u, 144u)),
                         [](const auto& test) {
                             return std::get<0>(test.param) + "_" +
                                    std::to_string(std::get<1>(test.param));
                         });

/// The complaints of a check, which are none of the test's own.
std::vector<std::string> complaintsOf(const std::function<void()>& check) {
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter{
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results};
        check();
    }
    std::vector<std::string> complaints;
    for (int i = 0; i < results.size(); ++i) {
        complaints.emplace_back(results.GetTestPartResult(i).message());
    }
    return complaints;
}

/// Tests of the checks above: each finds what is made wrong.
class LayoutCheckTest : public LayoutTest {
protected:
    void SetUp() override {
        dialog.load();
        form.load();
        ASSERT_TRUE(complaintsAbout(dialog).empty());
    }

    std::vector<std::string> complaintsAbout(const forms::Form& one) {
        return complaintsOf([&] { expectFormFits(one); });
    }

    /// The one complaint about the dialog, of a control, with what is missing.
    void expectComplaint(const Control& control, const std::string& missing) {
        EXPECT_THAT(complaintsAbout(dialog),
                    testing::Contains(testing::AllOf(testing::HasSubstr(toUtf8(control.name())),
                                                     testing::HasSubstr(missing))));
    }

    /// With a text far longer than any room.
    void expectTextTooLong(Control& control) {
        const std::wstring usual = control.text();
        control.setText(std::wstring(100, L'm'));
        expectComplaint(control, ": width");
        control.setText(usual);
        EXPECT_TRUE(complaintsAbout(dialog).empty());
    }

    dlgFind& dialog = form.findDialog;
};

TEST_P(LayoutCheckTest, ATextThatIsTooLongIsFound) {
    expectTextTooLong(dialog.cmdFindNext);
    expectTextTooLong(dialog.optionDirection[0]);
    expectTextTooLong(dialog.frmDirection);
    expectTextTooLong(dialog.lblFindWhat);
}

TEST_P(LayoutCheckTest, ALabelWithTooManyLinesIsFound) {
    dialog.lblFindWhat.setText(L"a word and another and another and one more");
    expectComplaint(dialog.lblFindWhat, ": height");
}

TEST_P(LayoutCheckTest, AControlThatIsTooLowForItsTextIsFound) {
    dialog.cmdFindNext.setHeight(120_tw);
    expectComplaint(dialog.cmdFindNext, ": height");
}

TEST_P(LayoutCheckTest, ATitleThatIsTooLongIsFound) {
    dialog.setCaption(std::wstring(100, L'm'));
    EXPECT_THAT(complaintsAbout(dialog), testing::Contains(testing::HasSubstr(", title, ")));
}

TEST_P(LayoutCheckTest, ControlsThatOverlapAreFound) {
    dialog.CancelButton.setTop(dialog.cmdFindNext.top() + 60_tw);
    expectComplaint(dialog.CancelButton, " lies over ");
}

TEST_P(LayoutCheckTest, AControlBeyondTheEdgeIsFound) {
    dialog.CancelButton.setTop(dialog.height());
    expectComplaint(dialog.CancelButton, ": lower edge");
}

TEST_P(LayoutCheckTest, TabsThatAreTooLongTogetherAreFound) {
    form.sstabMain.setTabCaption(0, std::wstring(300, L'm'));
    EXPECT_THAT(complaintsAbout(form), testing::Contains(testing::HasSubstr(": all tabs")));
}

TEST_P(LayoutCheckTest, ATextThatIsTooLongForItsPanelIsFound) {
    form.statusbarMain.panel(2).setText(std::wstring(100, L'm'));
    EXPECT_THAT(complaintsOf([this] { expectTextFits(2); }),
                testing::Contains(testing::HasSubstr(": width")));
}

INSTANTIATE_TEST_SUITE_P(English, LayoutCheckTest,
                         testing::Values(std::tuple<std::string, unsigned>{"ENU", 96u}));

/// Real glyphs: the box that stands for a missing one is the same for every character.
TEST_F(MainWindowTest, JapaneseIsDrawnWithItsOwnCharacters) {
    LanguageFolder::use(1041);
    form.load();
    const auto picture = [this](wchar_t character) {
        const HDC dc = ::CreateCompatibleDC(nullptr);
        const HBITMAP bitmap = ::CreateBitmap(40, 40, 1, 1, nullptr);
        const HGDIOBJ previousBitmap = ::SelectObject(dc, bitmap);
        const HGDIOBJ previousFont = ::SelectObject(dc, form.cmdApplyFilter.fontHandle());
        ::PatBlt(dc, 0, 0, 40, 40, WHITENESS);
        ::TextOutW(dc, 2, 2, &character, 1);
        std::vector<std::uint8_t> bits(40 * 40 / 8 + 400);
        ::GetBitmapBits(bitmap, static_cast<LONG>(bits.size()), bits.data());
        ::SelectObject(dc, previousFont);
        ::SelectObject(dc, previousBitmap);
        ::DeleteObject(bitmap);
        ::DeleteDC(dc);
        return bits;
    };
    const auto missing = picture(L'\uE83A');
    EXPECT_NE(picture(L'診'), picture(L'断'));
    EXPECT_NE(picture(L'フ'), picture(L'ィ'));
    EXPECT_NE(picture(L'診'), missing);
    LanguageFolder::use(kEnglish);
}

}  // namespace
