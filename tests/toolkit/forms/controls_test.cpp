#include "tests/toolkit/forms/forms_fixture.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/combo_box.h"
#include "toolkit/forms/control.h"
#include "toolkit/forms/label.h"
#include "toolkit/forms/progress_bar.h"
#include "toolkit/forms/text_box.h"

#include <windows.h>
#include <commctrl.h>

#include <cmath>
#include <limits>

using namespace forms_test;
using forms::kDisabled;
using forms::kHidden;

namespace {

class ControlsTest : public FormsTest {
protected:
    ControlsTest() {
        form.onBuild = [this] {
            form.createControls({
                {label, {L"label", L"&Name", 100_tw, 100_tw, 1500_tw, 300_tw}},
                {box, {L"box", L"text", 1800_tw, 100_tw, 1500_tw, 300_tw}},
                {notes, {L"notes", L"", 1800_tw, 500_tw, 1500_tw, 900_tw}},
                {frame, {L"frame", L"Direction", 300_tw, 1500_tw, 3000_tw, 1500_tw}},
                {up, {L"up", L"&Up", 150_tw, 300_tw, 1200_tw, 300_tw, 0, &frame}},
                {down, {L"down", L"&Down", 150_tw, 600_tw, 1200_tw, 300_tw, 0, &frame}},
                {check, {L"check", L"&Case", 300_tw, 3200_tw, 1200_tw, 300_tw}},
                {bar, {L"bar", L"", 300_tw, 3600_tw, 3000_tw, 255_tw}},
                {combo, {L"combo", L"", 300_tw, 3900_tw, 3000_tw, 315_tw}},
                {hidden, {L"hidden", L"", 0_tw, 0_tw, 300_tw, 300_tw, kHidden}},
                {disabled, {L"disabled", L"", 0_tw, 0_tw, 300_tw, 300_tw, kDisabled}},
            });
        };
        form.show();
    }
    ~ControlsTest() override { form.destroy(); }

    PlainForm form;
    forms::Label label;
    forms::TextBox box;
    forms::TextBox notes{{.multiLine = true, .readOnly = true, .verticalScroll = true}};
    forms::Frame frame;
    forms::OptionButton up;
    forms::OptionButton down;
    forms::CheckBox check;
    forms::ProgressBar bar;
    forms::ComboBox combo;
    forms::Button hidden;
    forms::Button disabled;
};

RECT inParent(const forms::Control& control) {
    RECT rect{};
    ::GetWindowRect(control.hwnd(), &rect);
    ::MapWindowPoints(nullptr, ::GetParent(control.hwnd()), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

TEST_F(ControlsTest, StandWhereTheTableSays) {
    const forms::Dpi dpi = form.dpi();
    const RECT rect = inParent(box);
    EXPECT_EQ(rect.left, forms::toPixels(1800_tw, dpi).value);
    EXPECT_EQ(rect.right - rect.left, forms::toPixels(1500_tw, dpi).value);
    EXPECT_DOUBLE_EQ(box.left().value, 1800);
    EXPECT_EQ(box.name(), L"box");
    EXPECT_EQ(box.text(), L"text");
}

TEST_F(ControlsTest, MoveKeepsFractionsOfPixels) {
    box.move({100.5_tw, 937.5_tw, 1000.25_tw, 300_tw});
    box.setHeight(315.75_tw);
    EXPECT_DOUBLE_EQ(box.left().value, 100.5);
    EXPECT_DOUBLE_EQ(box.top().value, 937.5);
    EXPECT_DOUBLE_EQ(box.width().value, 1000.25);
    EXPECT_DOUBLE_EQ(box.height().value, 315.75);
    EXPECT_EQ(inParent(box).top, forms::toPixels(937.5_tw, form.dpi()).value);
}

TEST_F(ControlsTest, FlagsOfTheTableCount) {
    EXPECT_FALSE(::IsWindowVisible(hidden.hwnd()));
    EXPECT_FALSE(disabled.enabled());
    EXPECT_TRUE(box.tabStop());
    EXPECT_FALSE(label.tabStop());
    hidden.setVisible(true);
    EXPECT_TRUE(::IsWindowVisible(hidden.hwnd()));
    disabled.setEnabled(true);
    EXPECT_TRUE(disabled.enabled());
}

TEST_F(ControlsTest, ContainedControlsMoveWithTheirContainer) {
    const RECT before = inParent(up);
    EXPECT_EQ(before.left, inParent(frame).left + forms::toPixels(150_tw, form.dpi()).value);
    frame.setLeft(frame.left() + 1500_tw);
    EXPECT_EQ(inParent(up).left - before.left, forms::toPixels(1500_tw, form.dpi()).value);
    EXPECT_DOUBLE_EQ(up.left().value, 150);
}

TEST_F(ControlsTest, ContainedControlsHideWithTheirContainer) {
    frame.setVisible(false);
    EXPECT_FALSE(::IsWindowVisible(up.hwnd()));
    EXPECT_TRUE(up.visible());
    down.setVisible(false);
    frame.setVisible(true);
    EXPECT_TRUE(::IsWindowVisible(up.hwnd()));
    EXPECT_FALSE(::IsWindowVisible(down.hwnd()));
}

TEST_F(ControlsTest, ContainedControlsGetTheMouse) {
    const RECT rect = inParent(up);
    const HWND hit =
        ::ChildWindowFromPointEx(form.hwnd(), {rect.left + 3, rect.top + 3}, CWP_SKIPINVISIBLE);
    EXPECT_EQ(hit, up.hwnd());
}

TEST_F(ControlsTest, OfTheOptionsInAFrameOneIsChosen) {
    down.setValue(true);
    EXPECT_TRUE(down.value());
    int clicks = 0;
    up.onClick = [&] { ++clicks; };
    ::SendMessageW(up.hwnd(), BM_CLICK, 0, 0);
    EXPECT_TRUE(up.value());
    EXPECT_FALSE(down.value());
    EXPECT_GE(clicks, 1);
    EXPECT_TRUE(up.tabStop());
    EXPECT_FALSE(down.tabStop());
}

TEST_F(ControlsTest, ArrowKeysMoveBetweenOptions) {
    up.setValue(true);
    up.setFocus();
    pressKey(VK_DOWN);
    EXPECT_TRUE(down.hasFocus());
    EXPECT_TRUE(down.value());
    EXPECT_FALSE(up.value());
}

TEST_F(ControlsTest, ACheckBoxTogglesWhenClicked) {
    bool seen = false;
    check.onClick = [&] { seen = check.value(); };
    ::SendMessageW(check.hwnd(), BM_CLICK, 0, 0);
    EXPECT_TRUE(seen);
    check.setValue(false);
    EXPECT_FALSE(check.value());
}

TEST_F(ControlsTest, AButtonIsPressedByTheSpaceKey) {
    int clicks = 0;
    hidden.setVisible(true);
    hidden.onClick = [&] { ++clicks; };
    hidden.setFocus();
    pressKey(VK_SPACE);
    EXPECT_EQ(clicks, 1);
}

TEST_F(ControlsTest, FocusEvents) {
    check.setFocus();
    std::vector<std::string> events;
    box.onGotFocus = [&] { events.emplace_back("got"); };
    box.onLostFocus = [&] { events.emplace_back("lost"); };
    box.setFocus();
    EXPECT_TRUE(box.hasFocus());
    check.setFocus();
    EXPECT_FALSE(box.hasFocus());
    EXPECT_EQ(events, (std::vector<std::string>{"got", "lost"}));
}

TEST_F(ControlsTest, MouseEventsAreInTwips) {
    std::vector<forms::MouseEvent> events;
    notes.onMouseMove = [&](const forms::MouseEvent& event) { events.push_back(event); };
    ::SendMessageW(notes.hwnd(), WM_MOUSEMOVE, 0, MAKELPARAM(20, 30));
    ASSERT_EQ(events.size(), 1u);
    EXPECT_DOUBLE_EQ(events[0].x.value, 20 * 1440.0 / form.dpi().value);
    EXPECT_DOUBLE_EQ(events[0].y.value, 30 * 1440.0 / form.dpi().value);
}

TEST_F(ControlsTest, KeyEvents) {
    int key = 0;
    box.onKeyDown = [&](int pressed, unsigned) { key = pressed; };
    box.setFocus();
    pressKey(VK_F5);
    EXPECT_EQ(key, VK_F5);
}

TEST_F(ControlsTest, AFontReachesTheWindowInPointsOfTheDensity) {
    forms::Font font{L"Courier New", 11.0};
    font.fixedPitch = true;
    font.bold = true;
    box.setFont(font);
    LOGFONTW logical{};
    ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(box.hwnd(), WM_GETFONT, 0, 0)),
                 sizeof logical, &logical);
    EXPECT_STREQ(logical.lfFaceName, L"Courier New");
    EXPECT_EQ(logical.lfHeight, -std::lround(11.0 * form.dpi().value / 72));
    EXPECT_EQ(logical.lfWeight, FW_BOLD);
}

TEST_F(ControlsTest, ALinkIsReachedAndClickedByMouseAndKeys) {
    PlainForm other;
    forms::Label link{{.link = true}};
    forms::Button button;
    int clicks = 0;
    link.onClick = [&] { ++clicks; };
    other.onBuild = [&] {
        other.createControls({{button, {L"button", L"OK", 0_tw, 0_tw, 900_tw, 300_tw}},
                              {link, {L"link", L"More", 0_tw, 600_tw, 900_tw, 300_tw}}});
    };
    other.show();
    button.setFocus();
    pressKey(VK_TAB);
    EXPECT_TRUE(link.hasFocus());
    ::SendMessageW(link.hwnd(), WM_CHAR, L' ', 1);
    pressKey(VK_DOWN);
    EXPECT_EQ(clicks, 2);
    ::SendMessageW(link.hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(2, 2));
    ::SendMessageW(link.hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(2, 2));
    EXPECT_EQ(clicks, 3);
    EXPECT_TRUE(link.font().underline);
    other.destroy();
}

TEST_F(ControlsTest, RefreshPaintsAtOnce) {
    ::InvalidateRect(label.hwnd(), nullptr, FALSE);
    label.refresh();
    EXPECT_FALSE(::GetUpdateRect(label.hwnd(), nullptr, FALSE));
}

// --- text boxes ---

TEST_F(ControlsTest, ATextBoxTellsOfChanges) {
    int changes = 0;
    box.onChange = [&] { ++changes; };
    box.setFocus();
    ::SendMessageW(box.hwnd(), WM_CHAR, L'x', 1);
    EXPECT_EQ(changes, 1);
    box.setText(L"new");
    EXPECT_EQ(changes, 2);
}

TEST_F(ControlsTest, ATextBoxTakesLongTextsOfSeveralLines) {
    std::wstring text;
    for (int i = 0; i < 20000; ++i) text += L"line\r\n";
    notes.setText(text);
    EXPECT_EQ(notes.text(), text);
    EXPECT_EQ(::SendMessageW(notes.hwnd(), EM_GETLINECOUNT, 0, 0), 20001);
}

TEST_F(ControlsTest, AReadOnlyTextBoxIgnoresTyping) {
    notes.setText(L"fixed");
    ::SendMessageW(notes.hwnd(), WM_CHAR, L'x', 1);
    EXPECT_EQ(notes.text(), L"fixed");
    EXPECT_TRUE(notes.readOnly());
}

TEST_F(ControlsTest, SelectionIsCountedInCharacters) {
    box.setText(L"abcdef");
    box.setSelection({2, 3});
    EXPECT_EQ(box.selectedText(), L"cde");
    EXPECT_EQ(box.selection().start, 2);
    EXPECT_EQ(box.selection().length, 3);
}

TEST_F(ControlsTest, AClickCanHandTheFocusOn) {
    notes.onClick = [this] { box.setFocus(); };
    notes.setFocus();
    ::PostMessageW(notes.hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    ::PostMessageW(notes.hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    EXPECT_TRUE(waitUntil([this] { return box.hasFocus(); }));
}

// --- progress bars ---

TEST_F(ControlsTest, AProgressBarCountsIn32Bits) {
    bar.setMax(13000000);
    bar.setValue(12999999);
    EXPECT_EQ(::SendMessageW(bar.hwnd(), PBM_GETRANGE, FALSE, 0), 13000000);
    EXPECT_EQ(::SendMessageW(bar.hwnd(), PBM_GETPOS, 0, 0), 12999999);
    bar.setMax(std::numeric_limits<std::int32_t>::max());
    bar.setValue(std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(bar.value(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(::SendMessageW(bar.hwnd(), PBM_GETPOS, 0, 0),
              std::numeric_limits<std::int32_t>::max());
}

TEST_F(ControlsTest, AProgressBarKeepsItsValueInRange) {
    bar.setMax(50);
    bar.setValue(80);
    EXPECT_EQ(bar.value(), 50);
    bar.setMin(10);
    bar.setValue(-5);
    EXPECT_EQ(bar.value(), 10);
    bar.setMax(0);
    EXPECT_EQ(bar.min(), 0);
    EXPECT_EQ(bar.value(), 0);
}

// --- combo boxes ---

TEST_F(ControlsTest, AComboBoxKeepsAHistory) {
    combo.addItem(L"one", 0);
    combo.addItem(L"two", 0);
    combo.addItem(L"last");
    EXPECT_EQ(combo.listCount(), 3);
    EXPECT_EQ(combo.list(0), L"two");
    EXPECT_EQ(combo.list(2), L"last");
    EXPECT_EQ(combo.list(3), L"");
    EXPECT_EQ(combo.listIndex(), -1);
    combo.setListIndex(1);
    EXPECT_EQ(combo.text(), L"one");
    combo.removeItem(0);
    EXPECT_EQ(combo.list(0), L"one");
    combo.clear();
    EXPECT_EQ(combo.listCount(), 0);
}

TEST_F(ControlsTest, AComboBoxTellsOfTyping) {
    int changes = 0;
    combo.onChange = [&] { ++changes; };
    combo.setFocus();
    EXPECT_TRUE(combo.hasFocus());
    ::SendMessageW(::GetFocus(), WM_CHAR, L'q', 1);
    EXPECT_EQ(combo.text(), L"q");
    EXPECT_EQ(changes, 1);
}

TEST_F(ControlsTest, ChoosingFromTheListIsAClickWithTheNewTextThere) {
    combo.addItem(L"alpha");
    combo.addItem(L"beta");
    std::wstring seen;
    combo.onClick = [&] { seen = combo.text(); };
    combo.setFocus();
    pressKey(VK_DOWN);
    EXPECT_EQ(seen, L"alpha");
    pressKey(VK_DOWN);
    EXPECT_EQ(seen, L"beta");
}

TEST_F(ControlsTest, AComboBoxTellsOfTheFocusOnce) {
    int got = 0;
    int lost = 0;
    combo.onGotFocus = [&] { ++got; };
    combo.onLostFocus = [&] { ++lost; };
    box.setFocus();
    combo.setFocus();
    EXPECT_EQ(got, 1);
    box.setFocus();
    EXPECT_EQ(lost, 1);
}

}  // namespace
