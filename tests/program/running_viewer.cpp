#include "tests/program/running_viewer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

namespace {

/// Milliseconds. Longer than a crashed viewer waits for its minidump.
constexpr DWORD kPatience = 120000;

std::filesystem::path ownFolder() {
    std::array<wchar_t, 1024> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return std::filesystem::path{path.data()}.parent_path();
}

struct WindowSearch {
    DWORD process;
    const wchar_t* className;
    HWND found;
};

BOOL CALLBACK compareWindow(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<WindowSearch*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    std::array<wchar_t, 128> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (process != search.process || !IsWindowVisible(window) ||
        std::wstring{name.data()} != search.className) {
        return TRUE;
    }
    search.found = window;
    return FALSE;
}

}  // namespace

ViewerFolder::ViewerFolder(const char* program) : program_{program} {
    for (const char* name : {program_, "VorelleDiagnosticViewer_ENU.chm"}) {
        std::filesystem::copy_file(ownFolder() / name, folder_.path() / name);
    }
}

std::filesystem::path ViewerFolder::makeDatabase(const std::string& name, std::uint32_t rows,
                                                 fixture::TraceFormat format) const {
    const std::filesystem::path path = folder_.path() / name;
    fixture::writeTraceDatabase(path, {.rows = rows}, format);
    return path;
}

std::vector<std::filesystem::path> ViewerFolder::logFiles(const std::string& ending) const {
    std::vector<std::filesystem::path> files;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator{folder_.path() / "LOGS", none}) {
        if (entry.path().string().ends_with(ending)) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string ViewerFolder::log() const {
    const auto files = logFiles();
    if (files.empty()) return {};
    std::ifstream file{files.back(), std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::vector<std::string> ViewerFolder::logLines() const {
    constexpr std::size_t kLabelField = 19;
    std::vector<std::string> lines;
    const std::string text = log();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find("\r\n", begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        if (line.size() > kLabelField && line[2] == ':') {
            const std::size_t label = line.find_first_not_of(' ', kLabelField);
            lines.push_back(line.substr(std::min(label, line.size())));
        }
        begin = end + 2;
    }
    return lines;
}

RunningViewer::RunningViewer(const ViewerFolder& folder, const std::wstring& arguments) {
    std::wstring line = L'"' + folder.program().wstring() + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &process_));
}

RunningViewer::~RunningViewer() {
    if (runs()) TerminateProcess(process_.hProcess, 99);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
}

HWND RunningViewer::window(const wchar_t* className) const {
    WindowSearch search{process_.dwProcessId, className, nullptr};
    EnumWindows(compareWindow, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND RunningViewer::waitForWindow(const wchar_t* className) const {
    HWND found = nullptr;
    eventually([&] {
        found = window(className);
        return found != nullptr || !runs();
    });
    return found;
}

void RunningViewer::kill() const {
    TerminateProcess(process_.hProcess, 99);
    waitForEnd();
}

bool RunningViewer::close() const {
    PostMessageW(window(kMainWindowClass), WM_CLOSE, 0, 0);
    return waitForEnd();
}

bool RunningViewer::waitForEnd() const {
    return WaitForSingleObject(process_.hProcess, kPatience) == WAIT_OBJECT_0;
}

bool RunningViewer::runs() const {
    return WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT;
}

DWORD RunningViewer::exitCode() const {
    DWORD code = 0;
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
}

bool eventually(const std::function<bool()>& condition) {
    const ULONGLONG end = GetTickCount64() + kPatience;
    while (!condition()) {
        if (GetTickCount64() > end) return false;
        Sleep(10);
    }
    return true;
}

std::wstring textOf(HWND window) {
    std::array<wchar_t, 1024> text{};
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                        SMTO_NORMAL, kPatience, nullptr);
    return text.data();
}
