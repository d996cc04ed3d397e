// The program with its language libraries beside it, as it is installed.
#include "tests/program/running_viewer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const wchar_t* kAboutClass = L"VorelleDiagnosticViewer.frmAbout";

/// The entry is the twelfth of the main window's menus; they count from 1000.
constexpr WPARAM kAboutCommand = 1011;

BOOL CALLBACK collect(HWND window, LPARAM texts) {
    reinterpret_cast<std::vector<std::wstring>*>(texts)->push_back(textOf(window));
    return TRUE;
}

std::vector<std::wstring> textsIn(HWND window) {
    std::vector<std::wstring> texts;
    EnumChildWindows(window, collect, reinterpret_cast<LPARAM>(&texts));
    return texts;
}

/// "1.2.3" as the box writes it: "1.2 Build3".
std::wstring aboutVersion() {
    std::wstring version = L"" VORELLE_PROJECT_VERSION;
    return version.replace(version.rfind(L'.'), 1, L" Build");
}

TEST(ProgramLanguageTest, TheAboutBoxTellsTheProgramsVersion) {
    const ViewerFolder folder;
    const RunningViewer viewer{folder,
                               L"-db \"" + folder.makeDatabase("a.mdb", 20).wstring() + L"\""};
    const HWND window = viewer.waitForWindow();
    ASSERT_TRUE(window);
    PostMessageW(window, WM_COMMAND, kAboutCommand, 0);
    const HWND about = viewer.waitForWindow(kAboutClass);
    ASSERT_TRUE(about);
    const std::vector<std::wstring> texts = textsIn(about);
    EXPECT_THAT(texts, Contains(aboutVersion()));
    EXPECT_THAT(texts, Contains(L"Vorelle Diagnostic Viewer"));
    EXPECT_THAT(texts, Contains(L"Veltrane Systems"));
    EXPECT_THAT(texts, Contains(L"Change Language"));
    SendMessageW(about, WM_CLOSE, 0, 0);
    ASSERT_TRUE(viewer.close());
    EXPECT_THAT(folder.logLines(), Not(Contains(HasSubstr("[frmAbout]"))));
}

}  // namespace
