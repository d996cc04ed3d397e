#include "src/crash/crash_report.h"

#include "src/crash/access_violation.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/text/text.h"

#include <windows.h>
#include <dbghelp.h>

#include <atomic>
#include <cstdio>
#include <exception>

namespace {

constexpr std::u16string_view kLabel = u"[modMain]crash";

/// Left to the handler when the stack is used up.
constexpr ULONG kStackForHandler = 128 * 1024;

using WriteDump = decltype(&::MiniDumpWriteDump);

WriteDump loadDumpWriter() {
    const HMODULE library = ::LoadLibraryExW(L"dbghelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr) return nullptr;
    const FARPROC found = ::GetProcAddress(library, "MiniDumpWriteDump");
    return reinterpret_cast<WriteDump>(reinterpret_cast<void*>(found));
}

struct Dump {
    std::u16string path;
    EXCEPTION_POINTERS* exception;  ///< null if there is none
    DWORD thread;                   ///< the one that crashed
    bool written;
};

DWORD WINAPI writeDump(void* parameter) {
    Dump& dump = *static_cast<Dump*>(parameter);
    const WriteDump write = loadDumpWriter();
    if (write == nullptr) return 0;
    const HANDLE file = ::CreateFileW(toWide(dump.path).c_str(), GENERIC_WRITE, 0, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 0;
    MINIDUMP_EXCEPTION_INFORMATION information{dump.thread, dump.exception, FALSE};
    dump.written =
        write(::GetCurrentProcess(), ::GetCurrentProcessId(), file, MiniDumpNormal,
              dump.exception != nullptr ? &information : nullptr, nullptr, nullptr) != FALSE;
    ::CloseHandle(file);
    return 0;
}

/// On a thread of its own: the stack of the one that crashed may be used up. Waits for it, but not
/// for ever, as the crash may have left locks behind that a new thread needs. A busy machine takes
/// half a minute for it.
bool writeDumpAside(const std::u16string& path, EXCEPTION_POINTERS* exception) {
    constexpr DWORD kPatience = 60000;
    static Dump dump;
    dump = {path, exception, ::GetCurrentThreadId(), false};
    const HANDLE thread = ::CreateThread(nullptr, 0, writeDump, &dump, 0, nullptr);
    if (thread == nullptr) return false;
    const bool ended = ::WaitForSingleObject(thread, kPatience) == WAIT_OBJECT_0;
    ::CloseHandle(thread);
    return ended && dump.written;
}

/// The name holds that of the log, so that it is removed with the old logs.
void report(const std::u16string& what, EXCEPTION_POINTERS* exception) {
    static std::atomic<bool> reported{false};
    if (reported.exchange(true)) return;
    classLog& log = theLog();
    log.lastWords(u"The program crashed: " + what, kLabel);
    const std::u16string dump = log.strLogFile() + u".dmp";
    if (writeDumpAside(dump, exception)) log.lastWords(u"Minidump: " + dump, kLabel);
}

std::u16string hexadecimal(unsigned long long number) {
    char text[24];
    const int length = std::snprintf(text, sizeof text, "0x%llX", number);
    return fromAscii({text, static_cast<std::size_t>(length)});
}

LONG WINAPI onUnhandled(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    report(u"exception " + hexadecimal(record.ExceptionCode) + u" at " +
               hexadecimal(reinterpret_cast<ULONG_PTR>(record.ExceptionAddress)),
           exception);
    // Where the stack is used up, the system's own way out of here fails.
    ::TerminateProcess(::GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

/// An exception that nobody catches would end in a message box of the C library.
[[noreturn]] void onTerminate() {
    std::u16string what = u"terminated";
    if (const std::exception_ptr error = std::current_exception())
        what = describe(toFailure(error));
    report(what, nullptr);
    constexpr UINT kAborted = 3;
    ::TerminateProcess(::GetCurrentProcess(), kAborted);
    std::abort();
}

}  // namespace

void installCrashReports() {
    ULONG size = kStackForHandler;
    ::SetThreadStackGuarantee(&size);
    ::SetUnhandledExceptionFilter(onUnhandled);
    std::set_terminate(onTerminate);
    catchAccessViolationsInSteps();
}
