// Tab order, default buttons and access keys of a form.
#include "tests/toolkit/forms/forms_fixture.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/combo_box.h"
#include "toolkit/forms/label.h"
#include "toolkit/forms/text_box.h"

using namespace forms_test;

namespace {

class KeyboardTest : public FormsTest {
protected:
    KeyboardTest() {
        form.onBuild = [this] {
            form.createControls({
                {label, {L"label", L"&Find what:", 0_tw, 0_tw, 900_tw, 300_tw}},
                {combo, {L"combo", L"", 900_tw, 0_tw, 1800_tw, 300_tw}},
                {frame, {L"frame", L"Box", 0_tw, 400_tw, 3000_tw, 900_tw}},
                {inside, {L"inside", L"", 100_tw, 200_tw, 900_tw, 300_tw, 0, &frame}},
                {notes, {L"notes", L"", 0_tw, 1400_tw, 3000_tw, 900_tw}},
                {ok, {L"ok", L"&OK", 0_tw, 2400_tw, 900_tw, 300_tw, forms::kDefaultButton}},
                {skipped, {L"skipped", L"", 900_tw, 2400_tw, 900_tw, 300_tw, forms::kNoTabStop}},
                {cancel,
                 {L"cancel", L"Cancel", 0_tw, 2800_tw, 900_tw, 300_tw, forms::kCancelButton}},
            });
            ok.onClick = [this] { clicked += L"ok "; };
            cancel.onClick = [this] { clicked += L"cancel "; };
        };
        form.show();
    }
    ~KeyboardTest() override { form.destroy(); }

    std::wstring focused() const {
        for (const forms::Control* control : form.controls()) {
            if (control->hasFocus()) return control->name();
        }
        return L"";
    }

    PlainForm form;
    forms::Label label;
    forms::ComboBox combo;
    forms::Frame frame;
    forms::TextBox inside;
    forms::TextBox notes{{.multiLine = true}};
    forms::Button ok;
    forms::Button skipped;
    forms::Button cancel;
    std::wstring clicked;
};

TEST_F(KeyboardTest, TheFirstStopHasTheFocusAtTheStart) { EXPECT_EQ(focused(), L"combo"); }

TEST_F(KeyboardTest, TabGoesThroughTheTableAndRound) {
    std::wstring order;
    for (int i = 0; i < 6; ++i) {
        pressKey(VK_TAB);
        order += focused() + L" ";
    }
    EXPECT_EQ(order, L"inside notes ok cancel combo inside ");
}

TEST_F(KeyboardTest, ShiftTabGoesBack) {
    const HeldKeys held({VK_SHIFT});
    std::wstring order;
    for (int i = 0; i < 5; ++i) {
        pressKey(VK_TAB);
        order += focused() + L" ";
    }
    EXPECT_EQ(order, L"cancel ok notes inside combo ");
}

TEST_F(KeyboardTest, TabPassesWhatIsHiddenOrDisabled) {
    frame.setVisible(false);
    notes.setEnabled(false);
    pressKey(VK_TAB);
    EXPECT_EQ(focused(), L"ok");
}

TEST_F(KeyboardTest, EnterPressesTheDefaultButtonAndEscapeTheOther) {
    inside.setFocus();
    pressKey(VK_RETURN);
    pressKey(VK_ESCAPE);
    EXPECT_EQ(clicked, L"ok cancel ");
}

TEST_F(KeyboardTest, PressingAButtonByEnterLeavesTheFocusWhereItIs) {
    combo.setFocus();
    pressKey(VK_RETURN);
    EXPECT_EQ(clicked, L"ok ");
    EXPECT_EQ(focused(), L"combo");
    pressKey(VK_ESCAPE);
    EXPECT_EQ(clicked, L"ok cancel ");
    EXPECT_EQ(focused(), L"combo");
}

TEST_F(KeyboardTest, EnterPressesTheButtonThatHasTheFocus) {
    cancel.setFocus();
    pressKey(VK_RETURN);
    EXPECT_EQ(clicked, L"cancel ");
}

TEST_F(KeyboardTest, AButtonThatIsHiddenOrDisabledIsNotPressed) {
    inside.setFocus();
    ok.setVisible(false);
    pressKey(VK_RETURN);
    EXPECT_EQ(clicked, L"");
    ok.setVisible(true);
    ok.setEnabled(false);
    pressKey(VK_RETURN);
    EXPECT_EQ(clicked, L"");
    ok.setEnabled(true);
    cancel.setVisible(false);
    pressKey(VK_ESCAPE);
    EXPECT_EQ(clicked, L"");
    cancel.setVisible(true);
    cancel.setEnabled(false);
    pressKey(VK_ESCAPE);
    EXPECT_EQ(clicked, L"");
    cancel.setEnabled(true);
    pressKey(VK_ESCAPE);
    pressKey(VK_RETURN);
    EXPECT_EQ(clicked, L"cancel ok ");
}

TEST_F(KeyboardTest, EnterInABoxOfSeveralLinesIsALine) {
    notes.setFocus();
    MSG message{notes.hwnd(), WM_KEYDOWN, VK_RETURN, 0x1C0001, 0, {}};
    forms::dispatchMessage(message);
    forms::doEvents();
    EXPECT_EQ(clicked, L"");
    EXPECT_EQ(notes.text(), L"\r\n");
}

TEST_F(KeyboardTest, EscapeInABoxOfSeveralLinesDoesNotCloseTheForm) {
    cancel.setEnabled(false);
    notes.setFocus();
    pressKey(VK_ESCAPE);
    EXPECT_TRUE(form.isLoaded());
    EXPECT_EQ(form.unloads, 0);
}

TEST_F(KeyboardTest, EnterAndEscapeInAnOpenListBelongToTheList) {
    combo.addItem(L"one");
    combo.setFocus();
    ::SendMessageW(combo.hwnd(), CB_SHOWDROPDOWN, TRUE, 0);
    pressKey(VK_ESCAPE);
    EXPECT_EQ(clicked, L"");
    EXPECT_FALSE(::SendMessageW(combo.hwnd(), CB_GETDROPPEDSTATE, 0, 0));
}

TEST_F(KeyboardTest, AnAccessKeyPressesItsButton) {
    MSG message{inside.hwnd(), WM_SYSCHAR, L'o', 0x20000001, 0, {}};
    forms::dispatchMessage(message);
    forms::doEvents();
    EXPECT_EQ(clicked, L"ok ");
}

TEST_F(KeyboardTest, ALabelsAccessKeyLeadsToTheControlBehindIt) {
    cancel.setFocus();
    MSG message{cancel.hwnd(), WM_SYSCHAR, L'f', 0x20000001, 0, {}};
    forms::dispatchMessage(message);
    forms::doEvents();
    EXPECT_EQ(focused(), L"combo");
}

TEST_F(KeyboardTest, AFormThatComesBackRemembersTheFocus) {
    inside.setFocus();
    PlainForm other;
    other.show();
    EXPECT_NE(focused(), L"inside");
    ::SetForegroundWindow(form.hwnd());
    EXPECT_TRUE(waitUntil([this] { return focused() == L"inside"; }));
}

}  // namespace
