// The tooltip wrapper on the control itself: what it sends is read back from its window.
#include "src/macros/c_tooltip.h"
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

using namespace forms::literals;

class TooltipForm : public forms::Form {
public:
    TooltipForm() : Form({.className = L"viewer_tests.Tooltip", .caption = L"Tooltip"}) {}
    ~TooltipForm() override { destroy(); }

    forms::Button first;
    forms::Button second;
    forms::Button third;
    forms::Frame frame;
    forms::Button framed;

private:
    void build() override {
        createControls({
            {first, {L"first", L"1", 120_tw, 120_tw, 1200_tw, 360_tw}},
            {second, {L"second", L"2", 120_tw, 600_tw, 1200_tw, 360_tw}},
            {third, {L"third", L"3", 120_tw, 1080_tw, 1200_tw, 360_tw}},
            {frame, {L"frame", L"", 120_tw, 1560_tw, 2400_tw, 1200_tw}},
            {framed, {L"framed", L"4", 120_tw, 360_tw, 1200_tw, 360_tw, 0, &frame}},
        });
    }
};

class TooltipTest : public testing::Test {
protected:
    TooltipTest() {
        form.show();
        tooltip.Create(form);
    }

    LRESULT ask(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return ::SendMessageA(tooltip.hWnd(), message, wParam, lParam);
    }

    /// The tool as the control has it.
    TOOLINFOA record(int index) {
        TOOLINFOA info{};
        info.cbSize = offsetof(TOOLINFOA, lParam) + sizeof(LPARAM);
        ask(TTM_ENUMTOOLSA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&info));
        return info;
    }

    forms::Application application;
    TooltipForm form;
    cTooltip tooltip;
};

TEST_F(TooltipTest, MakesAWindowOfTheCommonControls) {
    wchar_t name[64] = {};
    ::GetClassNameW(tooltip.hWnd(), name, 64);
    EXPECT_STREQ(name, L"tooltips_class32");
    EXPECT_EQ(::GetWindow(tooltip.hWnd(), GW_OWNER), form.hwnd());
    EXPECT_NE(::GetWindowLongW(tooltip.hWnd(), GWL_STYLE) & TTS_ALWAYSTIP, 0);
}

TEST_F(TooltipTest, ASecondCreateKeepsTheWindow) {
    const HWND before = tooltip.hWnd();
    EXPECT_TRUE(tooltip.Create(form));
    EXPECT_EQ(tooltip.hWnd(), before);
}

TEST_F(TooltipTest, TheWindowGoesWithItsObject) {
    HWND window = nullptr;
    {
        cTooltip other;
        ASSERT_TRUE(other.Create(form));
        window = other.hWnd();
        EXPECT_TRUE(::IsWindow(window));
    }
    EXPECT_FALSE(::IsWindow(window));
}

TEST_F(TooltipTest, WithoutAWindowNothingHappens) {
    cTooltip none;
    EXPECT_EQ(none.hWnd(), nullptr);
    EXPECT_FALSE(none.AddTool(form.first, L"x"));
    EXPECT_FALSE(none.RemoveTool(form.first));
    none.setBackColor(1);
    none.setForeColor(1);
    none.setDelayTime(3, 1);
    none.setMargin(0, 1);
    none.setMaxTipWidth(5);
    none.setToolText(form.first, L"x");
    EXPECT_EQ(none.BackColor(), 0u);
    EXPECT_EQ(none.ForeColor(), 0u);
    EXPECT_EQ(none.DelayTime(3), 0);
    EXPECT_EQ(none.Margin(0), 0);
    EXPECT_EQ(none.MaxTipWidth(), 0);
    EXPECT_EQ(none.ToolCount(), 0);
    EXPECT_EQ(none.ToolText(form.first), L"");
}

TEST_F(TooltipTest, AToolIsItsControlWithinItsContainer) {
    ASSERT_TRUE(tooltip.AddTool(form.first, L"one"));
    ASSERT_TRUE(tooltip.AddTool(form.framed, L"two"));
    const TOOLINFOA plain = record(0);
    EXPECT_EQ(plain.uFlags & 0x11u, 0x11u);
    EXPECT_EQ(plain.hwnd, form.hwnd());
    EXPECT_EQ(plain.uId, reinterpret_cast<UINT_PTR>(form.first.hwnd()));
    EXPECT_EQ(record(1).hwnd, form.frame.hwnd());
    EXPECT_EQ(tooltip.ToolText(form.first), L"one");
    EXPECT_EQ(tooltip.ToolText(form.framed), L"two");
}

TEST_F(TooltipTest, AControlIsRegisteredOnce) {
    EXPECT_TRUE(tooltip.AddTool(form.first, L"one"));
    EXPECT_FALSE(tooltip.AddTool(form.first, L"again"));
    EXPECT_EQ(tooltip.ToolCount(), 1);
    EXPECT_EQ(tooltip.ToolText(form.first), L"one");
}

TEST_F(TooltipTest, AnEmptyTextBecomesTheToolsNumber) {
    tooltip.AddTool(form.first, L"one");
    tooltip.AddTool(form.second, L"two");
    EXPECT_TRUE(tooltip.AddTool(form.third, L""));
    EXPECT_EQ(tooltip.ToolText(form.third), L"Tool3");
}

TEST_F(TooltipTest, AControlWithoutAWindowIsNoTool) {
    forms::Button windowless;
    EXPECT_FALSE(tooltip.AddTool(windowless, L"x"));
    EXPECT_FALSE(tooltip.RemoveTool(windowless));
    EXPECT_EQ(tooltip.ToolText(windowless), L"");
    EXPECT_EQ(tooltip.ToolCount(), 0);
}

TEST_F(TooltipTest, ARemovedToolIsGone) {
    tooltip.AddTool(form.first, L"one");
    tooltip.AddTool(form.second, L"two");
    EXPECT_TRUE(tooltip.RemoveTool(form.first));
    EXPECT_FALSE(tooltip.RemoveTool(form.first));
    EXPECT_EQ(tooltip.ToolCount(), 1);
    EXPECT_EQ(tooltip.ToolText(form.first), L"");
    EXPECT_EQ(tooltip.ToolText(form.second), L"two");
}

TEST_F(TooltipTest, ALongTextReachesTheControlWhole) {
    tooltip.AddTool(form.first, L"short");
    tooltip.AddTool(form.second, L"other");
    const std::wstring text = L"Alpha Levels: 1, 12\r\nBeta " + std::wstring(600, L'x');
    tooltip.setToolText(form.first, text);
    // Some versions of the control hand out the first 80 characters only when asked for a tool.
    const std::wstring answer = tooltip.ToolText(form.first);
    EXPECT_TRUE(text.starts_with(answer));
    EXPECT_GE(answer.size(), 79u);
    wchar_t whole[4000] = {};
    TOOLINFOW info{};
    info.cbSize = offsetof(TOOLINFOW, lParam) + sizeof(LPARAM);
    info.hwnd = form.hwnd();
    info.uId = reinterpret_cast<UINT_PTR>(form.first.hwnd());
    info.lpszText = whole;
    ::SendMessageW(tooltip.hWnd(), TTM_GETTEXTW, 4000, reinterpret_cast<LPARAM>(&info));
    EXPECT_EQ(whole, text);
    tooltip.setToolText(form.first, L"s");
    EXPECT_EQ(tooltip.ToolText(form.first), L"s");
    EXPECT_EQ(tooltip.ToolText(form.second), L"other");
    tooltip.setToolText(form.third, L"no tool");
    EXPECT_EQ(tooltip.ToolText(form.third), L"");
}

TEST_F(TooltipTest, ColoursReachTheControl) {
    tooltip.setBackColor(RGB(1, 2, 3));
    EXPECT_EQ(tooltip.BackColor(), RGB(1, 2, 3));
    EXPECT_EQ(ask(TTM_GETTIPBKCOLOR), static_cast<LRESULT>(RGB(1, 2, 3)));
    tooltip.setForeColor(RGB(255, 0, 0));
    EXPECT_EQ(ask(TTM_GETTIPTEXTCOLOR), static_cast<LRESULT>(RGB(255, 0, 0)));
}

TEST_F(TooltipTest, AskingForTheTextColourMakesItBlack) {
    tooltip.setForeColor(RGB(255, 0, 0));
    EXPECT_EQ(tooltip.ForeColor(), 0u);
    EXPECT_EQ(ask(TTM_GETTIPTEXTCOLOR), 0);
}

TEST_F(TooltipTest, DelaysGoByTheirLowestBits) {
    tooltip.setDelayTime(7, 321);
    EXPECT_EQ(tooltip.DelayTime(cTooltip::kInitial), 321);
    EXPECT_EQ(ask(TTM_GETDELAYTIME, TTDT_INITIAL), 321);
    EXPECT_EQ(tooltip.DelayTime(7), 321);
    tooltip.setDelayTime(cTooltip::kAutoPop, 4000);
    EXPECT_EQ(ask(TTM_GETDELAYTIME, TTDT_AUTOPOP), 4000);
    EXPECT_EQ(tooltip.DelayTime(cTooltip::kInitial), 321);
}

TEST_F(TooltipTest, MarginsAreSetOneByOne) {
    tooltip.setMargin(cTooltip::kLeft, 1);
    tooltip.setMargin(cTooltip::kTop, 2);
    tooltip.setMargin(cTooltip::kRight, 3);
    tooltip.setMargin(cTooltip::kBottom, 4);
    tooltip.setMargin(4, 99);
    for (int side = 0; side < 4; ++side) EXPECT_EQ(tooltip.Margin(side), side + 1);
    EXPECT_EQ(tooltip.Margin(4), 0);
    EXPECT_EQ(tooltip.Margin(-1), 0);
}

TEST_F(TooltipTest, AWidthBelowOneIsNoLimit) {
    tooltip.setMaxTipWidth(400);
    EXPECT_EQ(tooltip.MaxTipWidth(), 400);
    EXPECT_EQ(ask(TTM_GETMAXTIPWIDTH), 400);
    tooltip.setMaxTipWidth(0);
    EXPECT_EQ(tooltip.MaxTipWidth(), -1);
    EXPECT_EQ(static_cast<int>(ask(TTM_GETMAXTIPWIDTH)), -1);
}

}  // namespace
