// Ends in one of the ways in which a program can crash, with the viewer's own reports installed.
//
//   crash_child stack|exception|thread|access
#include "src/crash/crash_report.h"
#include "src/log/class_log.h"
#include "src/platform/windows_log_system.h"

#include <windows.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

// NOLINTNEXTLINE(misc-no-recursion)
[[gnu::noinline]] int deeper(volatile int* level) {
    volatile int next[1000] = {*level + 1};
    return next[0] == 0 ? 0 : deeper(next) + next[0];  // deeper than any stack
}

void crash(const std::wstring& way) {
    if (way == L"stack") {
        volatile int level = 0;
        deeper(&level);
    }
    if (way == L"exception") throw std::runtime_error{"nobody catches this"};
    if (way == L"thread") std::thread{[] { throw std::runtime_error{"nor this"}; }}.join();
    volatile std::uintptr_t nowhere = 8;
    if (way == L"access") *reinterpret_cast<volatile int*>(nowhere) = 1;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    setLogSystem(windowsLogSystem);
    installCrashReports();
    theLog().enterProc(u"[a]b");
    theLog().log(u"gathered", classLog::kInfo, u"[a]b");
    if (count > 1) crash(arguments[1]);
    return 0;
}
