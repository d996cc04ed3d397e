#include "toolkit/forms/menu.h"

#include "tests/toolkit/forms/forms_fixture.h"

#include <stdexcept>

using namespace forms_test;

namespace {

std::wstring entryText(HMENU menu, UINT item, UINT by = MF_BYPOSITION) {
    wchar_t text[100] = L"";
    ::GetMenuStringW(menu, item, text, 100, by);
    return text;
}

class MenuTest : public FormsTest {
protected:
    MenuTest() {
        form.onBuild = [this] {
            form.menu().build({
                {0, file, L"mnuFile", L"&File"},
                {1, open, L"mnuOpen", L"&Open", [this] { chosen += L"open "; }, L"Ctrl+O"},
                {1, recent, L"mnuRecent", L"&Recent"},
                {2, first, L"mnuFirst", L"First", [this] { chosen += L"first "; }},
                {1, line, L"pLine", L"-"},
                {1, exit, L"mnuExit", L"E&xit", [this] { chosen += L"exit "; }},
                {0, edit, L"mnuEdit", L"&Edit"},
                {1, next, L"mnuNext", L"Find &Next", [this] { chosen += L"next "; }, L"F3"},
                {0, popup, L"mnuPopup", L"Popup", nullptr, L"", false},
                {1, note, L"mnuNote", L"Note", [this] { chosen += L"note "; }},
            });
        };
        form.show();
    }
    ~MenuTest() override { form.destroy(); }

    void command(const forms::MenuItem& item) {
        ::SendMessageW(form.hwnd(), WM_COMMAND, static_cast<WPARAM>(item.id()), 0);
    }

    PlainForm form;
    forms::MenuItem file, open, recent, first, line, exit, edit, next, popup, note;
    std::wstring chosen;
};

TEST_F(MenuTest, HasTheShapeOfTheTable) {
    const HMENU bar = ::GetMenu(form.hwnd());
    ASSERT_EQ(::GetMenuItemCount(bar), 2);
    EXPECT_EQ(entryText(bar, 0), L"&File");
    EXPECT_EQ(entryText(bar, 1), L"&Edit");
    const HMENU fileMenu = ::GetSubMenu(bar, 0);
    ASSERT_EQ(::GetMenuItemCount(fileMenu), 4);
    EXPECT_EQ(entryText(fileMenu, 0), L"&Open\tCtrl+O");
    EXPECT_EQ(entryText(::GetSubMenu(fileMenu, 1), 0), L"First");
    EXPECT_NE(::GetMenuState(fileMenu, 2, MF_BYPOSITION) & MF_SEPARATOR, 0u);
    EXPECT_EQ(entryText(fileMenu, 3), L"E&xit");
}

TEST_F(MenuTest, AnEntryRunsItsProcedure) {
    command(open);
    command(first);
    command(exit);
    EXPECT_EQ(chosen, L"open first exit ");
}

TEST_F(MenuTest, CaptionsChangeInTheShownMenu) {
    file.setCaption(L"&Datei");
    open.setCaption(L"\x00D6&ffnen");
    const HMENU bar = ::GetMenu(form.hwnd());
    EXPECT_EQ(entryText(bar, 0), L"&Datei");
    EXPECT_EQ(entryText(::GetSubMenu(bar, 0), 0), L"\x00D6&ffnen\tCtrl+O");
    EXPECT_EQ(open.caption(), L"\x00D6&ffnen");
}

TEST_F(MenuTest, ADisabledEntryIsGrayAndDead) {
    open.setEnabled(false);
    EXPECT_NE(::GetMenuState(::GetMenu(form.hwnd()), static_cast<UINT>(open.id()), MF_BYCOMMAND) &
                  MF_GRAYED,
              0u);
    command(open);
    EXPECT_EQ(chosen, L"");
    open.setEnabled(true);
    command(open);
    EXPECT_EQ(chosen, L"open ");
}

TEST_F(MenuTest, AnEntryCanBeMarked) {
    next.setChecked(true);
    EXPECT_NE(::GetMenuState(::GetMenu(form.hwnd()), static_cast<UINT>(next.id()), MF_BYCOMMAND) &
                  MF_CHECKED,
              0u);
}

TEST_F(MenuTest, AnInvisibleEntryIsNotThere) {
    open.setVisible(false);
    const HMENU fileMenu = ::GetSubMenu(::GetMenu(form.hwnd()), 0);
    EXPECT_EQ(::GetMenuItemCount(fileMenu), 3);
    open.setVisible(true);
    EXPECT_EQ(::GetMenuItemCount(::GetSubMenu(::GetMenu(form.hwnd()), 0)), 4);
}

TEST_F(MenuTest, ShortcutsWorkFromAnywhereOnTheForm) {
    pressKey(VK_F3);
    EXPECT_EQ(chosen, L"next ");
    {
        const HeldKeys held({VK_CONTROL});
        pressKey('O');
    }
    EXPECT_EQ(chosen, L"next open ");
    pressKey('O');
    EXPECT_EQ(chosen, L"next open ");
}

TEST_F(MenuTest, TheShortcutOfADisabledOrInvisibleEntryIsDead) {
    next.setEnabled(false);
    pressKey(VK_F3);
    next.setEnabled(true);
    next.setVisible(false);
    pressKey(VK_F3);
    EXPECT_EQ(chosen, L"");
}

TEST_F(MenuTest, ShortcutsAreReadByTheirNames) {
    const ACCEL open_ = forms::parseShortcut(L"Ctrl+Shift+O");
    EXPECT_EQ(open_.key, 'O');
    EXPECT_EQ(open_.fVirt, FVIRTKEY | FCONTROL | FSHIFT);
    EXPECT_EQ(forms::parseShortcut(L"F12").key, VK_F12);
    EXPECT_EQ(forms::parseShortcut(L"Alt+Del").key, VK_DELETE);
    EXPECT_THROW(forms::parseShortcut(L"Ctrl+"), std::invalid_argument);
    EXPECT_THROW(forms::parseShortcut(L"Hyper+A"), std::invalid_argument);
    EXPECT_THROW(forms::parseShortcut(L"F25"), std::invalid_argument);
}

TEST_F(MenuTest, EntriesAreFoundByName) {
    EXPECT_EQ(form.menu().find(L"mnuNote"), &note);
    EXPECT_EQ(form.menu().find(L"nothing"), nullptr);
}

TEST_F(MenuTest, EntriesCanBeAddedAtRunTime) {
    forms::MenuItem late;
    form.menu().append({1, late, L"mnuLate", L"Late", [this] { chosen += L"late "; }});
    command(late);
    EXPECT_EQ(chosen, L"late ");
    form.destroy();
}

UINT_PTR popupTimer = 0;

// Chooses the first entry as soon as a menu is open.
void CALLBACK chooseFirst(HWND, UINT, UINT_PTR, DWORD) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    ::GetGUIThreadInfo(::GetCurrentThreadId(), &info);
    if (info.flags & GUI_INMENUMODE) {
        ::KillTimer(nullptr, popupTimer);
        ::PostMessageW(info.hwndMenuOwner, WM_KEYDOWN, VK_DOWN, 1);
        ::PostMessageW(info.hwndMenuOwner, WM_KEYDOWN, VK_RETURN, 1);
    }
}

TEST_F(MenuTest, AnInvisibleSubmenuPopsUp) {
    popupTimer = ::SetTimer(nullptr, 0, 10, &chooseFirst);
    form.menu().popUp(popup, form.hwnd(), {50, 50});
    ::KillTimer(nullptr, popupTimer);
    EXPECT_EQ(chosen, L"note ");
}

TEST_F(MenuTest, TheMenuComesBackWhenTheFormIsLoadedAgain) {
    form.unload();
    form.show();
    EXPECT_EQ(::GetMenuItemCount(::GetMenu(form.hwnd())), 2);
    command(exit);
    EXPECT_EQ(chosen, L"exit ");
}

}  // namespace
