#include "src/platform/mdl_priority.h"

#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/platform/system_error.h"
#include "src/text/text.h"

#include <windows.h>

namespace mdlPriority {
namespace {

constexpr std::u16string_view kLabel = u"[mdlPriority]ChangePriority";

void logLastError(std::u16string_view call) {
    const DWORD code = ::GetLastError();
    theLog().log(std::u16string{call} + u" failed: " + toText(code) + u" " + systemMessage(code),
                 classLog::kWarning, kLabel);
}

bool setPriority(HANDLE process, std::uint32_t priorityClass) {
    const BOOL result = ::SetPriorityClass(process, priorityClass);
    if (!result) {
        logLastError(u"SetPriorityClass");
        return false;
    }
    theLog().log(u"SetPriorityClass(" + toText(priorityClass) + u") returned = " + toText(result),
                 classLog::kInfo, kLabel);
    return true;
}

}  // namespace

bool ChangePriority(std::uint32_t priorityClass) {
    bool done = false;
    runProcedure(kLabel, Limit::TenErrors, [&](Procedure& procedure) {
        HANDLE process = nullptr;
        procedure.step([&] {
            process = ::OpenProcess(PROCESS_SET_INFORMATION, TRUE, ::GetCurrentProcessId());
            if (process == nullptr) logLastError(u"OpenProcess");
        });
        if (process == nullptr) return;
        procedure.step([&] { done = setPriority(process, priorityClass); });
        ::CloseHandle(process);
    });
    return done;
}

}  // namespace mdlPriority
