#include "src/search/trace_search.h"
#include "src/text/text.h"
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

void pressKey(int key) {
    MSG message{};
    message.hwnd = ::GetFocus();
    message.message = WM_KEYDOWN;
    message.wParam = static_cast<WPARAM>(key);
    message.lParam = 1;
    forms::dispatchMessage(message);
    forms::doEvents();
}

class FindTest : public MainWindowTest {
protected:
    void SetUp() override {
        lastFindText().clear();
        openTexts({u"first error", u"x", u"ERROR two", u"y", u"it's z"});
    }
    void TearDown() override { lastFindText().clear(); }

    /// One record a text, each a second later.
    void openTexts(const std::vector<std::u16string>& texts) {
        fixture::FixtureBuilder builder;
        auto& table = builder.addTable(
            {.name = u"tblTraces", .columns = fixture::traceColumns(fixture::TraceFormat::Oldest)});
        double seconds = 0;
        for (const std::u16string& text : texts) {
            fixture::Row row(7);
            row[0] = jet::Date{38000.5 + ++seconds / 86400};
            row[6] = text;
            table.insert(row);
        }
        open(folder.write("lines.mdb", builder.bytes()));
        ASSERT_TRUE(waitUntil([&] {
            return panel(1).empty() && rows().sort() == u"Date ASC" &&
                   rows().rowCount() == texts.size();
        }));
        reports.clear();  // this file has no unique traces
    }

    void type(const wchar_t* text) {
        form.findDialog.comboFindWhat.setText(text);
        form.findDialog.comboFindWhat.onChange();
    }

    /// As the user does it in the dialog; the line that is current then.
    int search(const wchar_t* text) {
        type(text);
        return searchAgain();
    }
    int searchAgain() {
        form.findDialog.cmdFindNext.click();
        return rows().absolutePosition();
    }

    std::vector<std::wstring> history() {
        std::vector<std::wstring> texts;
        for (int i = 0; i < form.findDialog.comboFindWhat.listCount(); ++i) {
            texts.push_back(form.findDialog.comboFindWhat.list(i));
        }
        return texts;
    }

    void show() {
        form.mnuFind.onClick();
        forms::doEvents();
    }
};

using Texts = std::vector<std::wstring>;

/// Does something on the thread of the search before it begins.
class BusyRunner {
public:
    explicit BusyRunner(std::function<void()> during)
        : during_{std::move(during)},
          inUse_{servicesWith(&Services::runWhilePainting,
                              [this](const std::function<void()>& work) { run(work); })} {}

private:
    void run(const std::function<void()>& work) {
        forms::runWhilePainting([&] {
            if (during_) std::exchange(during_, nullptr)();
            work();
        });
    }

    std::function<void()> during_;
    ServicesInUse inUse_;
};

bool answers(HWND window) {
    return ::SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 10000, nullptr) != 0;
}

/// Whether what was made invalid is painted within a time that no working machine needs.
bool isPainted(HWND window) {
    ::InvalidateRect(window, nullptr, FALSE);
    for (int i = 0; i < 1000; ++i) {
        if (!::GetUpdateRect(window, nullptr, FALSE)) return true;
        ::Sleep(10);
    }
    return false;
}

TEST_F(FindTest, MenusHaveTheirTextsAndKeys) {
    EXPECT_EQ(form.mnuEdit.caption(), L"&Edit");
    EXPECT_EQ(form.mnuFind.caption(), L"&Find");
    EXPECT_EQ(form.mnuFind.shortcut(), L"Ctrl+F");
    EXPECT_EQ(form.mnuFindNext.caption(), L"Find &Next");
    EXPECT_EQ(form.mnuFindNext.shortcut(), L"F3");
}

TEST_F(FindTest, TheDialogComesUpWithoutAnOwner) {
    EXPECT_FALSE(form.findDialog.isLoaded());
    show();
    const dlgFind& dialog = form.findDialog;
    EXPECT_TRUE(dialog.visible());
    EXPECT_FALSE(dialog.isModal());
    EXPECT_EQ(::GetWindow(dialog.hwnd(), GW_OWNER), nullptr);
    EXPECT_TRUE(::IsWindowEnabled(form.hwnd()));
    EXPECT_EQ(dialog.caption(), L"Find");
    EXPECT_EQ(dialog.lblFindWhat.caption(), L"Find What:");
    EXPECT_EQ(dialog.frmDirection.caption(), L"Direction");
    EXPECT_EQ(dialog.optionDirection[0].caption(), L"&Up");
    EXPECT_EQ(dialog.optionDirection[1].caption(), L"&Down");
    EXPECT_EQ(dialog.cmdFindNext.caption(), L"Find &Next");
    EXPECT_EQ(dialog.CancelButton.caption(), L"Cancel");
    EXPECT_TRUE(dialog.optionDirection[1].value());
}

RECT placeOf(HWND window) {
    RECT place{};
    ::GetWindowRect(window, &place);
    return place;
}

TEST_F(FindTest, TheDialogComesUpOverTheWindowAndThenWhereItWas) {
    ::SetWindowPos(form.hwnd(), nullptr, 10, 20, 620, 540, SWP_NOZORDER);
    show();
    const RECT over = placeOf(form.hwnd());
    const RECT first = placeOf(form.findDialog.hwnd());
    EXPECT_NEAR(first.left + first.right, over.left + over.right, 4);
    EXPECT_NEAR(first.top + first.bottom, over.top + over.bottom, 4);
    ::SetWindowPos(form.findDialog.hwnd(), nullptr, 50, 60, 0, 0, SWP_NOZORDER | SWP_NOSIZE);
    form.findDialog.CancelButton.click();
    show();
    EXPECT_EQ(placeOf(form.findDialog.hwnd()).left, 50);
    EXPECT_EQ(placeOf(form.findDialog.hwnd()).top, 60);
}

TEST_F(FindTest, AnEmptyTextDoesNothingAtAll) {
    show();
    form.statusbarMain.panel(1).setText(L"as it was");
    EXPECT_EQ(search(L""), 1);
    EXPECT_TRUE(history().empty());
    EXPECT_EQ(panel(1), L"as it was");
}

TEST_F(FindTest, TheSecondSearchFindsTheNextMatch) {
    show();
    EXPECT_EQ(search(L"error"), 1) << "the current record counts";
    EXPECT_EQ(searchAgain(), 3);
    EXPECT_EQ(panel(1), L"");
    EXPECT_EQ(form.tdbgridData.row(), 2);
    EXPECT_EQ(form.txtTrace.text(), L"ERROR two");
    EXPECT_EQ(panel(3), L"  Line 3 of 5  ");
    EXPECT_EQ(searchAgain(), 3);
    EXPECT_EQ(panel(1), L"error not found.");
    EXPECT_EQ(history(), (Texts{L"error"}));
}

TEST_F(FindTest, ANewTextIncludesTheCurrentRecordAgain) {
    show();
    EXPECT_EQ(search(L"error"), 1);
    EXPECT_EQ(searchAgain(), 3);
    EXPECT_EQ(search(L"two"), 3);
    EXPECT_EQ(panel(1), L"") << "it was found, not just left where it was";
    EXPECT_EQ(history(), (Texts{L"two", L"error"}));
    EXPECT_EQ(search(L"error"), 3) << "a known text steps over the current record";
    EXPECT_EQ(panel(1), L"error not found.");
    EXPECT_EQ(history(), (Texts{L"two", L"error"}));
}

TEST_F(FindTest, ATextChosenFromTheHistoryIsNotAddedAgain) {
    show();
    search(L"error");
    search(L"y");
    rows().setAbsolutePosition(1);
    form.findDialog.comboFindWhat.setListIndex(1);
    form.findDialog.comboFindWhat.onClick();
    EXPECT_EQ(lastFindText(), u"error");
    EXPECT_EQ(searchAgain(), 3);
    EXPECT_EQ(history(), (Texts{L"y", L"error"}));
    EXPECT_EQ(form.findDialog.comboFindWhat.listIndex(), 1);
}

TEST_F(FindTest, CancelHidesAndForgetsTheStepOnly) {
    show();
    search(L"error");
    form.findDialog.optionDirection[0].setValue(true);
    form.findDialog.CancelButton.click();
    EXPECT_FALSE(form.findDialog.visible());
    EXPECT_TRUE(form.findDialog.isLoaded());
    show();
    EXPECT_EQ(history(), (Texts{L"error"}));
    EXPECT_TRUE(form.findDialog.optionDirection[0].value());
    EXPECT_EQ(searchAgain(), 1) << "the current record counts again";
    EXPECT_EQ(panel(1), L"");
}

TEST_F(FindTest, ClosingByTheCaptionBarHidesToo) {
    show();
    search(L"error");
    ::SendMessageW(form.findDialog.hwnd(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(form.findDialog.visible());
    EXPECT_TRUE(form.findDialog.isLoaded());
}

TEST_F(FindTest, UpFromTheFirstRecordFindsNothing) {
    show();
    form.findDialog.optionDirection[0].setValue(true);
    EXPECT_EQ(search(L"error"), 1);
    EXPECT_EQ(searchAgain(), 1);
    EXPECT_EQ(panel(1), L"error not found.");
    rows().setAbsolutePosition(5);
    EXPECT_EQ(searchAgain(), 3);
}

TEST_F(FindTest, EnterSearchesAndEscapeHides) {
    show();
    type(L"two");
    pressKey(VK_RETURN);
    EXPECT_EQ(rows().absolutePosition(), 3);
    pressKey(VK_ESCAPE);
    EXPECT_FALSE(form.findDialog.visible());
}

TEST_F(FindTest, AfterEnterTheNextTextCanBeTypedAtOnce) {
    show();
    type(L"error");
    pressKey(VK_RETURN);
    EXPECT_EQ(rows().absolutePosition(), 1);
    EXPECT_TRUE(form.findDialog.comboFindWhat.hasFocus());
}

TEST_F(FindTest, ShownAgainItOffersTheLastTextToBeReplaced) {
    show();
    search(L"error");
    form.findDialog.CancelButton.click();
    show();
    EXPECT_TRUE(form.findDialog.comboFindWhat.hasFocus());
    const LRESULT selection =
        ::SendMessageW(form.findDialog.comboFindWhat.hwnd(), CB_GETEDITSEL, 0, 0);
    EXPECT_EQ(LOWORD(selection), 0);
    EXPECT_EQ(HIWORD(selection), 5);
}

TEST_F(FindTest, FindNextOfTheMainWindowSearchesDownwards) {
    form.mnuFindNext.onClick();
    EXPECT_EQ(rows().absolutePosition(), 1) << "nothing was ever typed";
    show();
    type(L"error");
    form.findDialog.optionDirection[0].setValue(true);
    form.mnuFindNext.onClick();
    EXPECT_EQ(rows().absolutePosition(), 3) << "without a search from the dialog, and downwards";
    EXPECT_TRUE(history().empty());
    form.mnuFindNext.onClick();
    EXPECT_EQ(rows().absolutePosition(), 3);
    EXPECT_EQ(panel(1), L"error not found.");
    EXPECT_EQ(form.mousePointer(), forms::MousePointer::standard);
}

TEST_F(FindTest, FindNextWithoutItsArgumentShowsTheDialog) {
    form.myfindText(false);
    EXPECT_TRUE(form.findDialog.visible());
}

TEST_F(FindTest, AnApostropheIsSurvived) {
    show();
    EXPECT_EQ(search(L"it's"), 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[dlgFind]myfindText: Err.Number = 3001 "));
    EXPECT_EQ(form.findDialog.mousePointer(), forms::MousePointer::standard);
    form.mnuFindNext.onClick();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_TRUE(reports[1].starts_with(u"[frmMain]myfindText: Err.Number = 3001 "));
    EXPECT_EQ(form.mousePointer(), forms::MousePointer::standard);
    EXPECT_EQ(rows().absolutePosition(), 2) << "the step before the search is not undone";
    EXPECT_EQ(form.statusbarMain.panel(1).text(), L"");
    EXPECT_EQ(searchAgain(), 3);
    form.findDialog.optionDirection[0].setValue(true);
    EXPECT_EQ(searchAgain(), 2);
    // Off the end there is no record to go to.
    rows().moveLast();
    form.mnuFindNext.onClick();
    EXPECT_EQ(form.statusbarMain.panel(1).text(), L"it's not found.");
    form.findDialog.optionDirection[1].setValue(true);
    rows().moveFirst();
    EXPECT_EQ(search(L"it?s"), 5);
}

TEST_F(FindTest, SearchesInTheOrderOfTheGrid) {
    form.tdbgridData_HeadClick(form.tdbgridData.columnIndex(L"Date"));
    ASSERT_EQ(rows().sort(), u"Date DESC");
    show();
    EXPECT_EQ(search(L"error"), 3);
    EXPECT_EQ(searchAgain(), 5);
    EXPECT_EQ(form.txtTrace.text(), L"first error");
}

TEST_F(FindTest, ALineInAFoldedGroupIsShown) {
    grid::Grid& grid = form.tdbgridData;
    grid.setGroupColumns({{grid.columnIndex(L"Process")}});
    ASSERT_FALSE(grid.grouping().group(0).unfolded);
    show();
    EXPECT_EQ(search(L"two"), 3);
    EXPECT_EQ(grid.row(), 2);
    EXPECT_TRUE(grid.grouping().group(0).unfolded);
    EXPECT_EQ(form.txtTrace.text(), L"ERROR two");
}

TEST_F(FindTest, SearchesWhatTheFilterLeaves) {
    open(makeFile("b.mdb", 2000));
    ASSERT_TRUE(waitLoaded());
    show();
    EXPECT_GT(search(L"retry"), 0);
    form.cmdClearAllUniqueTraces.onClick();
    for (std::size_t i = 0; i < 20; ++i) modDatabase::uniqueTraces()[i].selected = true;
    form.cmdApplyFilter.onClick();
    ASSERT_TRUE(waitLoaded());
    ASSERT_LT(rows().recordCount(), 1500);
    std::vector<int> expected;
    std::u16string text;
    for (int line = 1; line <= rows().recordCount(); ++line) {
        rows().textAt(static_cast<std::uint32_t>(line - 1), 8, text);
        if (text.find(u"Retry") != std::u16string::npos) expected.push_back(line);
    }
    ASSERT_GT(expected.size(), 1u);
    form.findDialog.CancelButton.click();  // the next search includes the first line
    std::vector<int> found;
    while (panel(1).empty() && found.size() <= expected.size()) {
        const int line = searchAgain();
        if (panel(1).empty()) found.push_back(line);
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(panel(1), L"retry not found.");
}

TEST_F(FindTest, TheWindowAnswersAndPaintsWhileItSearches) {
    show();
    bool answered = false;
    bool painted = false;
    auto pointer = forms::MousePointer::standard;
    std::wstring notice;
    BusyRunner busy{[&] {
        answered = answers(form.hwnd()) && answers(form.findDialog.hwnd());
        painted = isPainted(form.tdbgridData.hwnd());
        pointer = form.findDialog.mousePointer();
        notice = panel(1);
    }};
    EXPECT_EQ(search(L"two"), 3);
    EXPECT_TRUE(answered);
    EXPECT_TRUE(painted);
    EXPECT_EQ(pointer, forms::MousePointer::hourglass);
    EXPECT_EQ(notice, L"Searching for two...");
    EXPECT_EQ(form.findDialog.mousePointer(), forms::MousePointer::standard);
}

TEST_F(FindTest, WhatTheUserDoesMeanwhileWaitsForTheEnd) {
    show();
    const std::filesystem::path other = folder.path() / "b.mdb";
    fixture::writeTraceDatabase(other, {.rows = 40});
    bool opened = false;
    int foundBefore = 0;
    BusyRunner busy{[&] {
        forms::post([&] {
            foundBefore = rows().absolutePosition();
            open(other);
            opened = true;
        });
        ::PostMessageW(form.findDialog.cmdFindNext.hwnd(), BM_CLICK, 0, 0);
        ::PostMessageW(form.findDialog.hwnd(), WM_CLOSE, 0, 0);
        // Answered after a look at what was posted.
        EXPECT_TRUE(answers(form.hwnd()));
        EXPECT_TRUE(answers(form.hwnd()));
        EXPECT_FALSE(opened);
        EXPECT_TRUE(form.findDialog.visible());
    }};
    EXPECT_EQ(search(L"two"), 3);
    EXPECT_FALSE(opened);
    ASSERT_TRUE(waitUntil([&] { return opened && !form.findDialog.visible(); }));
    EXPECT_EQ(foundBefore, 3);
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(rows().recordCount(), 40);
}

TEST_F(FindTest, ClosingTheWindowDuringASearchIsSurvived) {
    show();
    BusyRunner busy{[&] { ::SendMessageW(form.hwnd(), WM_CLOSE, 0, 0); }};
    search(L"two");
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(form.isLoaded());
    EXPECT_TRUE(reports.empty());
}

/// Presses a key as a keyboard does, until the end of the block.
class HeldKey {
public:
    explicit HeldKey(WORD key) { send(key, 0); }
    ~HeldKey() { send(key_, KEYEVENTF_KEYUP); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

    /// Waits until the system says so.
    bool isDown() const {
        for (int i = 0; i < 1000; ++i) {
            if (::GetAsyncKeyState(key_) < 0) return true;
            ::Sleep(10);
        }
        return false;
    }

private:
    void send(WORD key, DWORD flags) {
        key_ = key;
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = key;
        input.ki.dwFlags = flags;
        ::SendInput(1, &input, sizeof input);
    }

    WORD key_ = 0;
};

TEST_F(FindTest, EscapeStopsASearchAndNothingElse) {
    show();
    ASSERT_TRUE(waitUntil([&] { return ::GetForegroundWindow() == form.findDialog.hwnd(); }));
    const auto cancelWhileSearching = [&] {
        const HeldKey escape{VK_ESCAPE};
        EXPECT_TRUE(escape.isDown());
        // The window's thread looks at the key each time before it answers; for the first answer it
        // may have done so before the key went down.
        EXPECT_TRUE(answers(form.hwnd()));
        EXPECT_TRUE(answers(form.hwnd()));
    };
    {
        BusyRunner busy{cancelWhileSearching};
        EXPECT_EQ(search(L"two"), 1);
    }
    EXPECT_EQ(panel(1), L"") << "not said to be absent: nobody knows";
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[dlgFind]myfindText: Err.Number = 3712 "));
    forms::doEvents();
    EXPECT_TRUE(form.findDialog.visible()) << "the key is used up";
    EXPECT_EQ(form.findDialog.mousePointer(), forms::MousePointer::standard);
    {
        BusyRunner busy{cancelWhileSearching};
        form.mnuFindNext.onClick();
    }
    EXPECT_EQ(rows().absolutePosition(), 1);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_TRUE(reports[1].starts_with(u"[frmMain]myfindText: Err.Number = 3712 "));
    forms::doEvents();
    EXPECT_TRUE(form.findDialog.visible());
    EXPECT_EQ(searchAgain(), 3) << "the next one runs to its end";
}

TEST_F(FindTest, RecordsThatAreClosedMeanwhileAreReported) {
    show();
    form.findDialog.setNotice = [&](const std::u16string& text) {
        if (text.starts_with(u"Searching")) rows().close();
    };
    type(L"two");
    form.findDialog.cmdFindNext.click();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[dlgFind]myfindText: Err.Number = 3704 "));
}

TEST_F(FindTest, AnotherDatabaseIsSearchedByTheSameDialog) {
    show();
    EXPECT_EQ(search(L"two"), 3);
    modDatabase::connectToDB((folder.path() / "none.mdb").u16string());
    modDatabase::openRecordsets();
    reports.clear();
    form.findDialog.cmdFindNext.click();
    EXPECT_FALSE(reports.empty()) << "there is nothing to search";
    EXPECT_EQ(form.findDialog.mousePointer(), forms::MousePointer::standard);
    fixture::writeTraceDatabase(folder.path() / "b.mdb", {.rows = 300});
    open(folder.path() / "b.mdb");
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(search(L"two"), 1);
    EXPECT_EQ(panel(1), L"two not found.");
    EXPECT_GT(search(L"Retry"), 0);
    EXPECT_EQ(panel(1), L"");
}

}  // namespace
