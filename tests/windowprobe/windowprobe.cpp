// Looks at the viewer's window from outside, for scripts and end-to-end tests.
//
//   windowprobe open PROGRAM [FILE]   starts the viewer, waits for its end, returns its exit code
//   windowprobe wait-loaded SECONDS   waits until the traces are loaded: exit 0; 2 on time-out;
//                                     3 when the window stays without records for 5 seconds
//   windowprobe status                prints the status bar's panels, one a line, in UTF-8
//   windowprobe click-tab N           selects a tab as the mouse would, counting from 0
//   windowprobe resize WIDTH HEIGHT   sets the outer size in pixels
//   windowprobe time PROGRAM FILE     starts the viewer, prints the milliseconds until the first page
//                                     of rows is painted and until all are loaded, and closes it
//   windowprobe frame COUNT           paints the grid anew COUNT times, then scrolls it COUNT pages;
//                                     prints the medians of both in milliseconds
//   windowprobe longest-wait SECONDS  asks the window without pause for so long, and prints the
//                                     milliseconds that the slowest answer took
//   windowprobe close                 asks the window to close, as its close button does
//
// Exit 1 when there is no such window or it does not answer, 64 on wrong use.
#include "tests/windowprobe/remote_window.h"
#include "toolkit/grid/messages.h"

#include <windows.h>
#include <commctrl.h>
#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr const wchar_t* kMainWindowClass = L"VorelleDiagnosticViewer.frmMain";
constexpr const wchar_t* kStatusWindowClass = L"VorelleDiagnosticViewer.frmStatus";

enum ExitCode { kDone = 0, kNoWindow = 1, kTimeOut = 2, kNoRecords = 3, kWrongUse = 64 };

HWND mainWindow() { return ::FindWindowW(kMainWindowClass, nullptr); }

struct ClassSearch {
    const wchar_t* name;
    HWND found;
};

BOOL CALLBACK compareClass(HWND window, LPARAM search) {
    auto& wanted = *reinterpret_cast<ClassSearch*>(search);
    std::array<wchar_t, 256> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (_wcsicmp(name.data(), wanted.name) != 0) return TRUE;
    wanted.found = window;
    return FALSE;
}

HWND descendant(HWND window, const wchar_t* className) {
    ClassSearch search{className, nullptr};
    ::EnumChildWindows(window, compareClass, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

using Panels = std::vector<std::wstring>;

/// Nothing when there is no window, no status bar or no answer.
std::optional<Panels> readPanels(HWND window) {
    const HWND statusBar = descendant(window, STATUSCLASSNAMEW);
    if (statusBar == nullptr) return std::nullopt;
    const auto count = ask(statusBar, SB_GETPARTS);
    if (!count) return std::nullopt;
    Panels panels;
    for (WPARAM panel = 0; panel < *count; ++panel) {
        auto text = panelText(statusBar, panel);
        if (!text) return std::nullopt;
        panels.push_back(std::move(*text));
    }
    return panels;
}

std::string utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

int printStatus() {
    const auto panels = readPanels(mainWindow());
    if (!panels) return kNoWindow;
    for (const auto& panel : *panels) std::puts(utf8(panel).c_str());
    return kDone;
}

enum class Stage { Absent, NoRecords, Loading, Loaded };

/// The status window stands there while a file is opened, upgraded or sorted.
bool isBusy() {
    const HWND status = ::FindWindowW(kStatusWindowClass, nullptr);
    return status != nullptr && ::IsWindowVisible(status);
}

/// Before the viewer shows its window, the window says nothing about the load.
Stage stageOf(HWND window) {
    if (window == nullptr || !::IsWindowVisible(window) || !ask(window, WM_NULL)) {
        return Stage::Absent;
    }
    const auto panels = readPanels(window);
    if (!panels || panels->size() < 3) return Stage::Absent;
    const bool notice = !(*panels)[0].empty() || isBusy();
    const bool position = !(*panels)[2].empty();
    if (notice) return Stage::Loading;
    return position ? Stage::Loaded : Stage::NoRecords;
}

int waitLoaded(std::chrono::seconds patience) {
    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + patience;
    Stage last = Stage::Absent;
    auto since = Clock::now();
    while (Clock::now() < deadline) {
        const Stage stage = stageOf(mainWindow());
        if (stage == Stage::Loaded && last == Stage::Loaded) return kDone;
        if (stage != last) since = Clock::now();
        if (stage == Stage::NoRecords && Clock::now() - since >= 5s) return kNoRecords;
        last = stage;
        std::this_thread::sleep_for(100ms);
    }
    return kTimeOut;
}

/// The viewer's own parser ends an unquoted path at a hyphen, so the path is always in quotes.
HANDLE start(const std::wstring& program, const wchar_t* file) {
    std::wstring line = L'"' + program + L'"';
    if (file != nullptr) line += std::wstring{L" -db \""} + file + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                         &startup, &process) == 0) {
        std::fprintf(stderr, "cannot start %s\n", utf8(program).c_str());
        return nullptr;
    }
    ::CloseHandle(process.hThread);
    return process.hProcess;
}

int open(const std::wstring& program, const wchar_t* file) {
    const HANDLE process = start(program, file);
    if (process == nullptr) return kNoWindow;
    ::WaitForSingleObject(process, INFINITE);
    DWORD exitCode = 0;
    ::GetExitCodeProcess(process, &exitCode);
    return static_cast<int>(exitCode);
}

/// Whether the grid has painted rows of its file.
bool showsRows(HWND window) {
    const HWND rows = window == nullptr ? nullptr : descendant(window, grid::kWindowClass);
    return rows != nullptr && ask(rows, grid::GM_GETPAINTEDROWS).value_or(0) > 0;
}

/// Milliseconds until the condition holds; nothing after a minute.
template <typename Condition>
std::optional<long long> timeUntil(std::chrono::steady_clock::time_point begin,
                                   Condition condition) {
    using namespace std::chrono_literals;
    while (std::chrono::steady_clock::now() - begin < 60s) {
        if (condition()) {
            const auto passed = std::chrono::steady_clock::now() - begin;
            return std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
        }
        std::this_thread::sleep_for(1ms);
    }
    return std::nullopt;
}

int timeOpening(const std::wstring& program, const wchar_t* file) {
    const auto begin = std::chrono::steady_clock::now();
    const HANDLE process = start(program, file);
    if (process == nullptr) return kNoWindow;
    const auto page = timeUntil(begin, [] { return showsRows(mainWindow()); });
    const auto all = timeUntil(begin, [] { return stageOf(mainWindow()) == Stage::Loaded; });
    if (const HWND window = mainWindow()) ::PostMessageW(window, WM_CLOSE, 0, 0);
    ::WaitForSingleObject(process, 10000);
    if (!page || !all) return kTimeOut;
    std::printf("%lld %lld\n", *page, *all);
    return kDone;
}

/// The median time of an action in milliseconds.
template <typename Action>
double medianTime(int count, Action action) {
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        action();
        const auto passed = std::chrono::steady_clock::now() - begin;
        times.push_back(std::chrono::duration<double, std::milli>(passed).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

int timeFrames(int count) {
    const HWND window = mainWindow();
    const HWND rows = window == nullptr ? nullptr : descendant(window, grid::kWindowClass);
    if (rows == nullptr || count < 1) return kNoWindow;
    const double paint = medianTime(
        count, [&] { ::RedrawWindow(rows, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); });
    const double page = medianTime(count, [&] { ask(rows, WM_VSCROLL, SB_PAGEDOWN); });
    std::printf("%.1f %.1f\n", paint, page);
    return kDone;
}

int longestWait(std::chrono::seconds duration) {
    using Clock = std::chrono::steady_clock;
    const HWND window = mainWindow();
    const auto end = Clock::now() + duration;
    Clock::duration longest{};
    while (Clock::now() < end) {
        const auto asked = Clock::now();
        if (::SendMessageW(window, WM_NULL, 0, 0) == 0 && !::IsWindow(window)) return kNoWindow;
        longest = std::max(longest, Clock::now() - asked);
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
    }
    std::printf("%lld\n",
                static_cast<long long>(
                    std::chrono::duration_cast<std::chrono::milliseconds>(longest).count()));
    return kDone;
}

int resize(int width, int height) {
    const HWND window = mainWindow();
    const bool done = window != nullptr && ::SetWindowPos(window, nullptr, 0, 0, width, height,
                                                          SWP_NOMOVE | SWP_NOZORDER) != 0;
    return done ? kDone : kNoWindow;
}

int clickTab(WPARAM index) {
    const HWND tabs = descendant(mainWindow(), WC_TABCONTROLW);
    if (tabs == nullptr) return kNoWindow;
    RECT area{};
    RemoteMemory memory{tabs, sizeof area};
    if (!memory.fetch(tabs, TCM_GETITEMRECT, index, &area)) return kNoWindow;
    const LPARAM middle = MAKELPARAM((area.left + area.right) / 2, (area.top + area.bottom) / 2);
    // The control follows the mouse in a loop of its own, which the second message ends.
    ::PostMessageW(tabs, WM_LBUTTONDOWN, MK_LBUTTON, middle);
    ::PostMessageW(tabs, WM_LBUTTONUP, 0, middle);
    return kDone;
}

int close() {
    const HWND window = mainWindow();
    return window != nullptr && ::PostMessageW(window, WM_CLOSE, 0, 0) != 0 ? kDone : kNoWindow;
}

int number(const std::wstring& text) {
    return static_cast<int>(std::wcstol(text.c_str(), nullptr, 10));
}

int run(const std::vector<std::wstring>& words) {
    const std::size_t count = words.size();
    const std::wstring command = count == 0 ? L"" : words[0];
    if (command == L"open" && count == 2) return open(words[1], nullptr);
    if (command == L"open" && count == 3) return open(words[1], words[2].c_str());
    if (command == L"time" && count == 3) return timeOpening(words[1], words[2].c_str());
    if (command == L"status" && count == 1) return printStatus();
    if (command == L"close" && count == 1) return close();
    if (command == L"wait-loaded" && count == 2) {
        return waitLoaded(std::chrono::seconds{number(words[1])});
    }
    if (command == L"frame" && count == 2) return timeFrames(number(words[1]));
    if (command == L"longest-wait" && count == 2) {
        return longestWait(std::chrono::seconds{number(words[1])});
    }
    if (command == L"click-tab" && count == 2)
        return clickTab(static_cast<WPARAM>(number(words[1])));
    if (command == L"resize" && count == 3) return resize(number(words[1]), number(words[2]));
    std::fputs(
        "usage: windowprobe open PROGRAM [FILE] | wait-loaded SECONDS | status |\n"
        "       longest-wait SECONDS | click-tab N | resize WIDTH HEIGHT |\n"
        "       time PROGRAM FILE | frame COUNT | close\n",
        stderr);
    return kWrongUse;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);  // lines end as the calling shell expects them
    return run({arguments + 1, arguments + count});
}
