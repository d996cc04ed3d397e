#include "toolkit/forms/tab_strip.h"

#include "tests/toolkit/forms/forms_fixture.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/text_box.h"

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <stdexcept>

using namespace forms_test;

namespace {

class TabStripTest : public FormsTest {
protected:
    TabStripTest() {
        form.onBuild = [this] {
            form.createControls({
                {tabs, {L"tabs", L"", 60_tw, 60_tw, 6000_tw, 3600_tw}},
                {text, {L"text", L"", 120_tw, 600_tw, 3000_tw, 300_tw, 0, &tabs, 0}},
                {apply, {L"apply", L"Apply", 120_tw, 600_tw, 1200_tw, 300_tw, 0, &tabs, 1}},
                {frame, {L"frame", L"Box", 120_tw, 1200_tw, 3000_tw, 1200_tw, 0, &tabs, 1}},
                {option, {L"option", L"Option", 90_tw, 300_tw, 1200_tw, 300_tw, 0, &frame}},
                {below, {L"below", L"Below", 60_tw, 3900_tw, 1200_tw, 300_tw}},
            });
        };
        form.show();
        tabs.onTabClick = [this](int previous) { clicks.push_back(previous); };
    }
    ~TabStripTest() override { form.destroy(); }

    static bool seen(const forms::Control& control) {
        return ::IsWindowVisible(control.hwnd()) != FALSE;
    }

    PlainForm form;
    forms::TabStrip tabs{{L"Trace Data", L"Filters"}};
    forms::TextBox text;
    forms::Button apply;
    forms::Frame frame;
    forms::OptionButton option;
    forms::Button below;
    std::vector<int> clicks;
};

TEST_F(TabStripTest, ShowsTheControlsOfTheCurrentTab) {
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_TRUE(seen(text));
    EXPECT_FALSE(seen(apply));
    EXPECT_FALSE(seen(option));
    tabs.setTab(1);
    EXPECT_FALSE(seen(text));
    EXPECT_TRUE(seen(apply));
    EXPECT_TRUE(seen(frame));
    EXPECT_TRUE(seen(option));
    EXPECT_TRUE(seen(below));
    EXPECT_EQ(clicks, std::vector<int>{0});
}

TEST_F(TabStripTest, AControlMadeInvisibleStaysSoOnItsTab) {
    text.setVisible(false);
    tabs.setTab(1);
    tabs.setTab(0);
    EXPECT_FALSE(seen(text));
    tabs.setTab(1);
    text.setVisible(true);
    EXPECT_FALSE(seen(text));
    tabs.setTab(0);
    EXPECT_TRUE(seen(text));
}

TEST_F(TabStripTest, ChoosingTheCurrentTabIsNoEvent) {
    tabs.setTab(0);
    EXPECT_TRUE(clicks.empty());
    EXPECT_THROW(tabs.setTab(2), std::out_of_range);
}

TEST_F(TabStripTest, OtherTabsBeginWithTheFirst) {
    tabs.setTab(1);
    tabs.setTabs({L"One", L"Two", L"Three"});
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(::SendMessageW(tabs.hwnd(), TCM_GETCURSEL, 0, 0), 0);
    EXPECT_TRUE(seen(text));
    EXPECT_FALSE(seen(apply));
}

TEST_F(TabStripTest, AMouseClickSwitches) {
    RECT rect{};
    ::SendMessageW(tabs.hwnd(), TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&rect));
    const LPARAM at = MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    ::SendMessageW(tabs.hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(tabs.hwnd(), WM_LBUTTONUP, 0, at);
    EXPECT_EQ(tabs.currentTab(), 1);
    EXPECT_TRUE(seen(apply));
    EXPECT_EQ(clicks, std::vector<int>{0});
}

TEST_F(TabStripTest, ArrowKeysSwitchWhileTheStripHasTheFocus) {
    tabs.setFocus();
    pressKey(VK_RIGHT);
    EXPECT_EQ(tabs.currentTab(), 1);
    pressKey(VK_LEFT);
    EXPECT_EQ(tabs.currentTab(), 0);
    EXPECT_EQ(clicks, (std::vector<int>{0, 1}));
}

TEST_F(TabStripTest, ControlKeysSwitchFromAnywhere) {
    below.setFocus();
    {
        const HeldKeys held({VK_CONTROL});
        pressKey(VK_TAB);
        EXPECT_EQ(tabs.currentTab(), 1);
        pressKey(VK_TAB);
        EXPECT_EQ(tabs.currentTab(), 0);
        pressKey(VK_NEXT);
        EXPECT_EQ(tabs.currentTab(), 1);
        pressKey(VK_PRIOR);
        EXPECT_EQ(tabs.currentTab(), 0);
    }
    {
        const HeldKeys held({VK_CONTROL, VK_SHIFT});
        pressKey(VK_TAB);
        EXPECT_EQ(tabs.currentTab(), 1);
    }
    EXPECT_TRUE(below.hasFocus());
}

TEST_F(TabStripTest, TheFocusLeavesAControlThatGetsHidden) {
    text.setFocus();
    tabs.setTab(1);
    EXPECT_TRUE(apply.hasFocus());
}

TEST_F(TabStripTest, CaptionsCanChange) {
    tabs.setTabCaption(0, L"Diagnostic Data");
    EXPECT_EQ(tabs.tabCaption(0), L"Diagnostic Data");
    wchar_t shown[100] = L"";
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = shown;
    item.cchTextMax = 100;
    ::SendMessageW(tabs.hwnd(), TCM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    EXPECT_STREQ(shown, L"Diagnostic Data");
}

TEST_F(TabStripTest, ControlsStandRelativeToTheStripAndMoveWithIt) {
    RECT strip{};
    RECT box{};
    ::GetWindowRect(tabs.hwnd(), &strip);
    ::GetWindowRect(text.hwnd(), &box);
    EXPECT_EQ(box.left - strip.left, forms::toPixels(120_tw, form.dpi()).value);
    EXPECT_EQ(box.top - strip.top, forms::toPixels(600_tw, form.dpi()).value);
    tabs.setLeft(1500_tw);
    RECT moved{};
    ::GetWindowRect(text.hwnd(), &moved);
    EXPECT_GT(moved.left, box.left);
    EXPECT_DOUBLE_EQ(text.left().value, 120);
}

TEST_F(TabStripTest, ContainedControlsLieAboveTheirContainers) {
    std::vector<HWND> order;
    for (HWND child = ::GetTopWindow(form.hwnd()); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        order.push_back(child);
    }
    const auto depth = [&](const forms::Control& control) {
        return std::find(order.begin(), order.end(), control.hwnd()) - order.begin();
    };
    EXPECT_LT(depth(option), depth(frame));
    EXPECT_LT(depth(frame), depth(tabs));
    EXPECT_LT(depth(text), depth(tabs));
    EXPECT_LT(depth(apply), depth(tabs));
}

// Pixels of the tab's inside and of what stands on it.
TEST_F(TabStripTest, ControlsInAFrameOnATabAreSeen) {
    option.setCaption(L"WWWWWWWW");
    tabs.setTab(1);
    forms::doEvents();
    RECT rect{};
    ::GetWindowRect(option.hwnd(), &rect);
    ::MapWindowPoints(nullptr, form.hwnd(), reinterpret_cast<POINT*>(&rect), 2);
    const HDC screen = ::GetDCEx(form.hwnd(), nullptr, DCX_CACHE);
    int colours = 0;
    COLORREF last = CLR_INVALID;
    for (LONG x = rect.left; x < rect.right; ++x) {
        const COLORREF pixel = ::GetPixel(screen, x, (rect.top + rect.bottom) / 2);
        colours += pixel != last ? 1 : 0;
        last = pixel;
    }
    ::ReleaseDC(form.hwnd(), screen);
    EXPECT_GT(colours, 10);
}

TEST_F(TabStripTest, AShorterCaptionLeavesNothingBesideTheTabs) {
    const auto rightOfTabs = [this] {
        RECT last{};
        ::SendMessageW(tabs.hwnd(), TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&last));
        return last;
    };
    tabs.setTabCaption(0, L"A very long caption that becomes a short one");
    forms::doEvents();
    const LONG before = rightOfTabs().right;
    tabs.setTabCaption(0, L"Short");
    forms::doEvents();
    const RECT last = rightOfTabs();
    ASSERT_LT(last.right + 20, before);
    const HDC screen = ::GetDC(tabs.hwnd());
    const LONG y = (last.top + last.bottom) / 2;
    const COLORREF free = ::GetPixel(screen, before + 20, y);
    for (LONG x = last.right + 4; x < before; ++x) {
        ASSERT_EQ(::GetPixel(screen, x, y), free) << x;
    }
    ::ReleaseDC(tabs.hwnd(), screen);
}

TEST_F(TabStripTest, TabHeightIsThatOfTheRowOfTabs) {
    EXPECT_GT(tabs.tabHeight().value, 200);
    EXPECT_LT(tabs.tabHeight().value, 700);
}

TEST_F(TabStripTest, TabOrderIsStripThenItsControls) {
    tabs.setFocus();
    pressKey(VK_TAB);
    EXPECT_TRUE(text.hasFocus());
    pressKey(VK_TAB);
    EXPECT_TRUE(below.hasFocus());
}

}  // namespace
