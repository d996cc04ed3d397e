#include "src/crash/access_violation.h"

#include "src/log/procedure.h"

#include <windows.h>

#ifdef __x86_64__

#include <cstdint>

namespace {

DWORD viewerThread = 0;
std::uintptr_t programStart = 0;
std::uintptr_t programEnd = 0;

bool isInProgram(std::uintptr_t address) { return address >= programStart && address < programEnd; }

/// Runs as if called by the instruction that failed.
[[noreturn]] void throwAccessViolation() {
    throw RuntimeError{static_cast<std::int32_t>(EXCEPTION_ACCESS_VIOLATION), u"Access violation"};
}

bool canBecomeException(const EXCEPTION_RECORD& record, const CONTEXT& context) {
    constexpr DWORD64 kCallAlignment = 16;
    return record.ExceptionCode == static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION) &&
           ::GetCurrentThreadId() == viewerThread && isInStep() && isInProgram(context.Rip) &&
           context.Rsp % kCallAlignment == 0;
}

/// The return address is one byte into the instruction: who unwinds the stack looks up the byte in
/// front of a return address, which is thus the instruction's own.
LONG CALLBACK onException(EXCEPTION_POINTERS* exception) {
    CONTEXT& context = *exception->ContextRecord;
    if (!canBecomeException(*exception->ExceptionRecord, context)) return EXCEPTION_CONTINUE_SEARCH;
    context.Rsp -= sizeof(DWORD64);
    *reinterpret_cast<DWORD64*>(context.Rsp) = context.Rip + 1;
    context.Rip = reinterpret_cast<DWORD64>(&throwAccessViolation);
    return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

void catchAccessViolationsInSteps() {
    const auto base = reinterpret_cast<std::uintptr_t>(::GetModuleHandleW(nullptr));
    const auto* const header = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        base + static_cast<std::uintptr_t>(header->e_lfanew));
    viewerThread = ::GetCurrentThreadId();
    programStart = base;
    programEnd = base + headers->OptionalHeader.SizeOfImage;
    ::AddVectoredExceptionHandler(0, onException);
}

#else

void catchAccessViolationsInSteps() {}

#endif
