#include "toolkit/forms/dialogs.h"

#include "tests/toolkit/forms/forms_fixture.h"

#include <filesystem>
#include <fstream>

using namespace forms_test;

namespace {

// What the test does with the next dialog that opens. The timer of the thread goes on inside the
// dialog's own loop of messages.
std::function<bool(HWND)> answer;

BOOL CALLBACK answerDialog(HWND window, LPARAM) {
    wchar_t name[20] = L"";
    ::GetClassNameW(window, name, 20);
    if (std::wstring(name) == L"#32770" && ::IsWindowVisible(window) && answer && answer(window)) {
        answer = nullptr;
    }
    return TRUE;
}

void CALLBACK lookForDialog(HWND, UINT, UINT_PTR, DWORD) {
    ::EnumThreadWindows(::GetCurrentThreadId(), &answerDialog, 0);
}

class DialogsTest : public FormsTest {
protected:
    DialogsTest() : timer_(::SetTimer(nullptr, 0, 20, &lookForDialog)) {
        folder_ = std::filesystem::temp_directory_path() / L"forms \x00FC test";
        std::filesystem::create_directories(folder_);
    }
    ~DialogsTest() override {
        ::KillTimer(nullptr, timer_);
        std::filesystem::remove_all(folder_);
    }

    static void press(HWND dialog, int button) {
        ::PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
    }

    // Types a name into the open file dialog and confirms.
    static void typeName(const std::wstring& name) {
        answer = [name](HWND dialog) {
            constexpr int kFileName = 0x47c;
            const HWND edit = ::GetDlgItem(dialog, kFileName);
            if (!edit) return false;
            ::SetWindowTextW(edit, name.c_str());
            press(dialog, IDOK);
            return true;
        };
    }

    std::filesystem::path folder_;

private:
    UINT_PTR timer_;
};

TEST_F(DialogsTest, AMessageBoxShowsItsTextAndReturnsTheAnswer) {
    std::wstring title;
    std::wstring text;
    answer = [&](HWND dialog) {
        constexpr int kMessageText = 0xFFFF;
        title = forms::windowText(dialog);
        text = forms::windowText(::GetDlgItem(dialog, kMessageText));
        press(dialog, IDNO);
        return true;
    };
    const auto chosen =
        forms::systemDialogs().showMessage(nullptr, {.title = L"Title \x65E5",
                                                     .text = L"First line.\r\nSecond line.",
                                                     .icon = forms::MessageIcon::critical,
                                                     .buttons = forms::MessageButtons::yesNo});
    EXPECT_EQ(chosen, forms::MessageAnswer::no);
    EXPECT_EQ(title, L"Title \x65E5");
    EXPECT_NE(text.find(L"Second line."), std::wstring::npos);
}

TEST_F(DialogsTest, OpenReturnsTheChosenFile) {
    const std::filesystem::path file = folder_ / L"traces \x00E4.mdb";
    std::ofstream(file) << "x";
    typeName(file.wstring());
    const auto chosen = forms::systemDialogs().openFile(
        nullptr, {.title = L"Select", .filter = L"Database (*.mdb)|*.mdb"});
    ASSERT_TRUE(chosen.has_value());
    EXPECT_TRUE(std::filesystem::equivalent(chosen->path, file));
    EXPECT_EQ(chosen->filterIndex, 1);
}

TEST_F(DialogsTest, CancelIsNoAnswer) {
    std::wstring title;
    answer = [&](HWND dialog) {
        title = forms::windowText(dialog);
        press(dialog, IDCANCEL);
        return true;
    };
    EXPECT_FALSE(forms::systemDialogs()
                     .openFile(nullptr, {.title = L"Select Diagnostic Database File",
                                         .filter = L"Database (*.mdb)|*.mdb"})
                     .has_value());
    EXPECT_EQ(title, L"Select Diagnostic Database File");
}

TEST_F(DialogsTest, SaveAddsTheExtension) {
    typeName((folder_ / L"Diagnostics").wstring());
    const auto chosen = forms::systemDialogs().saveFile(
        nullptr, {.filter = L"TXT (*.txt)|*.txt", .defaultExtension = L"txt"});
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(std::filesystem::path(chosen->path).filename().wstring(), L"Diagnostics.txt");
}

TEST_F(DialogsTest, SaveProposesTheGivenName) {
    std::wstring proposed;
    answer = [&](HWND dialog) {
        proposed = forms::windowText(::GetDlgItem(dialog, 0x47c));
        press(dialog, IDCANCEL);
        return true;
    };
    forms::systemDialogs().saveFile(nullptr, {.filter = L"TXT (*.txt)|*.txt",
                                              .defaultExtension = L"txt",
                                              .fileName = L"Diagnostics.txt"});
    EXPECT_EQ(proposed, L"Diagnostics.txt");
}

TEST_F(DialogsTest, TheCurrentFolderStaysAsItWas) {
    const auto before = std::filesystem::current_path();
    const std::filesystem::path file = folder_ / L"a.mdb";
    std::ofstream(file) << "x";
    typeName(file.wstring());
    forms::systemDialogs().openFile(nullptr, {.filter = L"Database (*.mdb)|*.mdb"});
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(DialogsTest, PostedFunctionsGoOnBehindADialog) {
    std::vector<int> order;
    answer = [&](HWND dialog) {
        if (order.empty()) return false;
        order.push_back(2);
        press(dialog, IDOK);
        return true;
    };
    forms::post([&] {
        forms::systemDialogs().showMessage(nullptr, {.title = L"Wait", .text = L"Wait"});
        order.push_back(3);
    });
    forms::post([&] { order.push_back(1); });
    EXPECT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

}  // namespace
