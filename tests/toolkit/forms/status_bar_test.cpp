#include "toolkit/forms/status_bar.h"

#include "tests/toolkit/forms/forms_fixture.h"

#include <windows.h>
#include <commctrl.h>

#include <stdexcept>
#include <vector>

using namespace forms_test;
using forms::PanelKind;
using forms::PanelWidth;

namespace {

class CountingStatusBar : public forms::StatusBar {
public:
    using StatusBar::StatusBar;
    int texts = 0;

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == SB_SETTEXTW) ++texts;
        return StatusBar::handleMessage(message, wParam, lParam);
    }
};

class StatusBarTest : public FormsTest {
protected:
    StatusBarTest() {
        form.onBuild = [this] { form.createControls({{bar, {L"bar"}}}); };
        form.show();
    }
    ~StatusBarTest() override { form.destroy(); }

    std::wstring shownText(int part) const {
        wchar_t text[300] = L"";
        ::SendMessageW(bar.hwnd(), SB_GETTEXTW, static_cast<WPARAM>(part),
                       reinterpret_cast<LPARAM>(text));
        return text;
    }

    PlainForm form;
    CountingStatusBar bar{{
        {.key = L"keyPanel1", .width = PanelWidth::spring},
        {.key = L"keyPanel2", .twips = forms::Twips(720)},
        {.width = PanelWidth::content, .twips = forms::Twips(600)},
        {.key = L"keyPanel4", .twips = forms::Twips(720)},
        {.key = L"keyPanel5", .twips = forms::Twips(1440), .kind = PanelKind::clock},
    }};
};

TEST_F(StatusBarTest, PanelsAreFoundByNumberAndByKey) {
    EXPECT_EQ(bar.panelCount(), 5);
    bar.panel(1).setText(L"Loading");
    EXPECT_EQ(bar.panel(L"keyPanel1").text(), L"Loading");
    EXPECT_EQ(shownText(0), L"Loading");
    bar.panel(L"keyPanel4").setText(L"four");
    EXPECT_EQ(shownText(3), L"four");
    EXPECT_THROW(bar.panel(0), std::out_of_range);
    EXPECT_THROW(bar.panel(6), std::out_of_range);
    EXPECT_THROW(bar.panel(L"nothing"), std::out_of_range);
}

TEST_F(StatusBarTest, ATextIsSetOnlyWhenItDiffers) {
    bar.panel(2).setText(L"same");
    const int before = bar.texts;
    for (int i = 0; i < 100; ++i) bar.panel(2).setText(L"same");
    EXPECT_EQ(bar.texts, before);
    bar.panel(2).setText(L"other");
    EXPECT_EQ(bar.texts, before + 1);
}

TEST_F(StatusBarTest, DocksAtTheLowerEdge) {
    for (const int height : {300, 500}) {
        ::SetWindowPos(form.hwnd(), nullptr, 0, 0, 600, height, SWP_NOMOVE | SWP_NOZORDER);
        RECT client{};
        ::GetClientRect(form.hwnd(), &client);
        RECT rect{};
        ::GetWindowRect(bar.hwnd(), &rect);
        ::MapWindowPoints(nullptr, form.hwnd(), reinterpret_cast<POINT*>(&rect), 2);
        EXPECT_EQ(rect.bottom, client.bottom);
        EXPECT_EQ(rect.right, client.right);
        EXPECT_GT(bar.height().value, 200);
    }
}

TEST_F(StatusBarTest, TheSpringTakesWhatTheOthersLeave) {
    form.setWidth(9000_tw);
    const forms::Twips before = bar.panel(1).width();
    const forms::Twips fixed = bar.panel(2).width();
    EXPECT_NEAR(fixed.value, 720, 60);
    form.setWidth(12000_tw);
    EXPECT_NEAR(bar.panel(1).width().value, before.value + 3000, 30);
    EXPECT_DOUBLE_EQ(bar.panel(2).width().value, fixed.value);
}

TEST_F(StatusBarTest, AContentPanelGrowsWithItsText) {
    const forms::Twips before = bar.panel(3).width();
    const forms::Twips spring = bar.panel(1).width();
    bar.panel(3).setText(L"  Line 1234567 of 12345678  ");
    const forms::Twips after = bar.panel(3).width();
    EXPECT_GT(after, before);
    EXPECT_NEAR((bar.panel(1).width() + after).value, (spring + before).value, 1);
}

// Nobody reads an empty panel: it makes room for the ones that say something.
TEST_F(StatusBarTest, InANarrowWindowTextsComeFirst) {
    bar.panel(3).setText(L"  Line 1 of 20000  ");
    EXPECT_TRUE(waitUntil([this] { return !bar.panel(5).text().empty(); }));
    const auto edges = [this] {
        int all[5] = {};
        ::SendMessageW(bar.hwnd(), SB_GETPARTS, 5, reinterpret_cast<LPARAM>(all));
        return std::vector<int>(all, all + 5);
    };
    RECT client{};
    const auto narrowTo = [&](forms::Twips width) {
        form.setWidth(width);
        ::GetClientRect(bar.hwnd(), &client);
        return edges();
    };
    EXPECT_EQ(narrowTo(9000_tw).back(), client.right);
    const std::vector<int> narrow = narrowTo(3900_tw);
    EXPECT_LE(narrow.back(), client.right);
    EXPECT_GE(narrow[2] - narrow[1], bar.gdiFont().textWidth(bar.panel(3).text()).value);
    EXPECT_GE(narrow[4] - narrow[3], bar.gdiFont().textWidth(bar.panel(5).text()).value);
    EXPECT_GT(narrow[0], 0);

    bar.panel(2).setText(L"text");
    const std::vector<int> filled = edges();
    EXPECT_GE(filled[1] - filled[0], bar.gdiFont().textWidth(L"text").value);
    EXPECT_LE(filled.back(), client.right);
    bar.panel(2).setText(L"");
    EXPECT_EQ(edges(), narrow);
}

TEST_F(StatusBarTest, TheClockShowsTheTimeOfDay) {
    wchar_t now[80] = L"";
    const auto isNow = [&] {
        ::GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, TIME_NOSECONDS, nullptr, nullptr, now, 80);
        return shownText(4) == now;
    };
    EXPECT_TRUE(waitUntil(isNow));
}

TEST_F(StatusBarTest, TheClockGoesOn) {
    bar.panel(5).setText(L"stopped");
    EXPECT_TRUE(waitUntil([this] { return shownText(4) != L"stopped"; }));
}

TEST_F(StatusBarTest, ControlCharactersAreShownAsBlanks) {
    bar.panel(1).setText(L"a\tb");
    EXPECT_EQ(shownText(0), L"a b");
    EXPECT_EQ(bar.panel(1).text(), L"a\tb");
}

}  // namespace
