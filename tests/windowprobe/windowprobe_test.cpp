// Runs the probe as a program of its own against a window of this process.
#include <windows.h>
#include <commctrl.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <utility>

namespace {

constexpr const wchar_t* kClass = L"VorelleDiagnosticViewer.frmMain";

struct Result {
    DWORD exitCode;
    std::string output;
};

/// What the window under test was asked to do.
bool closeAsked = false;

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE) {
        closeAsked = true;
        return 0;
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
}

std::wstring probePath() {
    std::array<wchar_t, 1024> path{};
    ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring self{path.data()};
    return self.substr(0, self.rfind(L'\\') + 1) + L"windowprobe.exe";
}

void dispatchWaiting() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageW(&message);
}

/// Serves this thread's windows until the process has ended, calling `tick` between messages.
void serveUntilEnd(HANDLE process, const std::function<void()>& tick) {
    constexpr DWORD kTick = 50;
    while (::MsgWaitForMultipleObjects(1, &process, FALSE, kTick, QS_ALLINPUT) != WAIT_OBJECT_0) {
        dispatchWaiting();
        if (tick) tick();
    }
    dispatchWaiting();
}

/// The probe writes less than a pipe holds, so its output can wait until it has ended.
std::string readAll(HANDLE pipe) {
    std::string text;
    std::array<char, 512> block{};
    DWORD count = 0;
    while (::ReadFile(pipe, block.data(), block.size(), &count, nullptr) && count > 0) {
        text.append(block.data(), count);
    }
    ::CloseHandle(pipe);
    return text;
}

Result probe(const std::wstring& arguments, const std::function<void()>& tick = {}) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ::CreatePipe(&readEnd, &writeEnd, &inherited, 0);

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
    PROCESS_INFORMATION process{};
    std::wstring line = L'"' + probePath() + L"\" " + arguments;
    const BOOL started = ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &startup, &process);
    ::CloseHandle(writeEnd);
    EXPECT_TRUE(started);
    if (!started) return {DWORD(-1), ""};

    serveUntilEnd(process.hProcess, tick);
    Result result{DWORD(-1), readAll(readEnd)};
    ::GetExitCodeProcess(process.hProcess, &result.exitCode);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return result;
}

class WindowProbe : public testing::Test {
protected:
    void SetUp() override {
        closeAsked = false;
        ::InitCommonControls();
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = windowProcedure;
        windowClass.hInstance = ::GetModuleHandleW(nullptr);
        windowClass.lpszClassName = kClass;
        ::RegisterClassW(&windowClass);
        window = CreateWindowW(kClass, L"Viewer", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 600, 400,
                               nullptr, nullptr, windowClass.hInstance, nullptr);
        ASSERT_NE(window, nullptr);
        statusBar = child(STATUSCLASSNAMEW);
        std::array<int, 5> edges{200, 250, 400, 450, -1};
        ::SendMessageW(statusBar, SB_SETPARTS, edges.size(),
                       reinterpret_cast<LPARAM>(edges.data()));
    }

    void TearDown() override { ::DestroyWindow(window); }

    HWND child(const wchar_t* className) const {
        return CreateWindowW(className, L"", WS_CHILD | WS_VISIBLE, 0, 0, 300, 100, window, nullptr,
                             nullptr, nullptr);
    }

    void setPanel(WPARAM panel, const wchar_t* text) const {
        ::SendMessageW(statusBar, SB_SETTEXTW, panel, reinterpret_cast<LPARAM>(text));
    }

    HWND window = nullptr;
    HWND statusBar = nullptr;
};

TEST_F(WindowProbe, StatusPrintsEveryPanelOnALineInUtf8) {
    setPanel(0, L"Stra\u00dfe \u65e5\u672c");
    setPanel(2, L"  Line 12 of 4711  ");
    const Result result = probe(L"status");
    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_EQ(result.output,
              "Stra\xC3\x9F"
              "e \xE6\x97\xA5\xE6\x9C\xAC\n\n  Line 12 of 4711  \n\n\n");
}

TEST_F(WindowProbe, AWindowThatIsBusyIsWaitedFor) {
    setPanel(0, L"busy");
    bool slept = false;
    const Result result = probe(L"status", [&] {
        if (!std::exchange(slept, true)) ::Sleep(3000);
    });
    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_EQ(result.output, "busy\n\n\n\n\n");
}

TEST_F(WindowProbe, StatusWithoutAWindowFails) {
    ::DestroyWindow(window);
    EXPECT_EQ(probe(L"status").exitCode, 1U);
}

TEST_F(WindowProbe, WaitsUntilTheNoticeIsGone) {
    setPanel(0, L"Loading");
    setPanel(2, L"  Line 1 of 1000  ");
    const ULONGLONG start = ::GetTickCount64();
    bool loaded = false;
    const Result result = probe(L"wait-loaded 30", [&] {
        if (loaded || ::GetTickCount64() - start < 1500) return;
        loaded = true;
        setPanel(0, L"");
    });
    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_TRUE(loaded) << "the probe did not wait";
}

TEST_F(WindowProbe, TimesOutWhileTheNoticeStays) {
    setPanel(0, L"Loading");
    setPanel(2, L"  Line 1 of 1000  ");
    EXPECT_EQ(probe(L"wait-loaded 1").exitCode, 2U);
}

TEST_F(WindowProbe, AWindowWithoutRecordsIsToldApart) {
    EXPECT_EQ(probe(L"wait-loaded 30").exitCode, 3U);
}

TEST_F(WindowProbe, WhileTheStatusWindowIsThereNothingIsLoaded) {
    constexpr const wchar_t* kStatusClass = L"VorelleDiagnosticViewer.frmStatus";
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.hInstance = ::GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kStatusClass;
    ::RegisterClassW(&windowClass);
    const HWND status = CreateWindowW(kStatusClass, L"", WS_POPUP | WS_VISIBLE, 0, 0, 100, 50,
                                      nullptr, nullptr, windowClass.hInstance, nullptr);
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(probe(L"wait-loaded 7").exitCode, 2U);
    setPanel(2, L"  Line 1 of 1000  ");
    EXPECT_EQ(probe(L"wait-loaded 1").exitCode, 2U);
    ::DestroyWindow(status);
    EXPECT_EQ(probe(L"wait-loaded 30").exitCode, 0U);
}

TEST_F(WindowProbe, AHiddenWindowSaysNothingAboutRecords) {
    ::ShowWindow(window, SW_HIDE);
    EXPECT_EQ(probe(L"wait-loaded 6").exitCode, 2U);
}

TEST_F(WindowProbe, CloseAsksTheWindow) {
    EXPECT_EQ(probe(L"close").exitCode, 0U);
    EXPECT_TRUE(closeAsked);
}

TEST_F(WindowProbe, ResizeSetsTheOuterSize) {
    EXPECT_EQ(probe(L"resize 500 320").exitCode, 0U);
    RECT area{};
    ::GetWindowRect(window, &area);
    EXPECT_EQ(area.right - area.left, 500);
    EXPECT_EQ(area.bottom - area.top, 320);
}

TEST_F(WindowProbe, ClickTabSelectsIt) {
    const HWND tabs = child(WC_TABCONTROLW);
    for (const wchar_t* caption : {L"One", L"Two"}) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(caption);
        ::SendMessageW(tabs, TCM_INSERTITEMW, 9, reinterpret_cast<LPARAM>(&item));
    }
    EXPECT_EQ(probe(L"click-tab 1").exitCode, 0U);
    EXPECT_EQ(::SendMessageW(tabs, TCM_GETCURSEL, 0, 0), 1);
}

TEST_F(WindowProbe, OpenReturnsTheExitCodeOfTheProgram) {
    constexpr DWORD kWrongUse = 64;
    EXPECT_EQ(probe(L"open \"" + probePath() + L"\"").exitCode, kWrongUse);
    EXPECT_EQ(probe(L"open Z:\\no\\such\\program.exe").exitCode, 1U);
}

TEST_F(WindowProbe, UnknownCommandsShowTheUsage) {
    const Result result = probe(L"dance");
    EXPECT_EQ(result.exitCode, 64U);
    EXPECT_NE(result.output.find("usage: windowprobe"), std::string::npos);
}

}  // namespace
