// Ends in one of the ways in which a program can crash, with the viewer's own reports installed.
//
//   crash_child stack|exception|thread|access|meanwhile
#include "src/crash/crash_report.h"
#include "src/log/class_log.h"
#include "src/platform/windows_log_system.h"
#include "src/services/services.h"
#include "tests/src/windows/replaced_import.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace {

// NOLINTNEXTLINE(misc-no-recursion)
[[gnu::noinline]] int deeper(volatile int* level) {
    volatile int next[1000] = {*level + 1};
    return next[0] == 0 ? 0 : deeper(next) + next[0];  // deeper than any stack
}

[[noreturn]] void crashOnAnotherThread(const char* what) {
    std::thread{[what] { throw std::runtime_error{what}; }}.join();
    std::abort();
}

decltype(&::WriteFile) writeFile = nullptr;

/// Lets another thread crash as soon as the log tells of the first crash.
BOOL WINAPI writeAndCrash(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written,
                          LPOVERLAPPED overlapped) {
    static bool crashed = false;
    const BOOL done = writeFile(file, bytes, size, written, overlapped);
    const std::string_view text{static_cast<const char*>(bytes), size};
    const bool tells = text.find("The program crashed") != std::string_view::npos;
    if (tells && !std::exchange(crashed, true)) crashOnAnotherThread("the second");
    return done;
}

void crash(const std::wstring& way) {
    if (way == L"stack") {
        volatile int level = 0;
        deeper(&level);
    }
    if (way == L"exception") throw std::runtime_error{"nobody catches this"};
    if (way == L"thread") crashOnAnotherThread("nor this");
    if (way == L"meanwhile") {
        static const ReplacedImport crashing{"WriteFile", reinterpret_cast<void*>(&writeAndCrash)};
        writeFile = reinterpret_cast<decltype(writeFile)>(crashing.original());
        throw std::runtime_error{"the first"};
    }
    volatile std::uintptr_t nowhere = 8;
    if (way == L"access") *reinterpret_cast<volatile int*>(nowhere) = 1;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    classLog log{windowsLogSystem()};
    const ServicesInUse inUse{{.log = &log}};
    installCrashReports();
    theLog().enterProc(u"[a]b");
    theLog().log(u"gathered", classLog::kInfo, u"[a]b");
    if (count > 1) crash(arguments[1]);
    return 0;
}
