// The viewer as a process of its own, in a folder of its own, watched from outside.
//
//   ViewerFolder folder;
//   RunningViewer viewer{folder, L"-db \"" + file + L"\""};
//   ASSERT_TRUE(viewer.waitForWindow());
//   viewer.close();
//   EXPECT_EQ(viewer.exitCode(), 0u);
//   folder.log();
//
// Nothing here waits for longer than two minutes.
#pragma once

#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

inline constexpr const wchar_t* kMainWindowClass = L"VorelleDiagnosticViewer.frmMain";
inline constexpr const wchar_t* kDialogClass = L"#32770";

/// A folder with a copy of the program, or another one, and what its runs leave behind.
class ViewerFolder {
public:
    explicit ViewerFolder(const char* program = "VorelleDiagnosticViewer.exe");

    std::filesystem::path program() const { return folder_.path() / program_; }
    const std::filesystem::path& path() const { return folder_.path(); }
    std::filesystem::path makeDatabase(
        const std::string& name, std::uint32_t rows,
        fixture::TraceFormat format = fixture::TraceFormat::Newer) const;

    /// Files in LOGS whose names end so, the oldest first.
    std::vector<std::filesystem::path> logFiles(const std::string& ending = ".LOG") const;
    /// The content of the newest log; empty if there is none.
    std::string log() const;
    /// Its lines from the start of the label on, without the time and the level.
    std::vector<std::string> logLines() const;

private:
    const char* program_;
    fixture::TemporaryFolder folder_;
};

class RunningViewer {
public:
    RunningViewer(const ViewerFolder& folder, const std::wstring& arguments);
    /// Ends the process if it still runs.
    ~RunningViewer();
    RunningViewer(const RunningViewer&) = delete;
    RunningViewer& operator=(const RunningViewer&) = delete;

    /// The process's visible window of a class; null if there is none.
    HWND window(const wchar_t* className) const;
    HWND waitForWindow(const wchar_t* className = kMainWindowClass) const;

    /// Ends the process at once, in the middle of whatever it does.
    void kill() const;

    /// Asks the main window to close and waits for the end.
    bool close() const;
    bool waitForEnd() const;
    bool runs() const;
    DWORD exitCode() const;
    HANDLE process() const { return process_.hProcess; }

private:
    PROCESS_INFORMATION process_{};
};

/// Asks again and again until the answer is yes; false after two minutes.
bool eventually(const std::function<bool()>& condition);

/// Text of a window of another process.
std::wstring textOf(HWND window);
