// Runs of the viewer and what they leave in the log, and that only one runs at a time.
#include "tests/program/debugger_output.h"
#include "tests/program/running_viewer.h"
#include "tests/src/windows/machine_key.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

namespace {

using testing::Contains;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::wstring dbSwitch(const std::filesystem::path& file) {
    return L"-db \"" + file.wstring() + L"\"";
}

bool started(const ViewerFolder& folder) {
    return eventually(
        [&] { return folder.log().find("Exiting [modMain]Main_0") != std::string::npos; });
}

/// "Entering [modMain]Main_0" and so on, in order, without times.
std::vector<std::string> entriesAndExits(const ViewerFolder& folder) {
    const std::regex mark{"[^)]*\\) +((?:Entering|Exiting) [^ ]+).*"};
    std::vector<std::string> found;
    for (const std::string& line : folder.logLines()) {
        std::smatch parts;
        if (std::regex_match(line, parts, mark)) found.push_back(parts[1]);
    }
    return found;
}

TEST(ProgramTest, ARunWithADatabaseIsLoggedFromEntryToExit) {
    const ViewerFolder folder;
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a-b c.mdb", 300))};
    ASSERT_TRUE(viewer.waitForWindow());
    ASSERT_TRUE(started(folder));
    ASSERT_TRUE(viewer.close());
    EXPECT_EQ(viewer.exitCode(), 0u);

    const std::string log = folder.log();
    const std::string stars(120, '*');
    EXPECT_THAT(log, StartsWith("\r\n" + stars + "\r\nVorelleDiagnosticViewer Version: "));
    EXPECT_TRUE(log.ends_with("\r\n"));
    const std::vector<std::string> lines = folder.logLines();
    ASSERT_GT(lines.size(), 10u);
    EXPECT_THAT(lines[0], StartsWith("[classLog]checkSizeOfLogs) Removing logs older than "));
    EXPECT_EQ(lines[1], "[modMain]Main) Entering [modMain]Main_0");
    EXPECT_THAT(lines, Contains(HasSubstr("[modDatabase]createUniqueTracesArray)         Number of "
                                          "Unique Traces Found: ")));
    const std::vector<std::string> steps = entriesAndExits(folder);
    const std::vector<std::string> beginning{"Entering [modMain]Main_0",
                                             "Entering [Utilities]getVersion_0",
                                             "Exiting [Utilities]getVersion_0",
                                             "Entering [modDatabase]connectToDB_0",
                                             "Exiting [modDatabase]connectToDB_0",
                                             "Entering [modDatabase]openRecordsets_0",
                                             "Entering [modDatabase]openUniqueFilters_0",
                                             "Entering [modDatabase]createUniqueTracesArray_0",
                                             "Exiting [modDatabase]createUniqueTracesArray_0",
                                             "Exiting [modDatabase]openUniqueFilters_0"};
    ASSERT_GT(steps.size(), beginning.size());
    EXPECT_EQ(std::vector<std::string>(steps.begin(), steps.begin() + 10), beginning);
    EXPECT_THAT(steps, Contains("Exiting tdbgridData_HeadClick_0"));
    EXPECT_THAT(steps, Contains("Exiting [modMain]Main_0"));
    EXPECT_THAT(steps, Not(Contains(HasSubstr("_-1"))));
}

TEST(ProgramTest, WithoutADatabaseItAsksAndShowsAnEmptyWindow) {
    const ViewerFolder folder;
    const RunningViewer viewer{folder, L""};
    const HWND dialog = viewer.waitForWindow(kDialogClass);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(textOf(dialog), L"Select Diagnostic Database File");
    EXPECT_FALSE(viewer.window(kMainWindowClass));
    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    ASSERT_TRUE(viewer.waitForWindow());
    ASSERT_TRUE(started(folder));
    ASSERT_TRUE(viewer.close());
    const std::vector<std::string> lines = folder.logLines();
    EXPECT_THAT(lines, Contains(HasSubstr("[frmMain]selectDatabase)     Err.Number = 32755 ")));
    EXPECT_THAT(lines, Not(Contains(HasSubstr("connectToDB"))));
}

TEST(ProgramTest, DebugOnTheCommandLineCopiesTheLogToTheDebugger) {
    const ViewerFolder folder;
    DebuggerOutput output;
    const RunningViewer viewer{folder, L"-DEBUG " + dbSwitch(folder.makeDatabase("a.mdb", 20))};
    ASSERT_TRUE(viewer.waitForWindow());
    ASSERT_TRUE(started(folder));
    ASSERT_TRUE(viewer.close());
    const std::vector<std::string> lines = output.lines();
    EXPECT_THAT(lines,
                Contains("VorelleDiagnosticViewer:([modMain]Main) Entering [modMain]Main_0"));
    EXPECT_THAT(lines,
                Contains(StartsWith(
                    "VorelleDiagnosticViewer:([modMain]Main) Exiting [modMain]Main_0 Start: ")));
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) {
                                return line.starts_with("VorelleDiagnosticViewer:(");
                            }),
              static_cast<std::ptrdiff_t>(folder.logLines().size()));
}

TEST(ProgramTest, WithoutTheSwitchTheDebuggerHearsNothing) {
    const ViewerFolder folder;
    DebuggerOutput output;
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a.mdb", 20))};
    ASSERT_TRUE(started(folder));
    EXPECT_THAT(output.lines(), Not(Contains(HasSubstr("VorelleDiagnosticViewer:("))));
}

TEST(ProgramTest, OnAServerItStepsAside) {
    const ViewerFolder folder;
    const MachineKey key{L"Software\\Veltrane Systems\\Veltrane Vorelle"};
    key.setNumber(L"MajorVersion", 8);
    key.setNumber(L"MinorVersion", 1);
    key.setNumber(L"ReleaseVersion", 2);
    key.setNumber(L"BuildVersion", 3);
    key.setText(L"Version", L"8.1");
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a.mdb", 20))};
    ASSERT_TRUE(started(folder));
    EXPECT_EQ(GetPriorityClass(viewer.process()), DWORD{BELOW_NORMAL_PRIORITY_CLASS});
    const std::vector<std::string> lines = folder.logLines();
    EXPECT_THAT(lines,
                Contains("[mdlPriority]ChangePriority)   SetPriorityClass(16384) returned = 1"));
    EXPECT_THAT(lines, Not(Contains(HasSubstr("Err.Number"))));
}

TEST(ProgramTest, ElsewhereItDoesNot) {
    const ViewerFolder folder;
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a.mdb", 20))};
    ASSERT_TRUE(started(folder));
    EXPECT_EQ(GetPriorityClass(viewer.process()), DWORD{NORMAL_PRIORITY_CLASS});
    EXPECT_THAT(folder.logLines(), Not(Contains(HasSubstr("ChangePriority"))));
}

TEST(ProgramTest, ASwitchGivenTwiceIsToldAndEndsTheProgram) {
    const ViewerFolder folder;
    const RunningViewer viewer{folder, L"-db a.mdb -Db b.mdb"};
    const HWND box = viewer.waitForWindow(kDialogClass);
    ASSERT_TRUE(box);
    EXPECT_EQ(textOf(box), L"Command Line Argument Error");
    constexpr int kMessage = 0xFFFF;
    EXPECT_EQ(textOf(GetDlgItem(box, kMessage)),
              L"The command line arguments specified are invalid.\r\n"
              L"You can not specify argument: Db twice.\r\n"
              L"Please remove the duplicate arguments and try again.");
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(viewer.waitForEnd());
    EXPECT_EQ(viewer.exitCode(), 0u);
    EXPECT_THAT(folder.log(), HasSubstr("Exiting [Utilities]getVersion_0"));
}

class SecondStartTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(window_ = first_.waitForWindow());
        ASSERT_TRUE(started(folder_));
        // Something else is in front.
        other_ = CreateWindowW(L"STATIC", L"other", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200,
                               100, nullptr, nullptr, nullptr, nullptr);
        SetForegroundWindow(other_);
        ASSERT_NE(GetForegroundWindow(), window_);
    }
    void TearDown() override { DestroyWindow(other_); }

    /// The second start, to its end.
    void startAgain(const std::wstring& arguments) {
        const RunningViewer second{folder_, arguments};
        ASSERT_TRUE(second.waitForEnd());
        EXPECT_EQ(second.exitCode(), 0u);
    }

    ViewerFolder folder_;
    RunningViewer first_{folder_, dbSwitch(folder_.makeDatabase("a.mdb", 50))};
    HWND window_ = nullptr;
    HWND other_ = nullptr;
};

TEST_F(SecondStartTest, BringsTheFirstToTheFront) {
    startAgain(L"");
    EXPECT_TRUE(eventually([this] { return GetForegroundWindow() == window_; }));
    EXPECT_TRUE(first_.runs());
}

TEST_F(SecondStartTest, RestoresTheFirstIfItIsMinimised) {
    ShowWindow(window_, SW_MINIMIZE);
    ASSERT_TRUE(eventually([this] { return IsIconic(window_) != FALSE; }));
    SetForegroundWindow(other_);
    startAgain(L"");
    EXPECT_TRUE(eventually([this] { return !IsIconic(window_); }));
    EXPECT_TRUE(eventually([this] { return GetForegroundWindow() == window_; }));
}

TEST_F(SecondStartTest, ItsDatabaseIsNotOpened) {
    const std::filesystem::path other = folder_.makeDatabase("other.mdb", 70);
    startAgain(dbSwitch(other));
    EXPECT_TRUE(first_.runs());
    for (const auto& file : folder_.logFiles()) {
        std::ifstream stream{file, std::ios::binary};
        const std::string text{std::istreambuf_iterator<char>{stream}, {}};
        const std::size_t first = text.find("Entering [modDatabase]connectToDB_0");
        EXPECT_EQ(text.find("Entering [modDatabase]connectToDB_0", first + 1), std::string::npos);
    }
    // Nobody holds it open.
    EXPECT_TRUE(std::filesystem::remove(other));
}

TEST_F(SecondStartTest, AfterTheFirstHasEndedThereIsNoFirst) {
    ASSERT_TRUE(first_.close());
    const RunningViewer next{folder_, dbSwitch(folder_.path() / "a.mdb")};
    EXPECT_TRUE(next.waitForWindow());
}

TEST_F(SecondStartTest, OneThatComesWhileTheFirstEndsTakesItsPlace) {
    PostMessageW(window_, WM_CLOSE, 0, 0);
    ASSERT_TRUE(eventually([this] { return !IsWindowVisible(window_); }));
    // It has half a second to live, for which a busy machine may not let this process run.
    if (!first_.runs()) {
        GTEST_SKIP() << "the first one has ended already";
    }
    const RunningViewer next{folder_, dbSwitch(folder_.path() / "a.mdb")};
    EXPECT_TRUE(next.waitForWindow());
    EXPECT_FALSE(first_.runs());
    // And a third one finds that one.
    startAgain(L"");
    EXPECT_TRUE(next.runs());
}

TEST(ProgramTest, ACrashLeavesALastLineAndAMinidump) {
    const ViewerFolder folder;
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a.mdb", 20))};
    ASSERT_TRUE(started(folder));
    // A thread that begins where there is no code.
    const HANDLE thread =
        CreateRemoteThread(viewer.process(), nullptr, 0,
                           reinterpret_cast<LPTHREAD_START_ROUTINE>(0x10), nullptr, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    CloseHandle(thread);
    ASSERT_TRUE(viewer.waitForEnd());
    EXPECT_NE(viewer.exitCode(), 0u);
    EXPECT_THAT(folder.log(), HasSubstr("The program crashed: exception 0xC0000005 at 0x10\r\n"));
    const auto dumps = folder.logFiles(".LOG.dmp");
    ASSERT_EQ(dumps.size(), 1u);
    std::ifstream dump{dumps[0], std::ios::binary};
    std::string signature(4, ' ');
    dump.read(signature.data(), 4);
    EXPECT_EQ(signature, "MDMP");
    EXPECT_GT(std::filesystem::file_size(dumps[0]), 1000u);
}

TEST(ProgramTest, WithoutARightToWriteBesideItItRunsWithoutALog) {
    const ViewerFolder folder;
    std::ofstream{folder.path() / "LOGS"} << "in the way";
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a.mdb", 20))};
    ASSERT_TRUE(viewer.waitForWindow());
    EXPECT_FALSE(viewer.window(kDialogClass));
    ASSERT_TRUE(viewer.close());
    EXPECT_EQ(viewer.exitCode(), 0u);
}

TEST(ProgramTest, HelpOpensWithF1AndClosesAtTheEnd) {
    constexpr const wchar_t* kHelpWindowClass = L"HH Parent";
    const ViewerFolder folder;
    const RunningViewer viewer{folder, dbSwitch(folder.makeDatabase("a.mdb", 20))};
    const HWND window = viewer.waitForWindow();
    ASSERT_TRUE(window);
    ASSERT_TRUE(started(folder));
    PostMessageW(window, WM_KEYDOWN, VK_F1, 1);
    const HWND help = viewer.waitForWindow(kHelpWindowClass);
    ASSERT_TRUE(help);
    // The window is there before the call that opens it has returned.
    const std::string text =
        "hwndHelp returned = " + std::to_string(reinterpret_cast<INT_PTR>(help)) + "\r\n";
    EXPECT_TRUE(eventually([&] { return folder.log().find(text) != std::string::npos; }));
    ASSERT_TRUE(viewer.close());
    EXPECT_EQ(viewer.exitCode(), 0u);
}

}  // namespace
