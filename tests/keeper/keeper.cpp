// Keeps the session of a Wine prefix alive while other programs come and go: a program that joins
// a running session starts in milliseconds, the first one of a session takes most of a second.
//
//   keeper.exe [SECONDS]
//
// Says "ready" on standard output when its window stands. Ends by itself after the time given
// (half an hour if none is), so a test run that was cut off leaves nothing behind for long.
#include <windows.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    const int seconds = count > 1 ? std::atoi(arguments[1]) : 1800;
    const UINT milliseconds = seconds > 0 ? static_cast<UINT>(seconds) * 1000 : USER_TIMER_MINIMUM;

    // Only a process that owns a window keeps the desktop of the session.
    if (::CreateWindowExW(0, L"STATIC", L"keeper", WS_OVERLAPPED, 0, 0, 1, 1, nullptr, nullptr,
                          nullptr, nullptr) == nullptr) {
        return 1;
    }
    if (::SetTimer(nullptr, 1, milliseconds, nullptr) == 0) return 1;
    std::puts("ready");
    std::fflush(stdout);

    MSG message;
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_TIMER) break;
    }
    return 0;
}
